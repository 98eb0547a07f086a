// How the tiles of a Winograd convolution are worked through.
#pragma once

#include <cstddef>

#include "Neural/Kernels/Convolution.h"
#include "Neural/Kernels/WinogradKernel.h"

namespace quillmere::neural {
/// Outputs that the products of a spot are computed for at once: two groups.
inline constexpr std::size_t kBlockOutputs = 2 * kGroupOutputs;
inline constexpr std::size_t kCacheLineFloats = 16;

inline std::size_t groupsOf(std::size_t planes) { return (planes + 1) / 2; }

/// The tiles of a call, `tilesInBlock` at a time, row by row.
///
/// For a block of tiles, the transformed input is [spot][input group][tile][16] and the products
/// are [spot][output group of the block][tile][16]. Each spot's part is a cache line longer than
/// it need be: parts that lie a power of two apart would compete for the same lines.
struct WinogradLayout {
    std::size_t tilesWide = 0;
    std::size_t tiles = 0;
    std::size_t tilesInBlock = 0;
    std::size_t inputGroups = 0;
    std::size_t inputSpotFloats = 0;
    std::size_t productSpotFloats = 0;

    static WinogradLayout of(const ConvolutionCall& call);

    std::size_t blocks() const { return (tiles + tilesInBlock - 1) / tilesInBlock; }
    std::size_t scratchFloats() const {
        return kWinogradSpots * (inputSpotFloats + productSpotFloats);
    }
};

}  // namespace quillmere::neural
