// What the metadata tables of a picture file say.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace quillmere {

using CGImagePropertyValue = std::variant<std::string, double, std::int64_t>;
using CGImagePropertyTable = std::map<std::string, CGImagePropertyValue, std::less<>>;

/// Tables by their names, the three below.
using CGImageProperties = std::map<std::string, CGImagePropertyTable, std::less<>>;

/// The entries of these tables have the names that the Exif standard (CIPA DC-008) gives them, in
/// the GPS table without the leading "GPS". Times are "yyyy:MM:dd HH:mm:ss", without a zone.
inline constexpr std::string_view kCGImagePropertyExifDictionary = "{Exif}";
inline constexpr std::string_view kCGImagePropertyExifDateTimeOriginal = "DateTimeOriginal";
inline constexpr std::string_view kCGImagePropertyExifDateTimeDigitized = "DateTimeDigitized";

inline constexpr std::string_view kCGImagePropertyTIFFDictionary = "{TIFF}";
inline constexpr std::string_view kCGImagePropertyTIFFDateTime = "DateTime";

/// Places are amounts of 0 or more, beside the side of zero on which they lie.
inline constexpr std::string_view kCGImagePropertyGPSDictionary = "{GPS}";
inline constexpr std::string_view kCGImagePropertyGPSLatitude = "Latitude";          // degrees
inline constexpr std::string_view kCGImagePropertyGPSLatitudeRef = "LatitudeRef";    // "N", "S"
inline constexpr std::string_view kCGImagePropertyGPSLongitude = "Longitude";        // degrees
inline constexpr std::string_view kCGImagePropertyGPSLongitudeRef = "LongitudeRef";  // "E", "W"
inline constexpr std::string_view kCGImagePropertyGPSAltitude = "Altitude";          // metres
inline constexpr std::string_view kCGImagePropertyGPSAltitudeRef = "AltitudeRef";    // 1: below sea
inline constexpr std::string_view kCGImagePropertyGPSDateStamp = "DateStamp";  // "yyyy:MM:dd", UTC
inline constexpr std::string_view kCGImagePropertyGPSTimeStamp = "TimeStamp";  // "HH:mm:ss", UTC

}  // namespace quillmere
