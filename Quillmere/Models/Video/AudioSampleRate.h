// The rate at which the sound of a video is encoded.
#pragma once

#include <array>

#include "Platform/AudioToolbox/AudioToolbox.h"

namespace quillmere {

/// In hertz: what any AAC encoder takes.
inline constexpr std::array fallbackAacSampleRates{8000.0,  11025.0, 12000.0, 16000.0, 22050.0,
                                                   24000.0, 32000.0, 44100.0, 48000.0};

/// The rate nearest to `sourceRate` that the platform's AAC encoder takes, or that of
/// `fallbackAacSampleRates` where the encoder doesn't say. Of two at the same distance the earlier
/// one. In hertz; any thread.
double resolveOutputSampleRate(AudioToolbox& audioToolbox, double sourceRate);

}  // namespace quillmere
