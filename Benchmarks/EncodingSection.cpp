// Time and size of 12 megapixels in the formats that results are saved in.
#include <array>
#include <functional>

#include "Benchmarks/Photo.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"
#include "Desktop/ImageIO/DesktopImageIO.h"

namespace quillmere::benchmark {
namespace {

using Encoded = Result<std::vector<std::byte>>;

constexpr PixelSize kTwelveMegapixels{4000, 3000};
constexpr Rounds kRounds{1, 7, 15.0};

struct Encoding {
    const char* name;
    std::function<Encoded(ImageIO&, const UIImage&)> encode;
};

const Encoding kEncodings[] = {
    {"HEIC, quality 0.9",
     [](ImageIO& io, const UIImage& photo) { return io.heicRepresentation(photo, kLossyQuality); }},
    {"JPEG, quality 0.9",
     [](ImageIO& io, const UIImage& photo) { return io.jpegRepresentation(photo, kLossyQuality); }},
    {"PNG", [](ImageIO& io, const UIImage& photo) { return io.pngRepresentation(photo); }},
};

}  // namespace

void measureEncoding(const Setting& setting) {
    Table table("Encoding 12 megapixels", {"Format", "Time, s", "Size, MiB"});
    const Result<UIImage> photo = makePhoto(setting.bundle, kTwelveMegapixels);
    if (!photo) return table.missing("All", photo.error().localizedDescription);
    WorkerPool pool;
    DesktopImageIO imageIO(pool);
    for (const Encoding& encoding : kEncodings) {
        Encoded data = std::vector<std::byte>();
        const std::array<std::function<double()>, 1> contestants{
            [&] { return secondsOf([&] { data = encoding.encode(imageIO, *photo); }); }};
        const Spread time = takeTurns(kRounds, contestants).front();
        if (!data) {
            table.missing(encoding.name, data.error().localizedDescription);
            continue;
        }
        table.row({encoding.name, figure(time, kSeconds),
                   figure(static_cast<double>(data->size()) / (1 << 20))});
    }
}

}  // namespace quillmere::benchmark
