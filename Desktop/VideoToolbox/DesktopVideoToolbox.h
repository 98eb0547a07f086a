// The frame scaler of this machine: our own, on the processor.
#pragma once

#include "Base/WorkerPool.h"
#include "Platform/VideoToolbox/VideoToolbox.h"

namespace quillmere {

/// Factors 2 and 4, output up to 4096 by 4096. Frames are planar YUV 4:2:0. There is no model to
/// fetch. Frames are scaled on the calling thread and the pool's, and the completion runs before
/// `process` returns.
///
/// The scaler keeps what it needs of the last frame. It goes by the identity of the previous
/// frames: where they are not those of its last run, it starts anew, as after a cut.
class DesktopVideoToolbox final : public VideoToolbox {
public:
    /// The pool must outlive this object and its processors.
    explicit DesktopVideoToolbox(WorkerPool& pool) : pool_(pool) {}

    bool superResolutionScalerIsSupported() const override { return true; }
    std::vector<int> supportedScaleFactors() const override { return {2, 4}; }
    std::optional<PixelSize> maximumDimensions() const override { return PixelSize{4096, 4096}; }
    std::shared_ptr<const VTSuperResolutionScalerConfiguration> makeConfiguration(
        const VTSuperResolutionScalerOptions& options) const override;
    std::unique_ptr<VTFrameProcessor> makeFrameProcessor() override;

private:
    WorkerPool& pool_;
};

/// The codes of the domain "quillmere.videotoolbox".
enum class ScalerErrorCode { noSession = 1, unsuitableFrame = 2, outOfMemory = 3 };

}  // namespace quillmere
