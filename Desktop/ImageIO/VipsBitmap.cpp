#include "Desktop/ImageIO/VipsBitmap.h"

#include <algorithm>
#include <cstring>

#include "Desktop/ImageIO/BitmapBuffer.h"

namespace quillmere {
namespace {

constexpr int bands = 4;

VipsImageRef copyOfRows(const CGImage& bitmap) {
    VipsImageRef copy(vips_image_new_memory());
    vips_image_init_fields(copy.get(), bitmap.size().width, bitmap.size().height, bands,
                           VIPS_FORMAT_UCHAR, VIPS_CODING_NONE, VIPS_INTERPRETATION_sRGB, 1, 1);
    for (int y = 0; y < bitmap.size().height; ++y) {
        // The row is only read; the parameter lacks its const.
        if (vips_image_write_line(copy.get(), y, const_cast<VipsPel*>(bitmap.row(y))) != 0) {
            return nullptr;
        }
    }
    return copy;
}

}  // namespace

VipsImageRef vipsImageOf(const CGImage& bitmap) {
    const auto [width, height] = bitmap.size();
    const std::size_t bytesPerRow = bands * static_cast<std::size_t>(width);
    if (bitmap.bytesPerRow() != bytesPerRow && height > 1) return copyOfRows(bitmap);
    VipsImageRef image(vips_image_new_from_memory(bitmap.row(0),
                                                  bytesPerRow * static_cast<std::size_t>(height),
                                                  width, height, bands, VIPS_FORMAT_UCHAR));
    if (image) image->Type = VIPS_INTERPRETATION_sRGB;
    return image;
}

bool pullRows(VipsImage* image, const std::function<void(int y, const std::uint8_t* row)>& take) {
    constexpr int rows = 32;
    const VipsRegionRef region(vips_region_new(image));
    if (!region) return false;
    for (int top = 0; top < image->Ysize; top += rows) {
        const VipsRect strip = {0, top, image->Xsize, std::min(rows, image->Ysize - top)};
        if (vips_region_prepare(region.get(), &strip) != 0) return false;
        for (int y = top; y < top + strip.height; ++y) {
            take(y, VIPS_REGION_ADDR(region.get(), 0, y));
        }
    }
    return true;
}

std::optional<CGImage> bitmapOfVipsImage(VipsImage* image) {
    auto buffer = BitmapBuffer::create({image->Xsize, image->Ysize});
    if (!buffer) return {};
    const std::size_t bytesPerRow = bands * static_cast<std::size_t>(image->Xsize);
    const auto keep = [&](int y, const std::uint8_t* row) {
        std::memcpy(buffer->row(y), row, bytesPerRow);
    };
    if (!pullRows(image, keep)) return {};
    return (*std::move(buffer)).bitmap();
}

}  // namespace quillmere
