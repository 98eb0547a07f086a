#include "Desktop/AudioToolbox/DesktopAudioToolbox.h"

#include <algorithm>
#include <limits>

#include "Desktop/AVFoundation/AACSampleRates.h"

namespace quillmere {

Result<std::size_t> DesktopAudioToolbox::audioFormatGetPropertyInfo(AudioFormatPropertyID property,
                                                                    AudioFormatID specifier) {
    const auto all =
        audioFormatGetProperty(property, specifier, std::numeric_limits<std::size_t>::max());
    if (!all) return all.error();
    return all->size() * sizeof(AudioValueRange);
}

Result<std::vector<AudioValueRange>> DesktopAudioToolbox::audioFormatGetProperty(
    AudioFormatPropertyID property, AudioFormatID specifier, std::size_t count) {
    constexpr int unsupportedFormat = 0x666d743f;  // "fmt?"
    if (property != AudioFormatPropertyID::availableEncodeSampleRates ||
        specifier != AudioFormatID::mpeg4AAC) {
        return Error{"NSOSStatusErrorDomain", unsupportedFormat,
                     "There is no encoder for this kind of sound."};
    }
    std::vector<int> rates = aacSampleRates();
    std::sort(rates.begin(), rates.end());
    rates.resize(std::min(rates.size(), count));
    std::vector<AudioValueRange> ranges;
    for (const int rate : rates) {
        ranges.push_back({static_cast<double>(rate), static_cast<double>(rate)});
    }
    return ranges;
}

}  // namespace quillmere
