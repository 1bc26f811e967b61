// NodePool and PoolAllocator: a fixed-size node pool for the vertex lists of model meshes.
//
// A large model holds a million polygon corners, each a list node, and the import copies them
// more than once; taking nodes from a pool instead of the general heap makes that cheap. The
// engine is single-threaded, so the pools have no locks. Memory returned to a pool is reused
// for the next nodes of that size, never handed back to the system.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

template <std::size_t Size, std::size_t Align>
class NodePool {
public:
    static void* Allocate() {
        Pool& pool = Instance();
        if (!pool.m_Free)
            pool.Grow();
        FreeNode* node = pool.m_Free;
        pool.m_Free = node->m_Next;
        return node;
    }

    static void Release(void* pointer) {
        Pool& pool = Instance();
        auto* node = static_cast<FreeNode*>(pointer);
        node->m_Next = pool.m_Free;
        pool.m_Free = node;
    }

private:
    struct FreeNode {
        FreeNode* m_Next;
    };
    static constexpr std::size_t kAlign = Align > alignof(FreeNode) ? Align : alignof(FreeNode);
    static constexpr std::size_t kSlot =
        ((Size > sizeof(FreeNode) ? Size : sizeof(FreeNode)) + kAlign - 1) / kAlign * kAlign;
    static constexpr std::size_t kSlotsPerBlock = 4096;

    struct Pool {
        FreeNode* m_Free = nullptr;
        std::vector<void*> m_Blocks;

        void Grow() {
            void* block = ::operator new(kSlot* kSlotsPerBlock, std::align_val_t(kAlign));
            m_Blocks.push_back(block);
            auto* bytes = static_cast<unsigned char*>(block);
            for (std::size_t i = kSlotsPerBlock; i-- > 0;) {
                auto* node = reinterpret_cast<FreeNode*>(bytes + i * kSlot);
                node->m_Next = m_Free;
                m_Free = node;
            }
        }
    };

    // Never destroyed, so lists that outlive static destruction can still give nodes back.
    static Pool& Instance() {
        static Pool* pool = new Pool();
        return *pool;
    }
};

// A stateless allocator: single nodes come from the pool of their size, arrays from the heap.
template <class T>
class PoolAllocator {
#if defined(__SANITIZE_ADDRESS__)
    // Under AddressSanitizer every node comes from the heap, so misuse of one is caught.
    static constexpr bool kPooled = false;
#else
    static constexpr bool kPooled = true;
#endif

public:
    using value_type = T;

    PoolAllocator() = default;
    template <class U>
    PoolAllocator(const PoolAllocator<U>&) {}

    T* allocate(std::size_t count) {
        if (count == 1 && kPooled)
            return static_cast<T*>(NodePool<sizeof(T), alignof(T)>::Allocate());
        return static_cast<T*>(::operator new(count * sizeof(T), std::align_val_t(alignof(T))));
    }

    void deallocate(T* pointer, std::size_t count) {
        if (count == 1 && kPooled) {
            NodePool<sizeof(T), alignof(T)>::Release(pointer);
        } else {
            ::operator delete(pointer, std::align_val_t(alignof(T)));
        }
    }

    template <class U>
    bool operator==(const PoolAllocator<U>&) const {
        return true;
    }
    template <class U>
    bool operator!=(const PoolAllocator<U>&) const {
        return false;
    }
};
