// A picture of the application's as a value that QML can hand on.
#pragma once

#include <QMetaType>
#include <optional>

#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// A copy shares the bitmap. QML sees no more of it than its size.
struct Picture {
    Q_GADGET
    Q_PROPERTY(bool isThere READ isThere)
    Q_PROPERTY(int width READ width)
    Q_PROPERTY(int height READ height)

public:
    std::optional<UIImage> image;

    bool isThere() const { return image && image->cgImage(); }
    /// In pixels, upright.
    int width() const { return isThere() ? side(image->size().width) : 0; }
    int height() const { return isThere() ? side(image->size().height) : 0; }

    bool sameAs(const Picture& other) const {
        if (!isThere() || !other.isThere()) return isThere() == other.isThere();
        return image->cgImage()->pixels() == other.image->cgImage()->pixels() &&
               image->cgImage()->size() == other.image->cgImage()->size() &&
               image->imageOrientation() == other.image->imageOrientation();
    }

private:
    int side(double points) const { return static_cast<int>(points * image->scale() + 0.5); }
};

}  // namespace quillmere

Q_DECLARE_METATYPE(quillmere::Picture)
