// A fair choice among a few.
#pragma once

#include <cstdint>
#include <functional>
#include <random>

namespace quillmere {

/// 64 random bits a call.
using RandomSource = std::function<std::uint64_t()>;

/// The system's.
inline std::uint64_t systemRandom() {
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
}

/// Uniformly one of 0 to `bound` - 1, for a `bound` above zero. Multiplies into 128 bits and takes
/// the upper half; a draw whose lower half would favour some numbers is rejected (D. Lemire, "Fast
/// Random Integer Generation in an Interval", 2019).
inline std::uint64_t uniformBelow(std::uint64_t bound, const RandomSource& random) {
    __extension__ using Wide = unsigned __int128;
    const std::uint64_t unfair = -bound % bound;
    for (;;) {
        const auto product = static_cast<Wide>(random()) * bound;
        if (static_cast<std::uint64_t>(product) >= unfair) {
            return static_cast<std::uint64_t>(product >> 64);
        }
    }
}

/// Uniformly one of 0 up to `bound`, which is left out, in 53 bits.
inline double uniformUpTo(double bound, const RandomSource& random) {
    constexpr int bits = 53;
    constexpr double steps = static_cast<double>(std::uint64_t{1} << bits);
    return static_cast<double>(random() >> (64 - bits)) / steps * bound;
}

}  // namespace quillmere
