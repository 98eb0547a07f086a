// Memory that kernels work in, kept from one operation of a run to the next.
#pragma once

#include <cstddef>
#include <vector>

#include "Neural/Kernels/AlignedFloats.h"

namespace quillmere::neural {

/// A buffer of finite floats for each worker of a pool.
class KernelScratch {
public:
    explicit KernelScratch(std::size_t workers) : buffers_(workers) {}

    /// Makes every buffer at least `floats` long. Throws std::bad_alloc.
    void reserve(std::size_t floats) {
        for (AlignedFloats& buffer : buffers_) {
            if (buffer.size() < floats) buffer = AlignedFloats(floats);
        }
    }

    float* of(std::size_t worker) { return buffers_[worker].data(); }

private:
    std::vector<AlignedFloats> buffers_;
};

}  // namespace quillmere::neural
