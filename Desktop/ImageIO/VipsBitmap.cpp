#include "Desktop/ImageIO/VipsBitmap.h"

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

std::optional<CGImage> bitmapOfVipsImage(VipsImage* image) {
    const PixelSize size{image->Xsize, image->Ysize};
    std::size_t bytes = 0;
    void* memory = vips_image_write_to_memory(image, &bytes);
    if (memory == nullptr) return {};
    return CGImage(
        size, bands * static_cast<std::size_t>(size.width),
        std::shared_ptr<const std::uint8_t>(static_cast<std::uint8_t*>(memory), GFreeDeleter()));
}

}  // namespace quillmere
