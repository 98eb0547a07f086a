// The crop screen: which part of a picture is kept, and how it is turned.
#pragma once

#include <array>
#include <optional>

#include "Base/Geometry.h"
#include "Base/Published.h"
#include "Platform/Graphics/Graphics.h"

namespace quillmere {

/// Lengths are pixels of the picture as it is turned now, from its top left corner. The kept part
/// lies within the picture, has whole pixels at the end, and no side under `smallestSide` or the
/// picture's own. Main thread.
class CropViewController {
public:
    static constexpr double smallestSide = 16;

    /// Width to height; 0 is free.
    static constexpr std::array<Size, 6> aspectRatios{
        {{0, 0}, {1, 1}, {3, 2}, {4, 3}, {5, 4}, {16, 9}}};

    /// Which edges of the kept part a handle moves.
    struct Handle {
        int horizontal = 0;  // -1 the left one, 1 the right one
        int vertical = 0;    // -1 the top one, 1 the bottom one
    };

    explicit CropViewController(const UIImage& picture);

    Published<Rect> cropRect;
    /// Width over height; nothing while it is free.
    Published<std::optional<double>> aspectRatio;
    /// How the upright picture is turned to be shown.
    Published<UIImageOrientation> orientation{UIImageOrientation::up};

    /// Of the picture as it is turned now.
    Size size() const;
    /// Whether there is anything to be reset.
    bool isChanged() const;

    void moveBy(double x, double y);
    /// Moves the handle's edges to a point; the others stay, unless a fixed ratio moves them.
    void drag(Handle handle, Point to);
    /// The largest part of that ratio in the middle of what is kept; {0, 0} frees it.
    void setAspectRatio(Size ratio);
    void rotateClockwise();
    void rotateCounterclockwise();
    void flip();
    void reset();

    /// The picture without its own orientation; with `orientation`, it is what is to be shown.
    /// Nothing where memory ran out.
    std::optional<UIImage> uprightPicture(Graphics& graphics) const;

    /// The kept part, upright. Nothing where memory ran out, and for a picture without pixels.
    std::optional<UIImage> croppedImage(Graphics& graphics) const;

private:
    void turn(int quarters);
    void show();
    Rect fitted(const Rect& rect) const;

    UIImage picture_;
    mutable std::optional<UIImage> upright_;
    int quarters_ = 0;  // clockwise, after the flip
    bool isFlipped_ = false;
};

}  // namespace quillmere
