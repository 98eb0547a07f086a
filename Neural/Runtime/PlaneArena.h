// The memory of one run's activations, taken when first needed and given back at the last use.
#pragma once

#include <cstddef>
#include <vector>

#include "Neural/Runtime/ExecutionPlan.h"

namespace quillmere::neural {

/// One zeroed block for each slot in use. Blocks are the system's pages, not the heap's, so that
/// what is given back is free for the whole machine at once. For one thread.
class PlaneArena {
public:
    explicit PlaneArena(std::size_t slots) : blocks_(slots) {}
    PlaneArena(const PlaneArena&) = delete;
    PlaneArena& operator=(const PlaneArena&) = delete;
    ~PlaneArena();

    /// The slot's block; made of `floats` zeros at the first call. Throws std::bad_alloc.
    float* block(SlotId slot, std::size_t floats);
    void release(SlotId slot);

private:
    struct Block {
        void* mapping = nullptr;
        std::size_t bytes = 0;
        float* floats = nullptr;
    };

    std::vector<Block> blocks_;
};

}  // namespace quillmere::neural
