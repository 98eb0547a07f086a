// IEEE 754 half precision, the storage type of weights; arithmetic is always in float.
#pragma once

#include <bit>
#include <cstdint>

namespace quillmere::neural {

/// The bits of a half precision number.
using Half = std::uint16_t;

/// Infinity or not a number.
constexpr bool isFinite(Half value) { return (value & 0x7C00) != 0x7C00; }

/// Exact.
constexpr float toFloat(Half value) {
    const std::uint32_t sign = (value & 0x8000u) << 16;
    const std::uint32_t exponent = (value >> 10) & 0x1Fu;
    const std::uint32_t fraction = value & 0x3FFu;
    if (exponent == 0) {  // zero or subnormal: fraction * 2^-24
        const float magnitude = static_cast<float>(fraction) * 0x1p-24f;
        return std::bit_cast<float>(sign | std::bit_cast<std::uint32_t>(magnitude));
    }
    const std::uint32_t widened = exponent == 31 ? 255u : exponent + 112u;
    return std::bit_cast<float>(sign | (widened << 23) | (fraction << 13));
}

/// The nearest half, ties to even; what is too large becomes infinity.
constexpr Half toHalf(float value) {
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(value);
    const auto sign = static_cast<std::uint32_t>((bits >> 16) & 0x8000u);
    const std::uint32_t magnitude = bits & 0x7FFFFFFFu;
    if (magnitude > 0x7F800000u) return static_cast<Half>(sign | 0x7E00u);
    if (magnitude >= 0x477FF000u) return static_cast<Half>(sign | 0x7C00u);  // 65520 and above
    if (magnitude < 0x38800000u) {  // below 2^-14: let the addition round to multiples of 2^-24
        const float shifted = std::bit_cast<float>(magnitude) + 0.5f;
        return static_cast<Half>(sign | (std::bit_cast<std::uint32_t>(shifted) - 0x3F000000u));
    }
    const std::uint32_t odd = (magnitude >> 13) & 1u;
    const std::uint32_t rounded = (magnitude + 0xFFFu + odd - 0x38000000u) >> 13;
    return static_cast<Half>(sign | rounded);
}

}  // namespace quillmere::neural
