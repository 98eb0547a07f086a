// What the platform's audio encoders can do, and how sound is described.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Base/Result.h"

namespace quillmere {

/// The platform's four-character codes.
enum class AudioFormatID : std::uint32_t {
    linearPCM = 0x6c70636d,  // "lpcm"
    mpeg4AAC = 0x61616320,   // "aac "
};

enum class AudioFormatPropertyID : std::uint32_t {
    availableEncodeSampleRates = 0x61657372,  // "aesr"
};

/// The platform's record; `AudioFormatGetPropertyInfo` counts 16 bytes for each.
struct AudioValueRange {
    double mMinimum = 0;
    double mMaximum = 0;

    friend bool operator==(const AudioValueRange&, const AudioValueRange&) = default;
};

struct AudioStreamBasicDescription {
    double mSampleRate = 0;  // in hertz
    std::uint32_t mChannelsPerFrame = 0;

    friend bool operator==(const AudioStreamBasicDescription&,
                           const AudioStreamBasicDescription&) = default;
};

/// May be called from any thread.
class AudioToolbox {
public:
    virtual ~AudioToolbox() = default;

    /// The size in bytes of what `audioFormatGetProperty` has to say. Fails for a format that the
    /// platform doesn't encode.
    virtual Result<std::size_t> audioFormatGetPropertyInfo(AudioFormatPropertyID property,
                                                           AudioFormatID specifier) = 0;

    /// At most `count` entries. A rate that stands alone is a range of which both ends are equal.
    virtual Result<std::vector<AudioValueRange>> audioFormatGetProperty(
        AudioFormatPropertyID property, AudioFormatID specifier, std::size_t count) = 0;
};

}  // namespace quillmere
