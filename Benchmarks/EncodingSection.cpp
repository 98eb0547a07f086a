// What saving 12 megapixels costs in each format: encoding, and then the date and the place.
#include <array>
#include <chrono>
#include <functional>
#include <utility>
#include <vector>

#include "Benchmarks/Photo.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"
#include "Desktop/ImageIO/DesktopImageIO.h"
#include "Desktop/ImageIO/DesktopImageMetadata.h"
#include "Desktop/Localization/SystemDateFormatter.h"
#include "Quillmere/Models/Services/ImageMetadataHelper.h"

namespace quillmere::benchmark {
namespace {

using Encoded = Result<std::vector<std::byte>>;
using ImageFormat = UserDefaultsHelper::ImageFormat;

constexpr PixelSize kTwelveMegapixels{4000, 3000};
constexpr Rounds kRounds{1, 7, 15.0};

struct Encoding {
    const char* name;
    ImageFormat format;
    std::function<Encoded(ImageIO&, const UIImage&)> encode;
};

const Encoding kEncodings[] = {
    {"HEIC, quality 0.9", ImageFormat::heic,
     [](ImageIO& io, const UIImage& photo) { return io.heicRepresentation(photo, kLossyQuality); }},
    {"JPEG, quality 0.9", ImageFormat::jpg,
     [](ImageIO& io, const UIImage& photo) { return io.jpegRepresentation(photo, kLossyQuality); }},
    {"PNG", ImageFormat::png,
     [](ImageIO& io, const UIImage& photo) { return io.pngRepresentation(photo); }},
};

/// The seconds that a date and a place in the file `data` take; below 0 if they are not in it.
double secondsOfEmbedding(std::vector<std::byte> data, ImageFormat format) {
    DesktopImageMetadata metadata;
    const SystemDateFormatter formatter;
    const Date date{std::chrono::seconds(1'700'000'000)};
    const std::size_t before = data.size();
    std::vector<std::byte> changed;
    const double seconds = secondsOf([&] {
        changed = ImageMetadataHelper::embedMetadata(std::move(data), date,
                                                     Location{-33.86, 151.2, 12, date}, format,
                                                     {metadata, formatter});
    });
    return changed.size() > before ? seconds : -1;
}

}  // namespace

void measureEncoding(const Setting& setting) {
    Table table("Encoding 12 megapixels",
                {"Format", "Time, s", "Size, MiB", "Date and place, ms", "Their share, %"});
    const Result<UIImage> photo = makePhoto(setting.bundle, kTwelveMegapixels);
    if (!photo) return table.missing("All", photo.error().localizedDescription);
    WorkerPool pool;
    DesktopImageIO imageIO(pool);
    for (const Encoding& encoding : kEncodings) {
        Encoded data = std::vector<std::byte>();
        const std::array<std::function<double()>, 2> contestants{
            [&] { return secondsOf([&] { data = encoding.encode(imageIO, *photo); }); },
            [&] { return data ? secondsOfEmbedding(*data, encoding.format) : -1; }};
        const auto times = takeTurns(kRounds, contestants);
        if (!data) {
            table.missing(encoding.name, data.error().localizedDescription);
            continue;
        }
        if (times[1].lower < 0) {
            table.missing(encoding.name, "The date and the place could not be embedded.");
            continue;
        }
        const double share = times[1].median / (times[0].median + times[1].median);
        table.row({encoding.name, figure(times[0], kSeconds),
                   figure(static_cast<double>(data->size()) / (1 << 20)),
                   figure(times[1], kMilliseconds), figure(100 * share)});
    }
}

}  // namespace quillmere::benchmark
