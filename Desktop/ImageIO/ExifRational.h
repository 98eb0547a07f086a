// Numbers as the pairs of whole numbers that Exif stores.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillmere {

/// Numerator and denominator.
using ExifRational = std::pair<std::uint32_t, std::uint32_t>;

/// The nearest with a denominator of 1,000,000, or of less where the value is too large for that,
/// in lowest terms. Nothing for values below 0 or over 2^31 - 1, which readers with signed numbers
/// would misunderstand, or for what is no number.
std::optional<ExifRational> exifRational(double value);

/// Whole degrees, whole minutes, and seconds in steps of 1/1,000,000; from 0 to 360 degrees.
std::optional<std::array<ExifRational, 3>> exifDegrees(double degrees);

/// Of "HH:mm:ss".
std::optional<std::array<ExifRational, 3>> exifTime(std::string_view text);

}  // namespace quillmere
