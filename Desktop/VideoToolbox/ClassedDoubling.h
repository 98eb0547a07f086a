// Enlarges rows of a frame to twice their size, each pixel by the filters of its class.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Desktop/VideoToolbox/DoublingFilters.h"
#include "Desktop/VideoToolbox/Plane.h"

namespace quillmere::scaler {

/// Writes four rows of twice the width of `luma` for its rows `y` and `y + 1`, rounded to the
/// nearest level and clamped. `luma` has an extended border of 8 or more; `classes` holds one class
/// for each 2 by 2 pixels, and a valid one more. Each row needs room for 8 pixels more than it
/// gets.
void doubleRows(const PaddedPlane<std::uint8_t>& luma, int y, const std::uint8_t* classes,
                const DoublingFilters& filters, std::uint8_t* to, std::ptrdiff_t stride);

}  // namespace quillmere::scaler
