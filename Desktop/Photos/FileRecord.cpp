#include "Desktop/Photos/FileRecord.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <exception>
#include <initializer_list>
#include <string_view>

#include "Desktop/AVFoundation/MovieModule.h"
#include "Desktop/ImageIO/ExifTables.h"
#include "Desktop/ImageIO/PictureHeader.h"
#include "Desktop/ImageIO/XMPProperties.h"
#include "Desktop/Photos/TagTexts.h"

namespace quillmere {
namespace {

constexpr std::array<std::string_view, 14> pictureEndings{
    ".jpg", ".jpeg", ".jpe", ".png",  ".webp", ".heic", ".heif",
    ".hif", ".avif", ".tif", ".tiff", ".jxl",  ".gif",  ".bmp"};
constexpr std::array<std::string_view, 13> movieEndings{".mp4",  ".m4v",  ".mov", ".qt",   ".mkv",
                                                        ".avi",  ".webm", ".mpg", ".mpeg", ".mts",
                                                        ".m2ts", ".3gp",  ".ogv"};

std::string endingOf(const std::filesystem::path& file) {
    std::string ending = file.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending;
}

template <class Endings>
bool isOneOf(const Endings& endings, const std::string& ending) {
    return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

template <class Value>
std::optional<Value> entryOf(const CGImageProperties& properties, std::string_view table,
                             std::string_view name) {
    const auto found = properties.find(table);
    if (found == properties.end()) return std::nullopt;
    const auto entry = found->second.find(name);
    if (entry == found->second.end()) return std::nullopt;
    const auto* value = std::get_if<Value>(&entry->second);
    return value ? std::optional(*value) : std::nullopt;
}

bool isOnEarth(const Location& location) {
    return std::abs(location.latitude) <= 90 && std::abs(location.longitude) <= 180;
}

std::optional<Date> dateOf(const CGImageProperties& properties) {
    struct Source {
        std::string_view table;
        std::string_view date;
        std::string_view zone;
    };
    for (const auto& [table, date, zone] : {
             Source{kCGImagePropertyExifDictionary, "DateTimeOriginal", "OffsetTimeOriginal"},
             Source{kCGImagePropertyExifDictionary, "DateTimeDigitized", "OffsetTimeDigitized"},
             Source{kCGImagePropertyTIFFDictionary, "DateTime", "OffsetTime"},
         }) {
        const auto text = entryOf<std::string>(properties, table, date);
        if (!text) continue;
        const auto offset = entryOf<std::string>(properties, kCGImagePropertyExifDictionary, zone);
        if (const auto found = dateOfText(*text, offset.value_or(""))) return found;
    }
    return std::nullopt;
}

std::optional<Location> locationOf(const CGImageProperties& properties) {
    const auto gps = [&]<class Value>(std::string_view name, Value) {
        return entryOf<Value>(properties, kCGImagePropertyGPSDictionary, name);
    };
    const auto latitude = gps("Latitude", double{});
    const auto longitude = gps("Longitude", double{});
    if (!latitude || !longitude) return std::nullopt;
    Location location;
    location.latitude = gps("LatitudeRef", std::string()) == "S" ? -*latitude : *latitude;
    location.longitude = gps("LongitudeRef", std::string()) == "W" ? -*longitude : *longitude;
    const double altitude = gps("Altitude", double{}).value_or(0);
    location.altitude = gps("AltitudeRef", std::int64_t{}) == 1 ? -altitude : altitude;
    const auto day = gps("DateStamp", std::string());
    const auto time = gps("TimeStamp", std::string());
    if (day && time) {
        location.timestamp = dateOfText(*day + " " + *time, "Z").value_or(Date());
    }
    return location;
}

void fillFromXMP(FileRecord& record, const std::map<std::string, std::string>& xmp) {
    const auto text = [&](const char* key) {
        const auto found = xmp.find(key);
        return found == xmp.end() ? std::string() : found->second;
    };
    for (const char* key : {"exif:DateTimeOriginal", "photoshop:DateCreated", "xmp:CreateDate"}) {
        if (!record.creationDate) record.creationDate = dateOfText(text(key));
    }
    const auto latitude = degreesOfXMP(text("exif:GPSLatitude"));
    const auto longitude = degreesOfXMP(text("exif:GPSLongitude"));
    if (record.location || !latitude || !longitude) return;
    record.location = Location{*latitude, *longitude, 0, Date()};
    if (const auto fixed = dateOfText(text("exif:GPSTimeStamp"))) {
        record.location->timestamp = *fixed;
    }
}

/// A place without a time of its own was met when the picture was taken.
void settleLocation(FileRecord& record) {
    if (!record.location) return;
    if (!isOnEarth(*record.location)) return record.location.reset();
    if (record.location->timestamp == Date() && record.creationDate) {
        record.location->timestamp = *record.creationDate;
    }
}

std::optional<FileRecord> pictureRecord(const std::filesystem::path& file) {
    const auto header = readPictureHeader(file);
    if (!header) return std::nullopt;
    FileRecord record;
    record.typeIdentifier = header->typeIdentifier;
    record.pixelSize = header->size;
    record.orientation = header->orientation;
    if (const auto properties = propertiesOfExif(header->exif)) {
        record.creationDate = dateOf(*properties);
        record.location = locationOf(*properties);
    }
    fillFromXMP(record, propertiesOfXMP(header->xmp));
    settleLocation(record);
    return record;
}

std::optional<FileRecord> movieRecord(const std::filesystem::path& file) {
    const MovieModule* module = loadMovieModule();
    const auto tags = module ? module->readMovieTags(file) : std::nullopt;
    if (!tags) return std::nullopt;
    FileRecord record;
    record.mediaType = PHAssetMediaType::video;
    const std::string ending = endingOf(file);
    record.typeIdentifier = ending == ".mov" || ending == ".qt"    ? "com.apple.quicktime-movie"
                            : ending == ".mp4" || ending == ".m4v" ? "public.mpeg-4"
                                                                   : "public.movie";
    record.pixelSize = tags->size;
    const auto firstOf = [&](std::initializer_list<const char*> names, auto parse) {
        for (const char* name : names) {
            const auto found = tags->texts.find(name);
            if (found == tags->texts.end()) continue;
            if (auto value = parse(found->second)) return value;
        }
        return decltype(parse(std::string()))();
    };
    // The first carries the zone in which it was taken; the others are in UTC.
    record.creationDate = firstOf({"com.apple.quicktime.creationdate", "creation_time", "date"},
                                  [](const std::string& text) { return dateOfText(text); });
    record.location = firstOf({"com.apple.quicktime.location.ISO6709", "location"},
                              [](const std::string& text) { return locationOfISO6709(text); });
    settleLocation(record);
    return record;
}

}  // namespace

std::optional<FileRecord> readFileRecord(const std::filesystem::path& file) try {
    // By the name first, as a movie's decoder would take its time over a picture.
    if (isOneOf(movieEndings, endingOf(file))) return movieRecord(file);
    return pictureRecord(file);
} catch (const std::exception&) {  // too little memory
    return std::nullopt;
}

bool mayBePictureOrMovie(const std::filesystem::path& file) {
    const std::string ending = endingOf(file);
    return isOneOf(pictureEndings, ending) || isOneOf(movieEndings, ending);
}

}  // namespace quillmere
