// Positions between pixels.
#pragma once

#include <cstdint>

namespace quillmere::scaler {

/// The taps of Lanczos's window of three lobes at eighths of a pixel, in sixty-fourths. The third
/// belongs to the pixel at or before the position.
inline constexpr int kLanczosTaps = 6;
inline constexpr int kLanczosPhases = 8;
inline constexpr std::int16_t kLanczos[kLanczosPhases][kLanczosTaps] = {
    {0, 0, 64, 0, 0, 0},    {1, -5, 62, 8, -2, 0},  {2, -9, 57, 17, -4, 1}, {2, -9, 49, 28, -7, 1},
    {2, -9, 39, 39, -9, 2}, {1, -7, 28, 49, -9, 2}, {1, -4, 17, 57, -9, 2}, {0, -2, 8, 62, -5, 1}};

}  // namespace quillmere::scaler
