// How far the detail that was carried over from the last frame may be believed.
#pragma once

#include <cstdint>
#include <vector>

#include "Desktop/VideoToolbox/NoiseLevel.h"
#include "Desktop/VideoToolbox/Plane.h"
#include "Desktop/VideoToolbox/RowBands.h"

namespace quillmere::scaler {

/// What a source pixel has more than the mean of the four that stand for it, in quarters of a
/// level.
using Mismatch = PaddedPlane<std::int16_t>;

/// Border of a `Mismatch`: half of the window that trust looks at.
inline constexpr int kTrustReach = 2;

/// Fills the band's rows of `mismatch` with what `carried`, of twice the size, is off by, and adds
/// their sizes on the noise's grid to `histogram`.
void compareCarried(const PaddedPlane<std::uint8_t>& luma, const PaddedPlane<std::uint8_t>& carried,
                    RowBand band, Mismatch& mismatch, DifferenceHistogram& histogram);

/// The share of the carried frame, in 1/128.
inline constexpr int kFullShare = 109;  // 0.85: the rest renews what motion and rounding wear off

/// Shares of row `y`, each twice, as they go with the enlarged row. The mean size of the
/// mismatch over 5 by 5 pixels decides, or three times the size of its mean if that is more, as it
/// is where the light changed: all is believed up to 1 level and the noise, nothing from 6 levels
/// and 1.6 times the noise on. Noise alone makes 0.8 of itself. `shares` has room for twice the
/// width and 64 more, and `sums` is scratch.
void trustRow(const Mismatch& mismatch, int y, float noise, std::vector<std::int16_t>& sums,
              std::uint8_t* shares);

/// Mixes `count` pixels: carried = enlarged + share * (carried - enlarged), rounded. All three have
/// room for 64 more.
void mixRow(const std::uint8_t* enlarged, const std::uint8_t* shares, int count,
            std::uint8_t* carried);

}  // namespace quillmere::scaler
