// Carries the detail of the last enlarged frame to where it belongs in this one.
#pragma once

#include "Desktop/VideoToolbox/MotionField.h"
#include "Desktop/VideoToolbox/Plane.h"

namespace quillmere::scaler {

/// How far `warpBlocks` may reach beyond an edge, in pixels of the enlarged frame.
inline constexpr int kWarpBorder = 96;

/// Fills the rows of one row of blocks of `to` with what `field` finds in `before`, both of twice
/// the source's size: block by block, rows then columns, rounded to levels in between. The filter
/// is Lanczos's: a softer one would wear off, frame by frame, what its output is fed back for.
/// `before` has an extended border of kWarpBorder, and `to` one at least a block wide.
void warpBlocks(const PaddedPlane<std::uint8_t>& before, const MotionField& field, int blockRow,
                PaddedPlane<std::uint8_t>& to);

}  // namespace quillmere::scaler
