#include "Desktop/CoreImage/DesktopCoreImage.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "Base/Invariant.h"
#include "Desktop/CoreImage/ImageNode.h"
#include "Desktop/CoreImage/PixelBufferNode.h"

namespace quillmere {
namespace {

// A band should stay in a core's cache between the steps that draw on it.
constexpr std::size_t bandBytes = 256 << 10;

bool isInterleaved(CVPixelFormat format) {
    return format == CVPixelFormat::rgba8 || format == CVPixelFormat::bgra8;
}

void makeOpaque(std::uint8_t* row, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, row + 4 * i, sizeof pixel);
        pixel |= 0xFF000000u;
        std::memcpy(row + 4 * i, &pixel, sizeof pixel);
    }
}

class BandContext final : public CIContext {
public:
    explicit BandContext(WorkerPool& pool) : pool_(pool) {}

    std::optional<CGImage> createCGImage(const CIImage& image, const Rect& rect) override {
        constexpr double mostPixels = 1e18;  // four bytes each still fit a size
        constexpr int longestSide = std::numeric_limits<int>::max();
        if (rect.isEmpty() || rect.width > longestSide || rect.height > longestSide ||
            rect.width * rect.height > mostPixels) {
            return {};
        }
        if (!isWholePixels(rect)) invariantBroken();
        const PixelSize size{static_cast<int>(rect.width), static_cast<int>(rect.height)};
        const std::size_t bytesPerRow = 4 * static_cast<std::size_t>(size.width);
        // Not cleared here: the bands do it, each while it is warm in its core.
        std::shared_ptr<std::uint8_t[]> pixels(
            new (std::nothrow) std::uint8_t[bytesPerRow * static_cast<std::size_t>(size.height)]);
        if (!pixels) return {};
        const Surface whole(rect, pixels.get(), bytesPerRow);
        if (!render(static_cast<const ImageNode&>(image), whole, bytesPerRow)) return {};
        return CGImage(size, bytesPerRow,
                       std::shared_ptr<const std::uint8_t>(pixels, pixels.get()));
    }

    bool renderToCVPixelBuffer(const CIImage& image, CVPixelBuffer& buffer,
                               const Rect& bounds) override {
        const Rect area{bounds.x, bounds.maxY() - buffer.size().height,
                        static_cast<double>(buffer.size().width),
                        static_cast<double>(buffer.size().height)};
        if (!isWholePixels(bounds) || !isInterleaved(buffer.format())) invariantBroken();
        const auto* whole = dynamic_cast<const PixelBufferNode*>(&image);
        if (whole && whole->buffer().backing() && whole->buffer().size() == buffer.size() &&
            bounds == image.extent()) {
            buffer.setBacking(whole->buffer().backing());
            return true;
        }
        const CIImageRef shown = image.imageByCroppingToRect(bounds);
        const Surface surface(area, buffer.baseAddress(), buffer.bytesPerRow());
        if (!render(static_cast<const ImageNode&>(*shown), surface, buffer.bytesPerRow())) {
            return false;
        }
        const auto width = static_cast<std::size_t>(buffer.size().width);
        for (std::size_t y = 0; y < surface.height(); ++y) {
            std::uint8_t* row = surface.row(y);
            if (buffer.format() == CVPixelFormat::bgra8) swapRedAndBlue(row, row, width);
            makeOpaque(row, width);
        }
        return true;
    }

private:
    // False if memory ran out on the way.
    bool render(const ImageNode& image, const Surface& whole, std::size_t bytesPerRow) {
        const std::size_t rows = std::max<std::size_t>(1, bandBytes / bytesPerRow);
        std::atomic<bool> failed = false;
        pool_.parallelFor((whole.height() + rows - 1) / rows, [&](std::size_t i, std::size_t) {
            const std::size_t first = i * rows;
            const std::size_t count = std::min(rows, whole.height() - first);
            std::memset(whole.row(first), 0, count * bytesPerRow);
            const Rect& all = whole.area();
            const Rect area{all.x, all.maxY() - static_cast<double>(first + count), all.width,
                            static_cast<double>(count)};
            try {
                image.draw(whole.part(area), true);
            } catch (const std::bad_alloc&) {
                failed = true;
            }
        });
        return !failed;
    }

    WorkerPool& pool_;
};

}  // namespace

CIImageRef DesktopCoreImage::imageWithImage(const UIImage& picture) {
    return picture.cgImage() ? makeBitmapNode(*picture.cgImage()) : nullptr;
}

CIImageRef DesktopCoreImage::imageWithCVPixelBuffer(const CVPixelBufferRef& buffer) {
    return isInterleaved(buffer->format()) ? std::make_shared<PixelBufferNode>(buffer) : nullptr;
}

std::unique_ptr<CIContext> DesktopCoreImage::makeContext(const CIContextOptions&) {
    return std::make_unique<BandContext>(pool_);
}

}  // namespace quillmere
