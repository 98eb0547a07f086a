// Canvases and cuts on the processor.
#pragma once

#include "Platform/Graphics/Graphics.h"

namespace quillmere {

/// A cut shares the pixels of what it was cut from, and so keeps all of them alive. Any thread.
class DesktopGraphics : public Graphics {
public:
    std::unique_ptr<GraphicsContext> beginImageContextWithOptions(Size size, bool opaque,
                                                                  double scale) override;
    std::unique_ptr<GraphicsContext> beginImageContext(Size size) override;
    std::optional<CGImage> imageInRect(const CGImage& bitmap, const Rect& rect) override;
};

}  // namespace quillmere
