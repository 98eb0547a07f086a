#include "Quillmere/Models/Video/AudioSampleRate.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quillmere {
namespace {

constexpr std::size_t bytesOfRange = 16;

double nearestInRanges(const std::vector<AudioValueRange>& ranges, double sourceRate) {
    double best = sourceRate;
    double bestDistance = std::numeric_limits<double>::max();
    for (const AudioValueRange& range : ranges) {
        double candidate = std::min(std::max(sourceRate, range.mMinimum), range.mMaximum);
        if (range.mMinimum == range.mMaximum) candidate = range.mMinimum;
        const double distance = std::abs(candidate - sourceRate);
        if (distance < bestDistance) {
            best = candidate;
            bestDistance = distance;
        }
    }
    return best;
}

double nearestFallback(double sourceRate) {
    return *std::min_element(fallbackAacSampleRates.begin(), fallbackAacSampleRates.end(),
                             [sourceRate](double a, double b) {
                                 return std::abs(a - sourceRate) < std::abs(b - sourceRate);
                             });
}

}  // namespace

double resolveOutputSampleRate(AudioToolbox& audioToolbox, double sourceRate) {
    constexpr auto property = AudioFormatPropertyID::availableEncodeSampleRates;
    constexpr auto format = AudioFormatID::mpeg4AAC;
    const auto size = audioToolbox.audioFormatGetPropertyInfo(property, format);
    if (!size || *size == 0) return nearestFallback(sourceRate);
    const auto ranges = audioToolbox.audioFormatGetProperty(property, format, *size / bytesOfRange);
    if (!ranges) return nearestFallback(sourceRate);
    return nearestInRanges(*ranges, sourceRate);
}

}  // namespace quillmere
