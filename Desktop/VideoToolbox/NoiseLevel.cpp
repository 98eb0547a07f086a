#include "Desktop/VideoToolbox/NoiseLevel.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace quillmere::scaler {
namespace {

constexpr float kMedianOfNormal = 0.6745f;  // of the absolute value, for a deviation of 1
constexpr float kRounding = 0.8f;           // levels: what noiseless frames were seen to show
constexpr float kLoudest = 8;               // stronger noise hides too much to be told from ghosts

}  // namespace

void DifferenceHistogram::add(const DifferenceHistogram& other) {
    for (std::size_t n = 0; n < bins_.size(); ++n) bins_[n] += other.bins_[n];
}

int DifferenceHistogram::median() const {
    const std::size_t half = std::accumulate(bins_.begin(), bins_.end(), std::size_t{0}) / 2;
    std::size_t seen = 0;
    for (int n = 0; n < kBins; ++n) {
        seen += bins_[n];
        if (seen > half) return n;
    }
    return 0;
}

void addNoiseResponse(const PaddedPlane<std::uint8_t>& luma, RowBand band,
                      DifferenceHistogram& histogram) {
    static_assert(kBandRows % kNoiseStep == 0);
    for (int y = band.first; y < band.end; y += kNoiseStep) {
        const std::uint8_t *above = luma.row(y - 1), *row = luma.row(y), *below = luma.row(y + 1);
        for (int x = 0; x < luma.size().width; x += kNoiseStep) {
            const int corners = above[x - 1] + above[x + 1] + below[x - 1] + below[x + 1];
            const int sides = above[x] + row[x - 1] + row[x + 1] + below[x];
            histogram.add(std::abs(corners - 2 * sides + 4 * row[x]));
        }
    }
}

float noiseLevel(const DifferenceHistogram& within, const DifferenceHistogram& between) {
    const float alone = static_cast<float>(within.median()) / 6;
    const float change = static_cast<float>(between.median()) / 4;
    return std::clamp(std::min(alone, change) / kMedianOfNormal - kRounding, 0.0f, kLoudest);
}

}  // namespace quillmere::scaler
