#include "Neural/Runtime/PlaneArena.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>

namespace quillmere::neural {
namespace {

// A plane of a 256 by 256 tile is a little more than such a page: one fault instead of 512. The
// mapping is that much longer so as to begin with one; what isn't touched costs nothing.
constexpr std::size_t kHugePage = std::size_t{2} << 20;

}  // namespace

PlaneArena::~PlaneArena() {
    for (SlotId slot = 0; slot < blocks_.size(); ++slot) release(slot);
}

float* PlaneArena::block(SlotId slot, std::size_t floats) {
    Block& block = blocks_[slot];
    if (block.mapping == nullptr) {
        const std::size_t bytes = floats * sizeof(float) + kHugePage;
        void* memory =
            ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        const auto address = reinterpret_cast<std::uintptr_t>(memory);
        const std::size_t offset = (kHugePage - address % kHugePage) % kHugePage;
        // Where the system doesn't do so, nothing is lost.
        ::madvise(static_cast<char*>(memory) + offset, bytes - kHugePage, MADV_HUGEPAGE);
        block = {memory, bytes, reinterpret_cast<float*>(address + offset)};
    }
    return block.floats;
}

void PlaneArena::release(SlotId slot) {
    Block& block = blocks_[slot];
    if (block.mapping != nullptr) ::munmap(block.mapping, block.bytes);
    block = {};
}

}  // namespace quillmere::neural
