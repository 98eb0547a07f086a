// The part of a bitmap that an image is being drawn into.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Base/Geometry.h"

namespace quillmere {

/// Writable RGBA rows that show `area` (whole pixels, y pointing up), its highest row first.
/// Owns nothing; a part of a surface writes into the same rows.
class Surface {
public:
    Surface(const Rect& area, std::uint8_t* rows, std::size_t bytesPerRow)
        : area_(area), rows_(rows), bytesPerRow_(bytesPerRow) {}

    const Rect& area() const { return area_; }
    std::size_t width() const { return static_cast<std::size_t>(area_.width); }
    std::size_t height() const { return static_cast<std::size_t>(area_.height); }
    std::uint8_t* row(std::size_t fromTop) const { return rows_ + fromTop * bytesPerRow_; }

    /// `inner` lies within `area()`.
    Surface part(const Rect& inner) const {
        const auto column = static_cast<std::size_t>(inner.x - area_.x);
        const auto fromTop = static_cast<std::size_t>(area_.maxY() - inner.maxY());
        return {inner, row(fromTop) + 4 * column, bytesPerRow_};
    }

    /// The same rows under other coordinates.
    Surface movedBy(double dx, double dy) const {
        return {{area_.x + dx, area_.y + dy, area_.width, area_.height}, rows_, bytesPerRow_};
    }

private:
    Rect area_;
    std::uint8_t* rows_;
    std::size_t bytesPerRow_;
};

}  // namespace quillmere
