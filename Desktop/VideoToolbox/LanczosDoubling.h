// Enlarges a plane to twice its size by one filter: the second doubling, and colour.
#pragma once

#include "Desktop/VideoToolbox/Plane.h"
#include "Desktop/VideoToolbox/RowBands.h"

namespace quillmere::scaler {

/// Where the first sample of a row lies.
enum class Siting {
    centre,  // brightness: an enlarged pixel is a quarter of its source's
    left,    // colour of 4:2:0 video: in line with every second brightness sample, horizontally
};

/// Border that `lanczosDouble` needs around its input.
inline constexpr int kDoublingBorder = 32;

/// Doubles the rows `band` of `from`. `to` may be smaller than twice `from`, whose border is
/// extended; what is missing is cut off.
void lanczosDouble(const PaddedPlane<std::uint8_t>& from, Siting siting, RowBand band,
                   TargetPlane to);

}  // namespace quillmere::scaler
