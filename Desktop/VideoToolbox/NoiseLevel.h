// How strong the noise of a frame is, without which nothing tells detail from noise.
#pragma once

#include <array>
#include <cstddef>

#include "Desktop/VideoToolbox/Plane.h"
#include "Desktop/VideoToolbox/RowBands.h"

namespace quillmere::scaler {

/// Of absolute differences, in steps of the caller's choice; the last bin takes what is larger.
class DifferenceHistogram {
public:
    void add(int difference) { ++bins_[difference < kBins ? difference : kBins - 1]; }
    void add(const DifferenceHistogram& other);
    void clear() { bins_.fill(0); }
    /// 0 where there is nothing.
    int median() const;

private:
    static constexpr int kBins = 1024;
    std::array<std::size_t, kBins> bins_{};
};

/// One pixel in four times four is looked at.
inline constexpr int kNoiseStep = 4;

/// Adds the band's response to the mask of Immerkaer ("Fast noise variance estimation", 1996), six
/// times the deviation of white noise and blind to edges that are straight. `luma` has an extended
/// border.
void addNoiseResponse(const PaddedPlane<std::uint8_t>& luma, RowBand band,
                      DifferenceHistogram& histogram);

/// The standard deviation of the noise in levels, 0 to 8: the smaller of what the frame alone shows
/// and of what differs from the frame before after motion, for texture looks like noise to the one
/// and a change of light to the other. `within` is of `addNoiseResponse`, `between` of differences
/// in quarters of a level. What rounding to whole levels makes counts as none.
float noiseLevel(const DifferenceHistogram& within, const DifferenceHistogram& between);

}  // namespace quillmere::scaler
