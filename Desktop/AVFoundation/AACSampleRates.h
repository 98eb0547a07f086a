// The sample rates of the AAC encoder, for those who know nothing of FFmpeg.
#pragma once

#include <vector>

namespace quillmere {

/// In hertz, as the encoder lists them; empty where there is no encoder.
std::vector<int> aacSampleRates();

}  // namespace quillmere
