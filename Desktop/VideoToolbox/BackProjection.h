// Makes an enlarged frame agree with its source: reduced again, it is to give the source.
#pragma once

#include <cstdint>

#include "Desktop/VideoToolbox/Plane.h"
#include "Desktop/VideoToolbox/RowBands.h"

namespace quillmere::scaler {

/// What the source has more than the enlarged frame, in quarters of a level; a border of 1.
using Residual = PaddedPlane<std::int16_t>;

/// One step of iterative back-projection (Irani and Peleg, "Improving resolution by image
/// registration", 1991) with the mean of 2 by 2 pixels as the reduction: it is what a sensor's
/// pixels do, and a step of 0.8 does no harm to sources that were reduced otherwise.
///
/// Of a residual that noise alone explains (up to twice its deviation), only 0.15 is taken over:
/// the mean of many frames is nearer to the truth than the newest one. From three times on all of
/// it is, so that whatever was carried over wrongly goes. Noise of less than a quarter of a level
/// counts as none.
void findResidual(const PaddedPlane<std::uint8_t>& luma, const PaddedPlane<std::uint8_t>& enlarged,
                  RowBand band, float noise, Residual& residual);

/// Adds the residual, interpolated linearly, to the rows of the band (of the source) in place. The
/// residual's border must be extended.
void addResidual(const Residual& residual, RowBand band, PaddedPlane<std::uint8_t>& enlarged);

}  // namespace quillmere::scaler
