// The program's own global operator new and delete: large blocks ask the kernel for huge pages.
//
// Importing a big model writes a few arrays of hundreds of megabytes once each. With 4 KB
// pages every first touch of a page is a fault, and those faults cost a cold import more than
// the work itself; on 2 MB pages there are 512 times fewer. Blocks stay ordinary malloc
// blocks (freed by free); only their page-aligned middle is marked for huge pages, which the
// kernel honours when transparent huge pages are set to "madvise" or "always".
#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kHugePage = std::size_t(2) << 20;
// Smaller blocks gain little and may share their pages with other blocks.
constexpr std::size_t kLargeBlock = std::size_t(4) << 20;

void AdviseHugePages(void* block, std::size_t size) {
    const auto begin = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (begin + kHugePage - 1) & ~(kHugePage - 1);
    const std::uintptr_t last = (begin + size) & ~(kHugePage - 1);
    if (last > first)
        madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

void* Allocate(std::size_t size) {
    void* block = std::malloc(size != 0 ? size : 1);
    if (!block)
        throw std::bad_alloc();
    if (size >= kLargeBlock)
        AdviseHugePages(block, size);
    return block;
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}

void* operator new[](std::size_t size) {
    return Allocate(size);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
