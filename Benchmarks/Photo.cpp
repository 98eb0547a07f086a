#include "Benchmarks/Photo.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>

#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/Graphics/DesktopGraphics.h"
#include "Desktop/ImageIO/DesktopImageIO.h"

namespace quillmere::benchmark {
namespace {

constexpr float kGrain = 3;  // standard deviation, in levels of 255

CGImage withGrain(const CGImage& picture) {
    const PixelSize size = picture.size();
    const std::size_t bytesPerRow = CGImage::bytesPerPixel * static_cast<std::size_t>(size.width);
    const std::shared_ptr<std::uint8_t[]> bytes(
        new std::uint8_t[bytesPerRow * static_cast<std::size_t>(size.height)]);
    std::minstd_rand random(1);
    std::normal_distribution<float> grain(0, kGrain);
    for (int y = 0; y < size.height; ++y) {
        std::uint8_t* row = bytes.get() + static_cast<std::size_t>(y) * bytesPerRow;
        std::memcpy(row, picture.row(y), bytesPerRow);
        for (std::size_t pixel = 0; pixel < bytesPerRow; pixel += CGImage::bytesPerPixel) {
            const int level = static_cast<int>(std::lround(grain(random)));
            for (std::size_t colour = 0; colour < 3; ++colour) {
                row[pixel + colour] =
                    static_cast<std::uint8_t>(std::clamp(row[pixel + colour] + level, 0, 255));
            }
        }
    }
    return CGImage(size, bytesPerRow, std::shared_ptr<const std::uint8_t>(bytes, bytes.get()));
}

}  // namespace

Result<UIImage> makePhoto(const ResourceBundle& bundle, PixelSize size) {
    const auto sample = bundle.urlForResource("chelsea", "png");
    const auto data = DesktopFileManager().contentsOfFile(sample.value_or("chelsea.png"));
    if (!data) return data.error();
    WorkerPool pool;
    const auto picture = DesktopImageIO(pool).imageWithData(*data);
    if (!picture) return picture.error();

    // As large as is needed to cover the canvas, and centred on it.
    const double width = size.width;
    const double height = size.height;
    const double scale = std::max(width / picture->size().width, height / picture->size().height);
    const Size drawn{picture->size().width * scale, picture->size().height * scale};
    DesktopGraphics graphics;
    const auto canvas = graphics.beginImageContextWithOptions({width, height}, true, 1);
    canvas->drawInRect(*picture, {(width - drawn.width) / 2, (height - drawn.height) / 2,
                                  drawn.width, drawn.height});
    const auto photo = canvas->imageFromCurrentContext();
    if (!photo || !photo->cgImage()) {
        return Error{"quillmere.benchmark", 1, "There is not enough memory for the photo."};
    }
    return UIImage(withGrain(*photo->cgImage()));
}

Result<void> writePhoto(const ResourceBundle& bundle, PixelSize size,
                        const std::filesystem::path& file) {
    const auto photo = makePhoto(bundle, size);
    if (!photo) return photo.error();
    WorkerPool pool;
    const auto data = DesktopImageIO(pool).jpegRepresentation(*photo, kLossyQuality);
    if (!data) return data.error();
    return DesktopFileManager().writeFile(file, *data, WriteExisting::replace);
}

}  // namespace quillmere::benchmark
