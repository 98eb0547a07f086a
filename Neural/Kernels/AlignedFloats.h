// A vector of floats that SIMD loads without crossing cache lines.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace quillmere::neural {

template <class T>
struct CacheLineAllocator {
    using value_type = T;
    static constexpr std::align_val_t kAlignment{64};

    CacheLineAllocator() = default;
    template <class U>
    CacheLineAllocator(const CacheLineAllocator<U>&) {}

    T* allocate(std::size_t count) {
        return static_cast<T*>(::operator new(count * sizeof(T), kAlignment));
    }
    void deallocate(T* pointer, std::size_t) { ::operator delete(pointer, kAlignment); }

    friend bool operator==(const CacheLineAllocator&, const CacheLineAllocator&) { return true; }
};

using AlignedFloats = std::vector<float, CacheLineAllocator<float>>;

}  // namespace quillmere::neural
