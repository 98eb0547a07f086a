// Where each block of a frame was in the frame before.
#pragma once

#include <cstddef>
#include <vector>

#include "Base/Geometry.h"
#include "Desktop/VideoToolbox/RowBands.h"

namespace quillmere::scaler {

/// What to add to a position in this frame to find the same thing in the frame before, in
/// sixteenths of a source pixel.
struct MotionVector {
    static constexpr int kUnit = 16;

    int x = 0;
    int y = 0;

    friend bool operator==(const MotionVector&, const MotionVector&) = default;
};

/// One vector for each block of 16 by 16 source pixels; the last blocks may reach over the edge.
struct MotionField {
    static constexpr int kBlock = kBandRows;

    int blocksWide = 0;
    int blocksHigh = 0;
    std::vector<MotionVector> vectors;

    MotionField() = default;
    explicit MotionField(PixelSize source)
        : blocksWide((source.width + kBlock - 1) / kBlock),
          blocksHigh(bandsOf(source.height)),
          vectors(static_cast<std::size_t>(blocksWide) * blocksHigh) {}

    MotionVector& at(int x, int y) { return vectors[static_cast<std::size_t>(y) * blocksWide + x]; }
    const MotionVector& at(int x, int y) const {
        return vectors[static_cast<std::size_t>(y) * blocksWide + x];
    }
};

}  // namespace quillmere::scaler
