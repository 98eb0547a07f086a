#include "Desktop/ImageIO/Resample.h"

#include <algorithm>
#include <cmath>

#include "Desktop/ImageIO/BitmapBuffer.h"
#include "Desktop/ImageIO/VipsBitmap.h"
#include "Desktop/ImageIO/VipsLibrary.h"

namespace quillmere {
namespace {

// Reduces the sides that get shorter; the others stay.
VipsImageRef reduced(VipsImage* image, Size target) {
    const double across = std::min(1.0, target.width / image->Xsize);
    const double down = std::min(1.0, target.height / image->Ysize);
    return vipsResult([&](VipsImage** out) {
        return vips_resize(image, out, across, "vscale", down, "kernel", VIPS_KERNEL_LANCZOS3,
                           nullptr);
    });
}

VipsImageRef part(VipsImage* image, const Rect& rect) {
    return vipsResult([&](VipsImage** out) {
        return vips_extract_area(image, out, static_cast<int>(rect.x), static_cast<int>(rect.y),
                                 static_cast<int>(rect.width), static_cast<int>(rect.height),
                                 nullptr);
    });
}

// How one axis of an enlargement is asked for, whatever its factor: the source pixels that matter,
// and in their coordinates the place of the first pixel that is made.
struct Axis {
    Axis(int sourceLength, double targetLength, double start, double length)
        : factor(targetLength / sourceLength) {
        constexpr double kernelReach = 3;
        const double place = (start + 0.5) / factor - 0.5;  // pixel centres over pixel centres
        first = std::max(0.0, std::floor(place) - kernelReach);
        const double last = std::ceil(place + length / factor) + kernelReach;
        count = std::min<double>(sourceLength, last) - first;
        offset = first - place;
        // The library's limit. All that is made then lies within a fraction of a source pixel.
        factor = std::min(factor, 1e6);
    }

    double factor;
    double first;
    double count;
    double offset;
};

VipsImageRef enlarged(VipsImage* image, Size target, const Rect& visible) {
    const Axis x(image->Xsize, target.width, visible.x, visible.width);
    const Axis y(image->Ysize, target.height, visible.y, visible.height);
    const VipsImageRef source = part(image, {x.first, y.first, x.count, y.count});
    const VipsInterpolateRef bicubic(vips_interpolate_new("bicubic"));
    if (!source || !bicubic) return nullptr;
    const int area[] = {0, 0, static_cast<int>(visible.width), static_cast<int>(visible.height)};
    const VipsArrayIntRef outputArea(vips_array_int_new(area, 4));
    return vipsResult([&](VipsImage** out) {
        return vips_affine(source.get(), out, x.factor, 0.0, 0.0, y.factor, "interpolate",
                           bicubic.get(), "oarea", outputArea.get(), "idx", x.offset, "idy",
                           y.offset, "extend", VIPS_EXTEND_COPY, "premultiplied", TRUE, nullptr);
    });
}

// The visible part of the stretched picture, not computed yet.
VipsImageRef stretched(VipsImage* source, Size target, const Rect& visible) {
    const VipsImageRef image = reduced(source, target);
    if (!image) return nullptr;
    const bool enlarges = image->Xsize < target.width || image->Ysize < target.height;
    return enlarges ? enlarged(image.get(), target, visible) : part(image.get(), visible);
}

}  // namespace

std::optional<CGImage> resampled(const CGImage& bitmap, Size target, const Rect& visible) {
    if (!startVips()) return {};
    const VipsImageRef source = vipsImageOf(bitmap);
    const VipsImageRef image = source ? stretched(source.get(), target, visible) : nullptr;
    auto buffer = image ? BitmapBuffer::create({image->Xsize, image->Ysize}) : std::nullopt;
    // The kernels overshoot at edges, and a colour above its alpha would glow.
    const auto takeCutToAlpha = [&](int y, const std::uint8_t* row) {
        std::uint8_t* cut = buffer->row(y);
        for (int i = 0; i < 4 * image->Xsize; ++i) cut[i] = std::min(row[i], row[i | 3]);
    };
    if (!buffer || !pullRows(image.get(), takeCutToAlpha)) {
        forgetVipsErrors();
        return {};
    }
    return (*std::move(buffer)).bitmap();
}

}  // namespace quillmere
