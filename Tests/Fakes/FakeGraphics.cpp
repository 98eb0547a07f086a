#include "Tests/Fakes/FakeGraphics.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>
#include <vector>

#include "Base/Invariant.h"

namespace quillmere {
namespace {

struct Weight {
    int index;
    double share;
};

// Which source pixels make destination pixel `i` when `from` pixels become `to`, and their shares.
std::vector<Weight> weights(int from, double to, double i) {
    const double step = from / to;
    std::vector<Weight> found;
    if (to < from) {
        const double start = i * step;
        const double end = start + step;
        for (int s = static_cast<int>(start); s < from && s < end; ++s) {
            found.push_back({s, (std::min(end, s + 1.0) - std::max(start, double(s))) / step});
        }
        return found;
    }
    const double centre = std::clamp((i + 0.5) * step - 0.5, 0.0, from - 1.0);
    const int first = static_cast<int>(centre);
    const double second = centre - first;
    found.push_back({first, 1 - second});
    if (second > 0) found.push_back({first + 1, second});
    return found;
}

const std::uint8_t* uprightPixel(const CGImage& bitmap, UIImageOrientation orientation, int x,
                                 int y) {
    const int right = bitmap.size().width - 1;
    const int bottom = bitmap.size().height - 1;
    const auto at = [&](int column, int row) { return bitmap.row(row) + column * 4; };
    switch (orientation) {
        case UIImageOrientation::up:
            return at(x, y);
        case UIImageOrientation::upMirrored:
            return at(right - x, y);
        case UIImageOrientation::down:
            return at(right - x, bottom - y);
        case UIImageOrientation::downMirrored:
            return at(x, bottom - y);
        case UIImageOrientation::leftMirrored:
            return at(y, x);
        case UIImageOrientation::right:
            return at(y, bottom - x);
        case UIImageOrientation::rightMirrored:
            return at(right - y, bottom - x);
        case UIImageOrientation::left:
            return at(right - y, x);
    }
    invariantBroken();
}

struct Span {
    double start;
    double length;
};

// A side in points as whole pixels of the canvas, at least one.
Span wholePixels(double start, double length, double scale) {
    const double first = std::floor(start * scale + 0.5);
    const double last = std::floor((start + length) * scale + 0.5);
    return {first, std::max(1.0, last - first)};
}

}  // namespace

class FakeGraphics::Canvas : public GraphicsContext {
public:
    Canvas(FakeGraphics& graphics, Size size, bool opaque, double scale)
        : graphics_(graphics),
          width_(wholePixels(0, size.width, scale).length),
          height_(wholePixels(0, size.height, scale).length),
          scale_(scale) {
        if (width_ * height_ > (1 << 28)) return;  // stays without pixels
        pixels_.resize(static_cast<std::size_t>(width_ * height_) * 4);
        for (std::size_t i = 3; opaque && i < pixels_.size(); i += 4) pixels_[i] = 255;
    }
    ~Canvas() override { graphics_.log_.record("endImageContext"); }

    void drawInRect(const UIImage& picture, const Rect& rect) override {
        std::ostringstream line;
        line.precision(10);
        line << "drawInRect " << rect.width << 'x' << rect.height << " at " << rect.x << ','
             << rect.y;
        graphics_.log_.record(line.str());
        if (!picture.cgImage() || pixels_.empty()) return;
        const Span across = wholePixels(rect.x, rect.width, scale_);
        const Span down = wholePixels(rect.y, rect.height, scale_);
        if (!std::isfinite(across.start + across.length)) return;
        if (!std::isfinite(down.start + down.length)) return;
        const double right = std::min(width_, across.start + across.length);
        const double bottom = std::min(height_, down.start + down.length);
        for (double y = std::max(0.0, down.start); y < bottom; ++y) {
            for (double x = std::max(0.0, across.start); x < right; ++x) {
                drawPixel(picture, x, y, across, down);
            }
        }
    }

    std::optional<UIImage> imageFromCurrentContext() override {
        graphics_.log_.record("imageFromCurrentContext");
        if (graphics_.refusedImages.count(graphics_.images_++) != 0 || pixels_.empty()) return {};
        const auto copy = std::make_shared<std::vector<std::uint8_t>>(pixels_);
        const PixelSize size{static_cast<int>(width_), static_cast<int>(height_)};
        return UIImage(CGImage(size, static_cast<std::size_t>(size.width) * 4,
                               std::shared_ptr<const std::uint8_t>(copy, copy->data())),
                       scale_);
    }

private:
    void drawPixel(const UIImage& picture, double x, double y, Span across, Span down) {
        const CGImage& bitmap = *picture.cgImage();
        PixelSize upright = bitmap.size();
        if (swapsSides(picture.imageOrientation())) std::swap(upright.width, upright.height);
        double sums[4] = {};
        for (const Weight& v : weights(upright.height, down.length, y - down.start)) {
            for (const Weight& h : weights(upright.width, across.length, x - across.start)) {
                const std::uint8_t* source =
                    uprightPixel(bitmap, picture.imageOrientation(), h.index, v.index);
                for (int c = 0; c < 4; ++c) sums[c] += v.share * h.share * source[c];
            }
        }
        std::uint8_t* pixel = &pixels_[static_cast<std::size_t>(y * width_ + x) * 4];
        const int alpha = static_cast<int>(sums[3] + 0.5);
        for (int c = 0; c < 4; ++c) {
            const int below = (pixel[c] * (255 - alpha) + 127) / 255;
            pixel[c] =
                static_cast<std::uint8_t>(std::min(255, static_cast<int>(sums[c] + 0.5) + below));
        }
    }

    FakeGraphics& graphics_;
    const double width_;
    const double height_;
    const double scale_;
    std::vector<std::uint8_t> pixels_;
};

std::unique_ptr<GraphicsContext> FakeGraphics::beginImageContextWithOptions(Size size, bool opaque,
                                                                            double scale) {
    std::ostringstream line;
    line.precision(10);
    line << "beginImageContext " << size.width << 'x' << size.height << " opaque=" << opaque
         << " scale=" << scale;
    log_.record(line.str());
    return std::make_unique<Canvas>(*this, size, opaque, scale);
}

std::unique_ptr<GraphicsContext> FakeGraphics::beginImageContext(Size size) {
    return beginImageContextWithOptions(size, false, 1);
}

std::optional<CGImage> FakeGraphics::imageInRect(const CGImage& bitmap, const Rect& rect) {
    std::ostringstream line;
    line.precision(10);
    line << "imageInRect " << rect.x << ',' << rect.y << ' ' << rect.width << 'x' << rect.height;
    log_.record(line.str());
    if (refusedCuts.count(cuts_++) != 0 || rect.isEmpty()) return {};
    if (std::isnan(rect.x) || std::isnan(rect.y)) return {};
    const double left = std::max(0.0, std::floor(rect.x));
    const double top = std::max(0.0, std::floor(rect.y));
    const double right = std::min<double>(bitmap.size().width, std::ceil(rect.maxX()));
    const double bottom = std::min<double>(bitmap.size().height, std::ceil(rect.maxY()));
    if (!(right > left && bottom > top)) return {};
    const PixelSize size{static_cast<int>(right - left), static_cast<int>(bottom - top)};
    const auto copy = std::make_shared<std::vector<std::uint8_t>>();
    for (int y = 0; y < size.height; ++y) {
        const std::uint8_t* row =
            bitmap.row(static_cast<int>(top) + y) + static_cast<int>(left) * 4;
        copy->insert(copy->end(), row, row + size.width * 4);
    }
    return CGImage(size, static_cast<std::size_t>(size.width) * 4,
                   std::shared_ptr<const std::uint8_t>(copy, copy->data()));
}

}  // namespace quillmere
