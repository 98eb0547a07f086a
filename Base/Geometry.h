// Sizes, rectangles and transforms with their units in the type.
#pragma once

namespace quillmere {

/// A size of a bitmap, in whole pixels.
struct PixelSize {
    int width = 0;
    int height = 0;

    friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

/// A position in the units of its space: points of a picture, or pixels where a space says so.
struct Point {
    double x = 0;
    double y = 0;

    friend bool operator==(const Point&, const Point&) = default;
};

/// An extent in the units of its space.
struct Size {
    double width = 0;
    double height = 0;

    friend bool operator==(const Size&, const Size&) = default;
};

/// A rectangle. Whether `y` grows downwards or upwards is told by the space that it lies in.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    bool isEmpty() const { return !(width > 0 && height > 0); }

    /// The common part of two rectangles; an empty `Rect{}` where they have none.
    Rect intersection(const Rect& other) const {
        const double left = x > other.x ? x : other.x;
        const double top = y > other.y ? y : other.y;
        const double right = maxX() < other.maxX() ? maxX() : other.maxX();
        const double bottom = maxY() < other.maxY() ? maxY() : other.maxY();
        if (!(right > left && bottom > top)) return {};
        return {left, top, right - left, bottom - top};
    }

    /// The smallest rectangle around two; an empty one adds nothing.
    Rect unionWith(const Rect& other) const {
        if (isEmpty()) return other;
        if (other.isEmpty()) return *this;
        const double left = x < other.x ? x : other.x;
        const double top = y < other.y ? y : other.y;
        const double right = maxX() > other.maxX() ? maxX() : other.maxX();
        const double bottom = maxY() > other.maxY() ? maxY() : other.maxY();
        return {left, top, right - left, bottom - top};
    }

    friend bool operator==(const Rect&, const Rect&) = default;
};

/// Maps (x, y) to (a x + c y + tx, b x + d y + ty).
struct AffineTransform {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;

    static AffineTransform translation(double tx, double ty) { return {1, 0, 0, 1, tx, ty}; }
    static AffineTransform scale(double sx, double sy) { return {sx, 0, 0, sy, 0, 0}; }

    friend bool operator==(const AffineTransform&, const AffineTransform&) = default;
};

}  // namespace quillmere
