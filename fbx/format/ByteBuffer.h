// The bytes of an array value. Growing the buffer leaves the new bytes as they are: every
// buffer is written whole by whoever sized it (a decoder, a copy, a number parser) before
// anything reads it, so a large array is written once instead of zeroed first.
#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace fbx {

// std::allocator, but an element made without arguments is left uninitialised.
template <class T>
struct UninitialisedAllocator : std::allocator<T> {
    template <class U>
    struct rebind {
        using other = UninitialisedAllocator<U>;
    };
    UninitialisedAllocator() = default;
    template <class U>
    UninitialisedAllocator(const UninitialisedAllocator<U>&) noexcept {}

    template <class U>
    void construct(U* at) noexcept {
        ::new (static_cast<void*>(at)) U;
    }
    template <class U, class... Args>
    void construct(U* at, Args&&... args) {
        ::new (static_cast<void*>(at)) U(std::forward<Args>(args)...);
    }
};

using ByteBuffer = std::vector<std::uint8_t, UninitialisedAllocator<std::uint8_t>>;

}  // namespace fbx
