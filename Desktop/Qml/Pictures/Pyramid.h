// A picture in halving sizes, so that each is drawn from about as many pixels as the screen has.
#pragma once

#include <QImage>
#include <vector>

#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// Immutable, upright, from the largest level down to one of at most `smallestLevel` pixels.
struct Pyramid {
    static constexpr int smallestLevel = 512;

    std::vector<QImage> levels;  // RGBA, premultiplied

    /// Takes a while: not on the main thread. The largest level shares the picture's pixels where
    /// it is upright already.
    static Pyramid of(const UIImage& picture);

    /// The smallest level that is at least `width` pixels wide, or else the largest one.
    std::size_t levelForWidth(double width) const;
};

}  // namespace quillmere
