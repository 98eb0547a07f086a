#include "Desktop/Qml/Pictures/PastedPicture.h"

#include <QColorSpace>
#include <QImage>
#include <memory>
#include <span>

namespace quillmere {
namespace {

// What loses least comes first.
constexpr const char* knownTypes[] = {"image/png",  "image/tiff", "image/webp", "image/jxl",
                                      "image/avif", "image/heic", "image/heif", "image/jpeg",
                                      "image/bmp",  "image/gif"};

Result<UIImage> pictureOf(const QImage& image) {
    const QImage standard =
        image.colorSpace().isValid() ? image.convertedToColorSpace(QColorSpace::SRgb) : image;
    const auto pixels =
        std::make_shared<QImage>(standard.convertToFormat(QImage::Format_RGBA8888_Premultiplied));
    if (pixels->isNull()) {
        return Error{"quillmere.clipboard", 1, "The picture on the clipboard can't be read."};
    }
    return UIImage(CGImage({pixels->width(), pixels->height()},
                           static_cast<std::size_t>(pixels->bytesPerLine()),
                           std::shared_ptr<const std::uint8_t>(pixels, pixels->constBits())));
}

}  // namespace

std::optional<WaysIn::Decode> pictureIn(const QMimeData& data, ImageIO& imageIO) {
    for (const char* type : knownTypes) {
        if (!data.hasFormat(type)) continue;
        return [bytes = data.data(type), &imageIO] {
            return imageIO.imageWithData(std::as_bytes(std::span(bytes.constData(), bytes.size())));
        };
    }
    if (!data.hasImage()) return std::nullopt;
    return [image = data.imageData().value<QImage>()] { return pictureOf(image); };
}

}  // namespace quillmere
