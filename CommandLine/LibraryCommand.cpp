#include "CommandLine/LibraryCommand.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "Base/Invariant.h"
#include "CommandLine/ProgressLine.h"
#include "Quillmere/Models/Services/LocalizedReason.h"

namespace quillmere::cli {
namespace {

// Fetched at once, so that a library of any size is listed in flat memory.
constexpr std::size_t pageSize = 1000;

std::string_view kindOf(const LibraryAsset& asset) {
    return asset.asset.mediaType == PHAssetMediaType::video ? "video" : "picture";
}

/// "2024-05-04T15:10:00Z"
std::string timeStamp(Date date, const DateFormatter& formatter) {
    const auto part = [&](const char* format) {
        return formatter.stringFromDate(date, format, DateFormatter::TimeZone::utc);
    };
    return part("yyyy-MM-dd") + "T" + part("HH:mm:ss") + "Z";
}

std::string localTime(const LibraryAsset& asset, const DateFormatter& formatter) {
    if (!asset.asset.creationDate) return "-";
    return formatter.stringFromDate(*asset.asset.creationDate, "yyyy-MM-dd HH:mm:ss",
                                    DateFormatter::TimeZone::local);
}

std::string sizeOf(const LibraryAsset& asset) {
    const PixelSize size = asset.asset.pixelSize;
    if (size.width == 0) return "-";
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

void printJSON(const LibraryAsset& asset, const DateFormatter& formatter) {
    using Json = nlohmann::ordered_json;
    Json line = {{"identifier", asset.asset.localIdentifier},
                 {"path", asset.path.string()},
                 {"kind", kindOf(asset)},
                 {"type", asset.typeIdentifier}};
    if (asset.asset.pixelSize.width > 0) {
        line["width"] = asset.asset.pixelSize.width;
        line["height"] = asset.asset.pixelSize.height;
    }
    if (asset.asset.creationDate) line["created"] = timeStamp(*asset.asset.creationDate, formatter);
    if (const auto& place = asset.asset.location) {
        line["latitude"] = place->latitude;
        line["longitude"] = place->longitude;
        line["altitude"] = place->altitude;
        line["fixed"] = timeStamp(place->timestamp, formatter);
    }
    // File names are bytes: what is no UTF-8 is shown with replacement characters.
    std::printf("%s\n", line.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
}

void printRow(const LibraryAsset& asset, const DateFormatter& formatter) {
    std::printf("%s  %s  %-11s %s\n", asset.asset.localIdentifier.c_str(),
                localTime(asset, formatter).c_str(), sizeOf(asset).c_str(), asset.path.c_str());
}

void printFacts(const LibraryAsset& asset, const DateFormatter& formatter) {
    const auto row = [](const char* name, const std::string& value) {
        std::printf("%-10s %s\n", name, value.c_str());
    };
    row("File", asset.path.string());
    row("Kind", std::string(kindOf(asset)) + ", " + asset.typeIdentifier);
    row("Size", sizeOf(asset));
    row("Created", localTime(asset, formatter));
    if (const auto& place = asset.asset.location) {
        char text[96];
        std::snprintf(text, sizeof text, "%.6f, %.6f, %.1f m above the sea", place->latitude,
                      place->longitude, place->altitude);
        row("Place", text);
    }
}

Result<void> list(const LibraryOptions& options, DesktopPhotoLibrary& library,
                  const DateFormatter& formatter) {
    for (std::size_t first = 0;; first += pageSize) {
        const auto assets = library.assets(std::nullopt, first, pageSize);
        if (!assets) return assets.error();
        for (const LibraryAsset& asset : *assets) {
            options.json ? printJSON(asset, formatter) : printRow(asset, formatter);
        }
        if (assets->size() < pageSize) return {};
    }
}

Result<void> show(const LibraryOptions& options, DesktopPhotoLibrary& library,
                  const DateFormatter& formatter) {
    const auto asset = library.assetWithIdentifier(options.identifier);
    if (!asset) return asset.error();
    if (!*asset) {
        return Error{"quillmere.commandline",
                     1,
                     "The library has nothing with the identifier %@.",
                     {options.identifier}};
    }
    options.json ? printJSON(**asset, formatter) : printFacts(**asset, formatter);
    return {};
}

Result<void> tellCounts(const LibraryOptions& options, DesktopPhotoLibrary& library) {
    const auto pictures = library.count(PHAssetMediaType::image);
    if (!pictures) return pictures.error();
    const auto videos = library.count(PHAssetMediaType::video);
    if (!videos) return videos.error();
    std::printf(options.json ? "{\"pictures\":%zu,\"videos\":%zu}\n" : "%zu pictures, %zu videos\n",
                *pictures, *videos);
    return {};
}

Result<void> run(const LibraryOptions& options, DesktopPlatform& platform) {
    DesktopPhotoLibrary* library = platform.photoLibrary();
    if (!library) {
        return Error{"quillmere.commandline", 1,
                     "There is no photo library: this user has no home folder."};
    }
    ProgressLine line(stderr, true);
    line.draw("Looking at the library's folders");
    const auto scanned = library->scan();
    line.clear();
    if (!scanned) return scanned;
    switch (options.action) {
        case LibraryOptions::Action::list:
            return list(options, *library, platform.dateFormatter());
        case LibraryOptions::Action::show:
            return show(options, *library, platform.dateFormatter());
        case LibraryOptions::Action::scan:
            return tellCounts(options, *library);
    }
    invariantBroken();
}

}  // namespace

int runLibrary(const LibraryOptions& options, DesktopPlatform& platform) {
    const auto done = run(options, platform);
    if (done) return 0;
    std::fprintf(stderr, "quillmere-cli: %s\n",
                 localizedReason(done.error(), platform.localization()).c_str());
    return 1;
}

}  // namespace quillmere::cli
