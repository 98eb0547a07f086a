// A picture as a user sees it: a bitmap, how it is turned, and how many pixels make a point.
#pragma once

#include <optional>
#include <utility>

#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// How the stored bitmap has to be turned to be seen upright. The numbers are the platform's;
/// the comment gives the value of the Exif orientation tag.
enum class UIImageOrientation {
    up = 0,             // 1
    down = 1,           // 3: turned by 180 degrees
    left = 2,           // 8: to be turned by 90 degrees against the clock
    right = 3,          // 6: to be turned by 90 degrees with the clock
    upMirrored = 4,     // 2
    downMirrored = 5,   // 4
    leftMirrored = 6,   // 5
    rightMirrored = 7,  // 7
};

/// Whether upright width and height are the stored height and width.
constexpr bool swapsSides(UIImageOrientation orientation) {
    return orientation == UIImageOrientation::left || orientation == UIImageOrientation::right ||
           orientation == UIImageOrientation::leftMirrored ||
           orientation == UIImageOrientation::rightMirrored;
}

/// An immutable picture; a copy shares the bitmap.
class UIImage {
public:
    explicit UIImage(CGImage bitmap, double scale = 1,
                     UIImageOrientation orientation = UIImageOrientation::up)
        : size_(uprightSize(bitmap.size(), scale, orientation)),
          scale_(scale),
          orientation_(orientation),
          bitmap_(std::move(bitmap)) {}

    /// A picture with no bitmap behind it, as a platform may hand out. `size` is in points.
    static UIImage withoutBitmap(Size size) { return UIImage(size); }

    /// Upright, in points: pixels divided by `scale()`.
    Size size() const { return size_; }
    double scale() const { return scale_; }
    UIImageOrientation imageOrientation() const { return orientation_; }
    const std::optional<CGImage>& cgImage() const { return bitmap_; }

private:
    explicit UIImage(Size size) : size_(size) {}

    static Size uprightSize(PixelSize pixels, double scale, UIImageOrientation orientation) {
        if (swapsSides(orientation)) std::swap(pixels.width, pixels.height);
        return {pixels.width / scale, pixels.height / scale};
    }

    Size size_;
    double scale_ = 1;
    UIImageOrientation orientation_ = UIImageOrientation::up;
    std::optional<CGImage> bitmap_;
};

}  // namespace quillmere
