// Canvases and cuts without a library: slow, obvious, and told to fail by number.
#pragma once

#include <atomic>
#include <set>

#include "Platform/Graphics/Graphics.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Draws every pixel by the definition: the mean of the covered area when reducing, bilinear when
/// enlarging, each axis for itself. Edges of rectangles and canvases are rounded to whole pixels.
/// A canvas of over 2^28 pixels counts as "memory ran out".
///
/// Records `beginImageContext 256x256 opaque=0 scale=1` (points), `drawInRect 256x256 at 1,0`,
/// `imageFromCurrentContext`, `endImageContext` and `imageInRect 244,0 12x256`. The log outlives
/// the fake, and the fake its canvases. Any thread.
class FakeGraphics : public Graphics {
public:
    explicit FakeGraphics(CallLog& log) : log_(log) {}

    std::unique_ptr<GraphicsContext> beginImageContextWithOptions(Size size, bool opaque,
                                                                  double scale) override;
    std::unique_ptr<GraphicsContext> beginImageContext(Size size) override;
    std::optional<CGImage> imageInRect(const CGImage& bitmap, const Rect& rect) override;

    // Which calls answer nothing, counted from 0 over the fake's life. Set them before the calls.
    std::set<int> refusedImages;  // `imageFromCurrentContext`
    std::set<int> refusedCuts;    // `imageInRect`

private:
    class Canvas;

    CallLog& log_;
    std::atomic<int> images_ = 0;
    std::atomic<int> cuts_ = 0;
};

}  // namespace quillmere
