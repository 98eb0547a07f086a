#include "Desktop/ImageIO/ExifRational.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <numeric>

namespace quillmere {
namespace {

constexpr std::uint32_t finest = 1'000'000;

ExifRational reduced(std::uint32_t numerator, std::uint32_t denominator) {
    const std::uint32_t divisor = std::gcd(numerator, denominator);
    return {numerator / divisor, denominator / divisor};
}

}  // namespace

std::optional<ExifRational> exifRational(double value) {
    constexpr double most = std::numeric_limits<std::int32_t>::max();
    if (!(value >= 0 && value <= most)) return {};
    std::uint32_t denominator = finest;
    while (std::round(value * denominator) > most) denominator /= 10;
    return reduced(static_cast<std::uint32_t>(std::llround(value * denominator)), denominator);
}

std::optional<std::array<ExifRational, 3>> exifDegrees(double degrees) {
    if (!(degrees >= 0 && degrees <= 360)) return {};
    // Split after rounding, so that no seconds can become 60.
    constexpr std::int64_t perMinute = std::int64_t{60} * finest;
    const std::int64_t parts = std::llround(degrees * 60 * perMinute);
    const auto whole = [](std::int64_t value) { return static_cast<std::uint32_t>(value); };
    return std::array{ExifRational{whole(parts / (60 * perMinute)), 1},
                      ExifRational{whole(parts / perMinute % 60), 1},
                      reduced(whole(parts % perMinute), finest)};
}

std::optional<std::array<ExifRational, 3>> exifTime(std::string_view text) {
    if (text.size() != 8 || text[2] != ':' || text[5] != ':') return {};
    std::array<ExifRational, 3> parts;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const char* digits = text.data() + 3 * i;
        parts[i].second = 1;
        if (std::from_chars(digits, digits + 2, parts[i].first).ptr != digits + 2) return {};
    }
    return parts;
}

}  // namespace quillmere
