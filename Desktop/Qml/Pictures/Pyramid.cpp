#include "Desktop/Qml/Pictures/Pyramid.h"

#include <QTransform>
#include <algorithm>

namespace quillmere {
namespace {

QImage imageOf(const CGImage& bitmap) {
    // The image keeps the pixels alive through this copy.
    auto* owner = new CGImage(bitmap);
    return QImage(
        bitmap.row(0), bitmap.size().width, bitmap.size().height,
        static_cast<qsizetype>(bitmap.bytesPerRow()), QImage::Format_RGBA8888_Premultiplied,
        [](void* kept) { delete static_cast<CGImage*>(kept); }, owner);
}

QImage upright(const QImage& image, UIImageOrientation orientation) {
    using enum UIImageOrientation;
    const auto turned = [](const QImage& source, int degrees) {
        return source.transformed(QTransform().rotate(degrees));
    };
    switch (orientation) {
        case up:
            return image;
        case down:
            return turned(image, 180);
        case left:
            return turned(image, 270);
        case right:
            return turned(image, 90);
        case upMirrored:
            return image.mirrored(true, false);
        case downMirrored:
            return image.mirrored(false, true);
        case leftMirrored:
            return turned(image.mirrored(true, false), 270);
        case rightMirrored:
            return turned(image.mirrored(true, false), 90);
    }
    return image;
}

/// Each pixel is the mean of four; an odd last line is dropped.
QImage halved(const QImage& image) {
    QImage half(std::max(1, image.width() / 2), std::max(1, image.height() / 2), image.format());
    for (int y = 0; y < half.height(); ++y) {
        const uchar* above = image.constScanLine(std::min(2 * y, image.height() - 1));
        const uchar* below = image.constScanLine(std::min(2 * y + 1, image.height() - 1));
        uchar* target = half.scanLine(y);
        for (int x = 0; x < half.width(); ++x) {
            const int first = 8 * x;
            const int second = std::min(2 * x + 1, image.width() - 1) * 4;
            for (int c = 0; c < 4; ++c) {
                target[4 * x + c] = static_cast<uchar>((above[first + c] + above[second + c] +
                                                        below[first + c] + below[second + c] + 2) /
                                                       4);
            }
        }
    }
    return half;
}

}  // namespace

Pyramid Pyramid::of(const UIImage& picture) {
    Pyramid pyramid;
    if (!picture.cgImage()) return pyramid;
    pyramid.levels.push_back(upright(imageOf(*picture.cgImage()), picture.imageOrientation()));
    while (std::max(pyramid.levels.back().width(), pyramid.levels.back().height()) >
           smallestLevel) {
        pyramid.levels.push_back(halved(pyramid.levels.back()));
    }
    return pyramid;
}

std::size_t Pyramid::levelForWidth(double width) const {
    std::size_t level = levels.size() - 1;
    while (level > 0 && levels[level].width() < width) --level;
    return level;
}

}  // namespace quillmere
