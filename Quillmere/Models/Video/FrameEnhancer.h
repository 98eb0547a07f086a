// The frames of a video, enlarged one by one as pictures are.
#pragma once

#include <atomic>
#include <functional>

#include "Platform/Application/Console.h"
#include "Platform/CoreImage/CoreImage.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Quillmere/Models/Enhance/TileEngine.h"

namespace quillmere {

/// Serves one video and one style. A frame that the engine fails on, be it on one of its tiles, is
/// answered with itself, so that a video never ends for one frame.
class FrameEnhancer {
public:
    struct Ports {
        CoreImage& coreImage;
        Dispatch& dispatch;
        Console& console;
        EnhanceImage enhanceImage;
        /// The process's one rendering context.
        std::function<CIContext&()> sharedCIContext;
    };

    /// `natural` is the size of stored frames in pixels.
    FrameEnhancer(Ports ports, Size natural, EnhanceStyle style)
        : ports_(std::move(ports)), natural_(natural), style_(style) {}

    /// Blocks until the frame is done; not on the main thread. One frame at a time. A frame with
    /// a border beyond `natural` loses it. Never null.
    CIImageRef enhance(const CIImageRef& frame);

    /// How many frames were answered with themselves for a failure. Any thread.
    int failedFrames() const { return failedFrames_.load(std::memory_order_relaxed); }

private:
    CIImageRef fail(const CIImageRef& frame);
    std::optional<UIImage> runEngine(const UIImage& picture) const;

    const Ports ports_;
    const Size natural_;
    const EnhanceStyle style_;
    std::atomic<int> failedFrames_ = 0;
};

}  // namespace quillmere
