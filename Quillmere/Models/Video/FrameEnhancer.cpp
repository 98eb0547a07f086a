#include "Quillmere/Models/Video/FrameEnhancer.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace quillmere {

CIImageRef FrameEnhancer::enhance(const CIImageRef& frame) {
    const Rect extent = frame->extent();
    const bool isNatural = extent.width == natural_.width && extent.height == natural_.height;
    const CIImageRef working =
        isNatural ? frame : frame->imageByCroppingToRect({0, 0, natural_.width, natural_.height});
    if (style_ == EnhanceStyle::original) return working;
    const auto bitmap = ports_.sharedCIContext().createCGImage(*working, working->extent());
    if (!bitmap) {
        ports_.console.print("Image processing failed.Please try with another image.");
        return fail(frame);
    }
    const auto picture = runEngine(UIImage(*bitmap));
    const auto enhanced = picture ? ports_.coreImage.imageWithImage(*picture) : nullptr;
    return enhanced ? enhanced : fail(frame);
}

CIImageRef FrameEnhancer::fail(const CIImageRef& frame) {
    failedFrames_.fetch_add(1, std::memory_order_relaxed);
    return frame;
}

std::optional<UIImage> FrameEnhancer::runEngine(const UIImage& picture) const {
    struct Slot {
        std::optional<UIImage> picture;
        std::shared_ptr<DispatchSemaphore> isThere;
    };
    const auto slot = std::make_shared<Slot>(Slot{std::nullopt, ports_.dispatch.makeSemaphore(0)});
    // Waited for below, so that what the block refers to outlives it.
    ports_.dispatch.globalQueue(QualityOfService::userInitiated).async([this, slot, &picture] {
        // A failed tile calls before the end does, and the frame then stays as it is; but the end
        // is waited for, so that one frame at a time goes through the engine.
        bool isFirst = true;
        const auto keepFirst = [&](std::optional<UIImage> made, const std::optional<std::string>&) {
            if (std::exchange(isFirst, false)) slot->picture = std::move(made);
        };
        ports_.enhanceImage(style_, picture, {}, keepFirst);
        slot->isThere->signal();
    });
    slot->isThere->wait();
    return std::move(slot->picture);
}

}  // namespace quillmere
