// The running frame scaler of one video job, with the frames that it needs to remember.
#pragma once

#include <memory>

#include "Base/Geometry.h"
#include "Base/Result.h"
#include "Platform/AVFoundation/CMSampleBuffer.h"
#include "Platform/Application/Device.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Localization/Localization.h"
#include "Platform/VideoToolbox/VideoToolbox.h"

namespace quillmere {

/// The first version of the system that has the scaler.
inline constexpr SystemVersion superResolutionSystemVersion{26, 0};

/// Made by whoever starts a job, then used by one thread at a time. The session runs until
/// `endSession`.
class SuperResolutionContext {
public:
    struct Ports {
        VideoToolbox& videoToolbox;
        Dispatch& dispatch;
        const Device& device;
        const Localization& localization;
    };

    /// A started scaler for frames of a track's `naturalSize`, whose fractions are cut off. Blocks
    /// while the scaler's model is fetched, with no limit in time, so that nothing there may need
    /// the calling thread. Fails with the platform's error, or with one of `exportError`. A size
    /// that is no finite number is a broken invariant.
    static Result<std::shared_ptr<SuperResolutionContext>> prepare(const Ports& ports,
                                                                   Size naturalSize,
                                                                   int scaleFactor);

    const VTSuperResolutionScalerConfiguration& configuration() const { return *configuration_; }

    /// Blocks until the enlarged frame is in `destination`. After a failure, which is the scaler's
    /// or one of `exportError`, the next frame still follows the last good one.
    Result<void> processSuperResolutionFrame(const CMSampleBuffer& sample,
                                             const std::shared_ptr<CVPixelBuffer>& destination);

    void endSession() { processor_->endSession(); }

private:
    SuperResolutionContext(
        const Ports& ports, std::unique_ptr<VTFrameProcessor> processor,
        std::shared_ptr<const VTSuperResolutionScalerConfiguration> configuration)
        : ports_(ports),
          processor_(std::move(processor)),
          configuration_(std::move(configuration)) {}

    Ports ports_;
    std::unique_ptr<VTFrameProcessor> processor_;
    std::shared_ptr<const VTSuperResolutionScalerConfiguration> configuration_;
    // Hold their buffers, so the pool gives the last output out only when the next one is there.
    VTFrameProcessorFrameRef previousFrame_;
    VTFrameProcessorFrameRef previousOutputFrame_;
};

}  // namespace quillmere
