#include "Desktop/Qml/Pictures/FrameImage.h"

#include <algorithm>
#include <cstdint>

namespace quillmere {
namespace {

// ITU-R BT.709: red and blue are these parts of brightness; in 1/65536.
constexpr double kr = 0.2126;
constexpr double kb = 0.0722;
constexpr double lumaScale = 255.0 / 219 * 65536;
constexpr double chromaScale = 255.0 / 224 * 65536;
constexpr int yFactor = static_cast<int>(lumaScale + 0.5);
constexpr int redOfV = static_cast<int>(2 * (1 - kr) * chromaScale + 0.5);
constexpr int blueOfU = static_cast<int>(2 * (1 - kb) * chromaScale + 0.5);
constexpr int greenOfV = static_cast<int>(2 * (1 - kr) * kr / (1 - kr - kb) * chromaScale + 0.5);
constexpr int greenOfU = static_cast<int>(2 * (1 - kb) * kb / (1 - kr - kb) * chromaScale + 0.5);

QRgb pixel(int y, int u, int v) {
    const int light = (y - 16) * yFactor + 32768;
    const auto byte = [](int value) { return std::clamp(value >> 16, 0, 255); };
    u -= 128;
    v -= 128;
    return qRgb(byte(light + redOfV * v), byte(light - greenOfU * u - greenOfV * v),
                byte(light + blueOfU * u));
}

}  // namespace

QImage imageOf(QVideoFrame frame) {
    if (frame.pixelFormat() != QVideoFrameFormat::Format_YUV420P) return frame.toImage();
    if (!frame.map(QVideoFrame::ReadOnly)) return {};
    QImage image(frame.size(), QImage::Format_RGB32);
    for (int row = 0; row < image.height(); ++row) {
        const std::uint8_t* const y = frame.bits(0) + row * frame.bytesPerLine(0);
        const std::uint8_t* const u = frame.bits(1) + row / 2 * frame.bytesPerLine(1);
        const std::uint8_t* const v = frame.bits(2) + row / 2 * frame.bytesPerLine(2);
        auto* const out = reinterpret_cast<QRgb*>(image.scanLine(row));
        for (int x = 0; x < image.width(); ++x) out[x] = pixel(y[x], u[x / 2], v[x / 2]);
    }
    frame.unmap();
    return image;
}

}  // namespace quillmere
