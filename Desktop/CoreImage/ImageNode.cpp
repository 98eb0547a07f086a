#include "Desktop/CoreImage/ImageNode.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "Base/Invariant.h"
#include "Desktop/CoreImage/BoxMean.h"
#include "Desktop/Graphics/SourceOver.h"

namespace quillmere {
namespace {

// A picture of its own, transparent at first, for what can't be drawn in place.
class Scratch {
public:
    explicit Scratch(const Rect& area)
        : bytesPerRow_(4 * static_cast<std::size_t>(area.width)),
          bytes_(bytesPerRow_ * static_cast<std::size_t>(area.height)),
          surface_(area, bytes_.data(), bytesPerRow_) {}

    const Surface& surface() const { return surface_; }
    std::size_t bytesPerRow() const { return bytesPerRow_; }

private:
    std::size_t bytesPerRow_;
    std::vector<std::uint8_t> bytes_;
    Surface surface_;
};

class BitmapNode final : public ImageNode {
public:
    explicit BitmapNode(CGImage bitmap)
        : ImageNode({0, 0, double(bitmap.size().width), double(bitmap.size().height)}),
          bitmap_(std::move(bitmap)) {}

private:
    void drawInside(const Surface& surface, bool clear) const override {
        const Rect& area = surface.area();
        const int top = static_cast<int>(extent().maxY() - area.maxY());
        const auto left = 4 * static_cast<std::size_t>(area.x);
        for (std::size_t y = 0; y < surface.height(); ++y) {
            const std::uint8_t* source = bitmap_.row(top + static_cast<int>(y)) + left;
            if (clear) {
                std::memcpy(surface.row(y), source, 4 * surface.width());
            } else {
                sourceOver(surface.row(y), source, surface.width());
            }
        }
    }

    CGImage bitmap_;
};

class CropNode final : public ImageNode {
public:
    CropNode(ImageNodeRef image, const Rect& rect)
        : ImageNode(image->extent().intersection(rect)), image_(std::move(image)) {}

private:
    void drawInside(const Surface& surface, bool clear) const override {
        image_->draw(surface, clear);
    }

    ImageNodeRef image_;
};

Rect moved(const Rect& rect, double dx, double dy) {
    return rect.isEmpty() ? Rect{} : Rect{rect.x + dx, rect.y + dy, rect.width, rect.height};
}

class TranslateNode final : public ImageNode {
public:
    TranslateNode(ImageNodeRef image, double dx, double dy)
        : ImageNode(moved(image->extent(), dx, dy)), image_(std::move(image)), dx_(dx), dy_(dy) {}

private:
    void drawInside(const Surface& surface, bool clear) const override {
        image_->draw(surface.movedBy(-dx_, -dy_), clear);
    }

    ImageNodeRef image_;
    double dx_;
    double dy_;
};

class ReduceNode final : public ImageNode {
public:
    ReduceNode(ImageNodeRef image, double n)
        : ImageNode(reduced(image->extent(), n)), image_(std::move(image)), n_(n) {}

private:
    static Rect reduced(const Rect& rect, double n) {
        return {rect.x / n, rect.y / n, rect.width / n, rect.height / n};
    }

    void drawInside(const Surface& surface, bool clear) const override {
        const Rect& area = surface.area();
        const auto n = static_cast<std::size_t>(n_);
        // A few rows of the result at a time: the rows under them should stay in the cache.
        const std::size_t step = std::max<std::size_t>(1, 16 / n);
        std::vector<std::uint8_t> means(clear ? 0 : 4 * surface.width());
        for (std::size_t first = 0; first < surface.height(); first += step) {
            const std::size_t rows = std::min(step, surface.height() - first);
            const double lowest = area.maxY() - static_cast<double>(first + rows);
            const Scratch under(
                {area.x * n_, lowest * n_, area.width * n_, static_cast<double>(rows) * n_});
            image_->draw(under.surface(), true);
            for (std::size_t y = 0; y < rows; ++y) {
                std::uint8_t* target = surface.row(first + y);
                boxMeanRow(clear ? target : means.data(), surface.width(),
                           under.surface().row(y * n), under.bytesPerRow(), n);
                if (!clear) sourceOver(target, means.data(), surface.width());
            }
        }
    }

    ImageNodeRef image_;
    double n_;
};

class OverNode final : public ImageNode {
public:
    OverNode(ImageNodeRef top, ImageNodeRef background)
        : ImageNode(top->extent().unionWith(background->extent())),
          top_(std::move(top)),
          background_(std::move(background)) {}

private:
    void drawInside(const Surface& surface, bool clear) const override {
        if (clear) {
            background_->draw(surface, true);
            top_->draw(surface, false);
            return;
        }
        // Laying the two parts over the surface one by one would round differently.
        const Scratch both(surface.area());
        drawInside(both.surface(), true);
        for (std::size_t y = 0; y < surface.height(); ++y) {
            sourceOver(surface.row(y), both.surface().row(y), surface.width());
        }
    }

    ImageNodeRef top_;
    ImageNodeRef background_;
};

bool isWhole(double value) {
    constexpr double most = 1ll << 40;
    return std::abs(value) <= most && std::floor(value) == value;
}

}  // namespace

bool isWholePixels(const Rect& rect) {
    return isWhole(rect.x) && isWhole(rect.y) && isWhole(rect.width) && isWhole(rect.height);
}

ImageNodeRef makeBitmapNode(CGImage bitmap) {
    return std::make_shared<BitmapNode>(std::move(bitmap));
}

ImageNode::ImageNode(const Rect& extent) : extent_(extent.isEmpty() ? Rect{} : extent) {
    if (!isWholePixels(extent)) invariantBroken();
}

void ImageNode::draw(const Surface& surface, bool clear) const {
    const Rect shown = surface.area().intersection(extent_);
    if (!shown.isEmpty()) drawInside(surface.part(shown), clear);
}

CIImageRef ImageNode::imageByCroppingToRect(const Rect& rect) const {
    if (!isWholePixels(rect)) invariantBroken();
    return std::make_shared<CropNode>(shared_from_this(), rect);
}

CIImageRef ImageNode::imageByApplyingTransform(const AffineTransform& transform) const {
    const double dx = transform.tx;
    const double dy = transform.ty;
    if (transform == AffineTransform::translation(dx, dy)) {
        if (!isWhole(dx) || !isWhole(dy)) invariantBroken();
        return std::make_shared<TranslateNode>(shared_from_this(), dx, dy);
    }
    const double n = std::round(1 / transform.a);
    const bool isReduction =
        n >= 1 && isWhole(n) && transform == AffineTransform::scale(1 / n, 1 / n);
    if (!isReduction) invariantBroken();
    return std::make_shared<ReduceNode>(shared_from_this(), n);
}

CIImageRef ImageNode::imageByCompositingOverImage(const CIImageRef& background) const {
    return std::make_shared<OverNode>(shared_from_this(),
                                      std::static_pointer_cast<const ImageNode>(background));
}

}  // namespace quillmere
