// Enlarges rows of a frame to twice their size, each pixel by the filters of its class.
#pragma once

#include <cstdint>
#include <vector>

#include "Desktop/VideoToolbox/DoublingFilters.h"
#include "Desktop/VideoToolbox/Plane.h"

namespace quillmere::scaler {

/// Writes two rows of twice the width of `luma` for its row `y`, rounded to the nearest level and
/// clamped. `luma` holds the frame's levels with an extended border of 8 or more; `classes` one
/// class a pixel; `upper` and `lower` room for 8 pixels more than they get.
void doubleRow(const PaddedPlane<std::int16_t>& luma, int y, const std::uint8_t* classes,
               const DoublingFilters& filters, std::uint8_t* upper, std::uint8_t* lower);

}  // namespace quillmere::scaler
