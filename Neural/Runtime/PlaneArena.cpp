#include "Neural/Runtime/PlaneArena.h"

#include <sys/mman.h>

#include <new>

namespace quillmere::neural {

PlaneArena::~PlaneArena() {
    for (SlotId slot = 0; slot < blocks_.size(); ++slot) release(slot);
}

float* PlaneArena::block(SlotId slot, std::size_t floats) {
    Block& block = blocks_[slot];
    if (block.memory == nullptr) {
        const std::size_t bytes = floats * sizeof(float);
        void* memory =
            ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        block = {static_cast<float*>(memory), bytes};
    }
    return block.memory;
}

void PlaneArena::release(SlotId slot) {
    Block& block = blocks_[slot];
    if (block.memory != nullptr) ::munmap(block.memory, block.bytes);
    block = {};
}

}  // namespace quillmere::neural
