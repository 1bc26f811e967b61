// The programs' own global operator new and delete. Blocks of a megabyte and more go on huge
// pages where they span whole ones, and a helper thread faults their pages in ahead of the
// code that fills them; smaller blocks come from a heap that grows in huge pages too.
//
// Importing a big model writes a few arrays of many megabytes once each: the file's decoded
// arrays, the scene built from them, the engine's records built from the scene. A page's first
// touch costs a fault, and those faults cost a cold import more than the work itself. On 2 MB
// pages there are 512 times fewer. And while the importer fills a block from its start, the
// helper asks the kernel for the same block's pages, from its start too (MADV_POPULATE_WRITE,
// which leaves their contents as they are), so that most of the faults are taken on the other
// core. Blocks stay ordinary malloc blocks (freed by free); one freed while the helper is at it
// waits for the chunk in hand, never longer, and the helper forgets it.
//
// The many smaller blocks (a skin's cluster arrays, the file's smaller arrays, record and
// property lists) come from malloc's heap, which by default grows a little at a time, so that
// each of its pages is faulted in on its own. Here the heap grows 32 MB at a time and each new
// stretch asks for huge pages before malloc hands any of it out; all threads share that heap.
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

namespace {

constexpr std::uintptr_t kPage = 4096;
constexpr std::uintptr_t kHugePage = std::uintptr_t(2) << 20;
// Smaller blocks are mostly bookkeeping, and many: not worth the helper's while.
constexpr std::size_t kLargeBlock = std::size_t(1) << 20;
// How much the helper asks for at a time; a block being freed waits for at most this much.
constexpr std::uintptr_t kChunk = kHugePage;
// Blocks waiting for the helper at once; a block that finds the list full is not helped.
constexpr std::size_t kMaxWaiting = 256;
// How much the heap grows by at least; a stretch's huge pages that straddle its end are faulted
// in small pages, so the longer the stretch the fewer of them.
constexpr int kHeapStep = 32 << 20;
// malloc's own ceiling for its mapping threshold.
constexpr std::size_t kMaxMapThreshold = std::size_t(32) << 20;

// Whole pages of a block, as addresses: [m_First, m_Last).
struct PageRange {
    std::uintptr_t m_First = 0;
    std::uintptr_t m_Last = 0;
};

// The pages of `unit` bytes that lie wholly inside the block of `size` bytes at `begin`.
PageRange InnerPages(std::uintptr_t begin, std::size_t size, std::uintptr_t unit) {
    return {(begin + unit - 1) & ~(unit - 1), (begin + size) & ~(unit - 1)};
}

// A large block the helper has not finished: where it starts (its key) and the pages left.
struct Waiting {
    const void* m_Block = nullptr;
    PageRange m_Left;
};

// The helper thread and the blocks it is to populate: a chunk of each in turn, so that every
// block being filled gets help.
class PageHelper {
public:
    // Queues the whole pages of a new block; starts the helper on the first call.
    void Add(const void* block, std::size_t size) {
        const PageRange pages = InnerPages(reinterpret_cast<std::uintptr_t>(block), size, kPage);
        if (pages.m_Last <= pages.m_First)
            return;
        std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Started) {
            m_Started = true;
            try {
                std::thread([this] { Run(); }).detach();
                m_Running = true;
            } catch (const std::system_error&) {
                // No thread to be had: the code that fills a block faults its pages in.
            }
        }
        if (!m_Running || m_Count == kMaxWaiting)
            return;
        m_Waiting[m_Count++] = {block, pages};
        m_Pending.store(m_Count, std::memory_order_release);
        m_Changed.notify_all();
    }

    // Forgets `block` before it is freed, waiting while the helper is populating a chunk of it.
    void Forget(const void* block) {
        if (m_Pending.load(std::memory_order_acquire) == 0)
            return;
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_Changed.wait(lock, [&] { return m_Busy != block; });
        for (std::size_t i = 0; i < m_Count; ++i) {
            if (m_Waiting[i].m_Block == block) {
                Remove(i);
                break;
            }
        }
    }

private:
    // Forever populates a chunk of the first waiting block.
    void Run() {
        std::unique_lock<std::mutex> lock(m_Mutex);
        for (;;) {
            m_Changed.wait(lock, [&] { return m_Count > 0; });
            const Waiting next = m_Waiting[0];
            const std::uintptr_t first = next.m_Left.m_First;
            const std::uintptr_t left = next.m_Left.m_Last - first;
            const std::uintptr_t length = left < kChunk ? left : kChunk;
            m_Busy = next.m_Block;
            lock.unlock();
            const bool populated =
                madvise(reinterpret_cast<void*>(first), length, MADV_POPULATE_WRITE) == 0;
            lock.lock();
            m_Busy = nullptr;
            // Forget waits while the block is busy, so it is still first in line; it goes to
            // the back with what is left of it.
            Waiting done = m_Waiting[0];
            done.m_Left.m_First += length;
            Remove(0);
            if (populated && done.m_Left.m_First < done.m_Left.m_Last) {
                m_Waiting[m_Count++] = done;
                m_Pending.store(m_Count, std::memory_order_release);
            }
            m_Changed.notify_all();
        }
    }

    // Drops entry i of m_Waiting, keeping the others' order. Caller holds the mutex.
    void Remove(std::size_t i) {
        for (std::size_t j = i + 1; j < m_Count; ++j)
            m_Waiting[j - 1] = m_Waiting[j];
        --m_Count;
        m_Pending.store(m_Count, std::memory_order_release);
    }

    std::mutex m_Mutex;
    std::condition_variable m_Changed;      // a block came or went, or a chunk was done
    Waiting m_Waiting[kMaxWaiting];         // blocks not yet populated, next one first
    std::size_t m_Count = 0;                // how many of m_Waiting are in use
    std::atomic<std::size_t> m_Pending{0};  // m_Count, for Forget to read without the mutex
    const void* m_Busy = nullptr;           // the block whose chunk the helper is at
    bool m_Started = false;                 // a helper thread was asked for
    bool m_Running = false;                 // and there is one
};

// Never destroyed: the helper may still be waiting for work when the program exits.
PageHelper& TheHelper() {
    alignas(PageHelper) static unsigned char storage[sizeof(PageHelper)];
    static PageHelper* helper = new (storage) PageHelper();
    return *helper;
}

// The end of the heap when last looked at.
std::atomic<std::uintptr_t> g_HeapEnd{0};

// Sets malloc up, once, before the first block of this operator new: blocks from kLargeBlock on
// are mapped on their own (and put on huge pages by Allocate) until FollowFreed raises that,
// smaller ones come from the one heap, which grows by kHeapStep. What the heap holds so far
// stays as it is.
bool SetUpHeap() {
    mallopt(M_MMAP_THRESHOLD, static_cast<int>(kLargeBlock));
    mallopt(M_TOP_PAD, kHeapStep);
    mallopt(M_ARENA_MAX, 1);
    g_HeapEnd.store(reinterpret_cast<std::uintptr_t>(sbrk(0)));
    return true;
}

// Asks for huge pages on what the heap grew by since it was last looked at. A heap that shrank
// gave its end back; when it grows again, the new part is advised anew.
void WatchHeap() {
    const auto end = reinterpret_cast<std::uintptr_t>(sbrk(0));
    std::uintptr_t last = g_HeapEnd.load(std::memory_order_relaxed);
    if (end == last || !g_HeapEnd.compare_exchange_strong(last, end) || end < last)
        return;
    const std::uintptr_t from = last & ~(kPage - 1);
    madvise(reinterpret_cast<void*>(from), end - from, MADV_HUGEPAGE);
}

void* Allocate(std::size_t size) {
    static const bool heapSetUp = SetUpHeap();
    static_cast<void>(heapSetUp);
    void* block = std::malloc(size != 0 ? size : 1);
    if (!block)
        throw std::bad_alloc();
    WatchHeap();
    if (size >= kLargeBlock) {
        const PageRange huge = InnerPages(reinterpret_cast<std::uintptr_t>(block), size, kHugePage);
        if (huge.m_Last > huge.m_First)
            madvise(reinterpret_cast<void*>(huge.m_First), huge.m_Last - huge.m_First,
                    MADV_HUGEPAGE);
        TheHelper().Add(block, size);
    }
    return block;
}

// The size from which malloc maps a block on its own.
std::atomic<std::size_t> g_MapThreshold{kLargeBlock};

// malloc's own rule, which setting the heap's growth turns off: a freed block that was mapped
// on its own raises the mapping threshold to its size (up to kMaxMapThreshold), so that a
// program freeing and making blocks of that size again reuses the heap rather than mapping and
// faulting in fresh memory each time.
void FollowFreed(std::size_t size) {
    std::size_t threshold = g_MapThreshold.load(std::memory_order_relaxed);
    while (size > threshold && size <= kMaxMapThreshold) {
        if (g_MapThreshold.compare_exchange_weak(threshold, size)) {
            mallopt(M_MMAP_THRESHOLD, static_cast<int>(size));
            mallopt(M_TRIM_THRESHOLD, static_cast<int>(2 * size));
            return;
        }
    }
}

void Free(void* block) {
    if (block) {
        TheHelper().Forget(block);
        FollowFreed(malloc_usable_size(block));
    }
    std::free(block);
}

// A sized delete tells a small block from a large one, so small ones skip the helper.
void Free(void* block, std::size_t size) {
    if (size >= kLargeBlock)
        Free(block);
    else
        std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}

void* operator new[](std::size_t size) {
    return Allocate(size);
}

void operator delete(void* block) noexcept {
    Free(block);
}

void operator delete[](void* block) noexcept {
    Free(block);
}

void operator delete(void* block, std::size_t size) noexcept {
    Free(block, size);
}

void operator delete[](void* block, std::size_t size) noexcept {
    Free(block, size);
}
