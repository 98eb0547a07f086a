// A frame's brightness as the motion search sees it: smoothed, at three sizes.
#pragma once

#include "Desktop/VideoToolbox/Plane.h"
#include "Desktop/VideoToolbox/RowBands.h"

namespace quillmere::scaler {

/// Aliasing, which changes from frame to frame, would mislead a search on the frame itself.
/// The full size is the frame under the binomial filter (1 2 1)/4 in both directions; each further
/// size is the rounded mean of 2 by 2 pixels of the one before, an odd last line going with itself.
struct Pyramid {
    static constexpr int kBorder = 64;

    PaddedPlane<std::uint8_t> full;
    PaddedPlane<std::uint8_t> half;
    PaddedPlane<std::uint8_t> quarter;

    explicit Pyramid(PixelSize size);

    /// Fills the part that belongs to the band, which begins at a multiple of 4 and ends at one or
    /// at the edge. `luma` has the constructor's size and an extended border of 1 or more.
    void build(const PaddedPlane<std::uint8_t>& luma, RowBand band);
};

}  // namespace quillmere::scaler
