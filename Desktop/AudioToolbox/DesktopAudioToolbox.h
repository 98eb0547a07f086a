// What the desktop's audio encoder can do.
#pragma once

#include "Platform/AudioToolbox/AudioToolbox.h"

namespace quillmere {

/// Knows the sample rates of AAC; everything else is an error.
class DesktopAudioToolbox final : public AudioToolbox {
public:
    Result<std::size_t> audioFormatGetPropertyInfo(AudioFormatPropertyID property,
                                                   AudioFormatID specifier) override;
    Result<std::vector<AudioValueRange>> audioFormatGetProperty(AudioFormatPropertyID property,
                                                                AudioFormatID specifier,
                                                                std::size_t count) override;
};

}  // namespace quillmere
