#include "Desktop/ImageIO/Upright.h"

#include "Base/Invariant.h"
#include "Desktop/ImageIO/VipsBitmap.h"
#include "Desktop/ImageIO/VipsLibrary.h"

namespace quillmere {
namespace {

int exifOrientation(UIImageOrientation orientation) {
    switch (orientation) {
        case UIImageOrientation::up:
            return 1;
        case UIImageOrientation::upMirrored:
            return 2;
        case UIImageOrientation::down:
            return 3;
        case UIImageOrientation::downMirrored:
            return 4;
        case UIImageOrientation::leftMirrored:
            return 5;
        case UIImageOrientation::right:
            return 6;
        case UIImageOrientation::rightMirrored:
            return 7;
        case UIImageOrientation::left:
            return 8;
    }
    invariantBroken();
}

}  // namespace

std::optional<CGImage> uprightBitmap(const CGImage& bitmap, UIImageOrientation orientation) {
    if (orientation == UIImageOrientation::up) return bitmap;
    if (!startVips()) return {};
    const VipsImageRef stored = vipsImageOf(bitmap);
    if (!stored) return {};
    vips_image_set_int(stored.get(), VIPS_META_ORIENTATION, exifOrientation(orientation));
    const VipsImageRef upright =
        vipsResult([&](VipsImage** out) { return vips_autorot(stored.get(), out, nullptr); });
    auto turned = upright ? bitmapOfVipsImage(upright.get()) : std::nullopt;
    if (!turned) forgetVipsErrors();
    return turned;
}

}  // namespace quillmere
