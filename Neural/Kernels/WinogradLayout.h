// How the tiles of a Winograd convolution are worked through.
#pragma once

#include <cstddef>
#include <vector>

#include "Neural/Kernels/Convolution.h"
#include "Neural/Kernels/WinogradKernel.h"

namespace quillmere::neural {

/// Outputs that the products of a spot are computed for at once: two groups.
inline constexpr std::size_t kBlockOutputs = 2 * kGroupOutputs;
/// Tiles that lie together; a multiple of every target's matrix kernel.
inline constexpr std::size_t kPanelTiles = 12;
/// The values of a panel for one spot and one group of channels: [tile][channel].
inline constexpr std::size_t kCellFloats = kPanelTiles * kGroupOutputs;

inline std::size_t groupsOf(std::size_t planes) { return (planes + 1) / 2; }

/// The tiles of a call, row by row, some panels at a time.
///
/// The transformed input of these panels is [panel][input group][spot] of cells, their products
/// are [output group of the block][panel][spot] of cells. A tile's 36 spots are therefore near each
/// other, on 7 pages of memory: were the spots outermost, each would have a page of its own, and
/// the processor would spend its time on translating addresses.
struct WinogradLayout {
    std::size_t tilesWide = 0;
    std::size_t tiles = 0;
    std::size_t panelsInBlock = 0;
    std::vector<Plane> planes;  // of the input
    std::size_t inputGroups = 0;

    static WinogradLayout of(const ConvolutionCall& call);

    std::size_t tilesInBlock() const { return panelsInBlock * kPanelTiles; }
    std::size_t blocks() const { return (tiles + tilesInBlock() - 1) / tilesInBlock(); }

    std::size_t inputCell(std::size_t panel, std::size_t group, std::size_t spot) const {
        return ((panel * inputGroups + group) * kWinogradSpots + spot) * kCellFloats;
    }
    std::size_t productCell(std::size_t group, std::size_t panel, std::size_t spot) const {
        return ((group * panelsInBlock + panel) * kWinogradSpots + spot) * kCellFloats;
    }
    std::size_t inputFloats() const { return inputCell(panelsInBlock, 0, 0); }
    std::size_t scratchFloats() const { return inputFloats() + productCell(2, 0, 0); }
};

}  // namespace quillmere::neural
