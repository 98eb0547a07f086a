#include "Tests/Fakes/FakeCoreImage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include "Base/Invariant.h"

namespace quillmere {
namespace {

using Pixel = std::array<std::uint8_t, 4>;

std::string numbers(const char* name, const Rect& rect) {
    std::ostringstream line;
    line.precision(10);
    line << name << ' ' << rect.x << ',' << rect.y << ' ' << rect.width << ',' << rect.height;
    return line.str();
}

void requireWhole(std::initializer_list<double> values) {
    for (const double value : values) {
        if (!std::isfinite(value) || std::floor(value) != value) invariantBroken();
    }
}

class EagerImage : public CIImage {
public:
    EagerImage(CallLog& log, Rect extent)
        : log_(log),
          extent_(extent.isEmpty() ? Rect{} : extent),
          pixels_(static_cast<std::size_t>(extent_.width * extent_.height)) {}

    Rect extent() const override { return extent_; }

    // Transparent outside the extent. `y` points up: row `extent.y` is the lowest one.
    Pixel at(double x, double y) const {
        const bool inside =
            x >= extent_.x && y >= extent_.y && x < extent_.maxX() && y < extent_.maxY();
        return inside ? pixels_[index(x, y)] : Pixel{};
    }
    Pixel& operator()(double x, double y) { return pixels_[index(x, y)]; }

    // Fills an image of `extent` with what `colour(x, y)` says.
    template <class Colour>
    static CIImageRef painted(CallLog& log, Rect extent, const Colour& colour) {
        auto image = std::make_shared<EagerImage>(log, extent);
        const Rect area = image->extent_;
        for (double y = area.y; y < area.maxY(); ++y) {
            for (double x = area.x; x < area.maxX(); ++x) (*image)(x, y) = colour(x, y);
        }
        return image;
    }

    CIImageRef imageByCroppingToRect(const Rect& rect) const override {
        log_.record(numbers("crop", rect));
        requireWhole({rect.x, rect.y, rect.width, rect.height});
        return painted(log_, extent_.intersection(rect),
                       [&](double x, double y) { return at(x, y); });
    }

    CIImageRef imageByApplyingTransform(const AffineTransform& t) const override {
        std::ostringstream line;
        line.precision(10);
        if (t == AffineTransform::translation(t.tx, t.ty)) {
            line << "translate " << t.tx << ',' << t.ty;
            log_.record(line.str());
            requireWhole({t.tx, t.ty});
            const Rect moved{extent_.x + t.tx, extent_.y + t.ty, extent_.width, extent_.height};
            return painted(log_, moved, [&](double x, double y) { return at(x - t.tx, y - t.ty); });
        }
        line << "scale " << t.a;
        log_.record(line.str());
        const double n = std::round(1 / t.a);
        if (!(std::isfinite(n) && n >= 1 && t == AffineTransform::scale(1 / n, 1 / n)))
            invariantBroken();
        const Rect scaled{extent_.x / n, extent_.y / n, extent_.width / n, extent_.height / n};
        requireWhole({scaled.x, scaled.y, scaled.width, scaled.height});
        return painted(log_, scaled, [&](double x, double y) { return mean(x, y, n); });
    }

    CIImageRef imageByCompositingOverImage(const CIImageRef& background) const override {
        log_.record("compositeOver");
        const auto& below = static_cast<const EagerImage&>(*background);
        return painted(log_, extent_.unionWith(below.extent_), [&](double x, double y) {
            const Pixel source = at(x, y);
            Pixel result = below.at(x, y);
            for (std::size_t c = 0; c < 4; ++c) {
                const int shown = (result[c] * (255 - source[3]) + 127) / 255;
                result[c] = static_cast<std::uint8_t>(std::min(255, source[c] + shown));
            }
            return result;
        });
    }

private:
    std::size_t index(double x, double y) const {
        return static_cast<std::size_t>((y - extent_.y) * extent_.width + (x - extent_.x));
    }

    Pixel mean(double x, double y, double n) const {
        Pixel result;
        for (std::size_t c = 0; c < 4; ++c) {
            double sum = 0;
            for (double v = 0; v < n; ++v) {
                for (double h = 0; h < n; ++h) sum += at(x * n + h, y * n + v)[c];
            }
            result[c] = static_cast<std::uint8_t>(std::floor(sum / (n * n) + 0.5));
        }
        return result;
    }

    CallLog& log_;
    Rect extent_;
    std::vector<Pixel> pixels_;
};

CIImageRef imageOfRows(CallLog& log, PixelSize size, std::size_t bytesPerRow,
                       const std::uint8_t* rows, bool isBGRA = false) {
    const Rect extent{0, 0, double(size.width), double(size.height)};
    return EagerImage::painted(log, extent, [&](double x, double y) {
        const std::size_t row = static_cast<std::size_t>(size.height - 1 - y);
        const std::uint8_t* p = rows + row * bytesPerRow + static_cast<std::size_t>(x) * 4;
        return isBGRA ? Pixel{p[2], p[1], p[0], p[3]} : Pixel{p[0], p[1], p[2], p[3]};
    });
}

}  // namespace

class FakeCoreImage::Context : public CIContext {
public:
    explicit Context(FakeCoreImage& owner) : owner_(owner) {}

    std::optional<CGImage> createCGImage(const CIImage& image, const Rect& rect) override {
        owner_.log_.record(numbers("createCGImage", rect));
        requireWhole({rect.x, rect.y, rect.width, rect.height});
        if (owner_.refuseRender || rect.isEmpty()) return {};
        if (rect.width * rect.height > (1 << 28)) return {};  // counts as "memory ran out"
        const auto& eager = static_cast<const EagerImage&>(image);
        const auto bytes = std::make_shared<std::vector<std::uint8_t>>();
        for (double y = rect.maxY() - 1; y >= rect.y; --y) {
            for (double x = rect.x; x < rect.maxX(); ++x) {
                const Pixel pixel = eager.at(x, y);
                bytes->insert(bytes->end(), pixel.begin(), pixel.end());
            }
        }
        const PixelSize size{static_cast<int>(rect.width), static_cast<int>(rect.height)};
        return CGImage(size, static_cast<std::size_t>(size.width) * 4,
                       std::shared_ptr<const std::uint8_t>(bytes, bytes->data()));
    }

    bool renderToCVPixelBuffer(const CIImage& image, CVPixelBuffer& buffer,
                               const Rect& bounds) override {
        owner_.log_.record(numbers("render", bounds));
        requireWhole({bounds.x, bounds.y, bounds.width, bounds.height});
        if (owner_.refuseRender) return false;
        const auto& eager = static_cast<const EagerImage&>(image);
        const bool isBGRA = buffer.format() == CVPixelFormat::bgra8;
        if (!isBGRA && buffer.format() != CVPixelFormat::rgba8) invariantBroken();
        for (int row = 0; row < buffer.size().height; ++row) {
            std::uint8_t* out =
                buffer.baseAddress() + static_cast<std::size_t>(row) * buffer.bytesPerRow();
            for (int column = 0; column < buffer.size().width; ++column, out += 4) {
                const double x = bounds.x + column;
                const double y = bounds.maxY() - 1 - row;
                const bool inside = x < bounds.maxX() && y >= bounds.y;
                const Pixel pixel = inside ? eager.at(x, y) : Pixel{};
                out[0] = pixel[isBGRA ? 2 : 0];
                out[1] = pixel[1];
                out[2] = pixel[isBGRA ? 0 : 2];
                out[3] = 255;
            }
        }
        return true;
    }

private:
    FakeCoreImage& owner_;
};

CIImageRef FakeCoreImage::imageWithImage(const UIImage& picture) {
    log_.record("imageWithImage");
    if (refusedImages.count(images_++) != 0 || !picture.cgImage()) return nullptr;
    const CGImage& bitmap = *picture.cgImage();
    return imageOfRows(log_, bitmap.size(), bitmap.bytesPerRow(), bitmap.row(0));
}

CIImageRef FakeCoreImage::imageWithCVPixelBuffer(const CVPixelBufferRef& buffer) {
    log_.record("imageWithCVPixelBuffer");
    if (buffer->planeCount() > 1) return nullptr;
    return imageOfRows(log_, buffer->size(), buffer->bytesPerRow(), buffer->baseAddress(),
                       buffer->format() == CVPixelFormat::bgra8);
}

std::unique_ptr<CIContext> FakeCoreImage::makeContext(const CIContextOptions& options) {
    std::ostringstream line;
    line << "makeContext software=" << options.useSoftwareRenderer
         << " cacheIntermediates=" << options.cacheIntermediates;
    log_.record(line.str());
    return std::make_unique<Context>(*this);
}

}  // namespace quillmere
