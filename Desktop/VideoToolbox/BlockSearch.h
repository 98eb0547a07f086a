// The coarse part of the motion search.
#pragma once

#include <cstddef>
#include <vector>

#include "Desktop/VideoToolbox/MotionField.h"
#include "Desktop/VideoToolbox/Pyramid.h"

namespace quillmere::scaler {

/// A displacement in whole pixels of its size.
struct Step {
    int x = 0;
    int y = 0;

    friend bool operator==(const Step&, const Step&) = default;
};

/// The sum of absolute differences of two windows of 8 by 8 pixels.
int windowDifference(const std::uint8_t* a, std::ptrdiff_t strideA, const std::uint8_t* b,
                     std::ptrdiff_t strideB);

/// Hierarchical search by the sum of absolute differences (Bierling, "Displacement estimation by
/// hierarchical blockmatching", 1988): everything within `kReach` at a quarter of the size, in
/// blocks of 32 source pixels, then the best of the neighbourhood's results at half the size,
/// corrected by at most a pixel. What is left, up to two source pixels, is SubpixelMotion.h's.
class BlockSearch {
public:
    /// In pixels of the quarter size: 24 of the source. Further motion in one frame is not found.
    static constexpr int kReach = 6;
    /// No result is longer than this in either direction, in source pixels.
    static constexpr int kLongest = 4 * kReach + 2;

    /// Rows of a coarse block, in source pixels.
    static constexpr int kCoarseRows = 2 * MotionField::kBlock;

    explicit BlockSearch(PixelSize source);

    /// Searches the quarter size for the coarse blocks that begin in the band. All of them come
    /// before the first `find` for a pair of frames. Of `frame`, only the band's part is read.
    void searchCoarsely(const Pyramid& frame, const Pyramid& before, RowBand band);

    /// The best step for a block of `MotionField`, even in both directions. May be called from
    /// several threads.
    Step find(const Pyramid& frame, const Pyramid& before, int blockX, int blockY) const;

private:
    Step coarseAt(int x, int y) const;

    int wide_;
    int high_;
    std::vector<Step> coarse_;  // one for each 2 by 2 blocks
};

}  // namespace quillmere::scaler
