#include "Quillmere/Models/Services/ImageMetadataHelper.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

#include "Base/Invariant.h"
#include "Platform/ImageIO/UTType.h"

namespace quillmere {
namespace {

using TimeZone = DateFormatter::TimeZone;

void set(CGImagePropertyTable& table, std::string_view key, CGImagePropertyValue value) {
    table[std::string(key)] = std::move(value);
}

void setDate(CGImageProperties& properties, const std::string& text) {
    CGImagePropertyTable& exif = properties[std::string(kCGImagePropertyExifDictionary)];
    set(exif, kCGImagePropertyExifDateTimeOriginal, text);
    set(exif, kCGImagePropertyExifDateTimeDigitized, text);
    CGImagePropertyTable& tiff = properties[std::string(kCGImagePropertyTIFFDictionary)];
    set(tiff, kCGImagePropertyTIFFDateTime, text);
}

CGImagePropertyTable tableOf(const Location& location, const DateFormatter& formatter) {
    CGImagePropertyTable gps;
    set(gps, kCGImagePropertyGPSLatitude, std::abs(location.latitude));
    set(gps, kCGImagePropertyGPSLatitudeRef, location.latitude < 0 ? "S" : "N");
    set(gps, kCGImagePropertyGPSLongitude, std::abs(location.longitude));
    set(gps, kCGImagePropertyGPSLongitudeRef, location.longitude < 0 ? "W" : "E");
    if (location.altitude != 0) {
        set(gps, kCGImagePropertyGPSAltitude, std::abs(location.altitude));
        set(gps, kCGImagePropertyGPSAltitudeRef, std::int64_t{location.altitude < 0 ? 1 : 0});
    }
    const auto text = [&](std::string_view format) {
        return formatter.stringFromDate(location.timestamp, format, TimeZone::utc);
    };
    set(gps, kCGImagePropertyGPSDateStamp, text("yyyy:MM:dd"));
    set(gps, kCGImagePropertyGPSTimeStamp, text("HH:mm:ss"));
    return gps;
}

}  // namespace

std::string_view ImageMetadataHelper::typeIdentifier(UserDefaultsHelper::ImageFormat format) {
    using ImageFormat = UserDefaultsHelper::ImageFormat;
    switch (format) {
        case ImageFormat::jpg:
            return UTTypeJPEG;
        case ImageFormat::heic:
            return UTTypeHEIC;
        case ImageFormat::png:
            return UTTypePNG;
    }
    invariantBroken();
}

std::vector<std::byte> ImageMetadataHelper::embedMetadata(std::vector<std::byte> data,
                                                          std::optional<Date> creationDate,
                                                          const std::optional<Location>& location,
                                                          UserDefaultsHelper::ImageFormat format,
                                                          const Platform& platform) {
    if (!creationDate && !location) return data;
    // What the encoder wrote there. Where it can't be read, there is nothing to keep.
    Result<CGImageProperties> present = platform.imageMetadata.propertiesOfImage(data);
    CGImageProperties properties = present ? *std::move(present) : CGImageProperties();
    if (creationDate) {
        setDate(properties, platform.dateFormatter.stringFromDate(
                                *creationDate, "yyyy:MM:dd HH:mm:ss", TimeZone::local));
    }
    if (location) {
        properties[std::string(kCGImagePropertyGPSDictionary)] =
            tableOf(*location, platform.dateFormatter);
    }
    auto changed =
        platform.imageMetadata.imageWithProperties(data, typeIdentifier(format), properties);
    return changed ? *std::move(changed) : std::move(data);
}

}  // namespace quillmere
