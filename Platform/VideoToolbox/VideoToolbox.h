// The system's frame scaler for movies.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Base/Error.h"
#include "Platform/CoreImage/CVPixelBuffer.h"
#include "Platform/VideoToolbox/VTFrameProcessor.h"

namespace quillmere {

/// What a configuration is made from. The numbers below have one meaning each here: video, quality
/// normal, first revision.
struct VTSuperResolutionScalerOptions {
    PixelSize frame;  // of the source
    int scaleFactor = 2;
    int inputType = 1;
    bool usePrecomputedFlow = false;
    int qualityPrioritization = 1;
    int revision = 1;
};

/// A size and a factor that the scaler takes. Immutable; any thread.
class VTSuperResolutionScalerConfiguration {
public:
    virtual ~VTSuperResolutionScalerConfiguration() = default;

    virtual PixelSize frameSize() const = 0;
    virtual int scaleFactor() const = 0;

    /// For the reader's output and for the pool of the writer's adaptor.
    virtual CVPixelBufferAttributes sourcePixelBufferAttributes() const = 0;
    virtual CVPixelBufferAttributes destinationPixelBufferAttributes() const = 0;

    /// Fetches the model that this configuration needs. The completion runs once, on any thread,
    /// perhaps before this returns; with nothing on success.
    virtual void downloadConfigurationModel(
        const std::function<void(std::optional<Error>)>& completion) const = 0;
};

/// May be called from any thread.
class VideoToolbox {
public:
    virtual ~VideoToolbox() = default;

    /// Whether this machine can run the scaler at all.
    virtual bool superResolutionScalerIsSupported() const = 0;
    /// Whole factors in any order; may be empty.
    virtual std::vector<int> supportedScaleFactors() const = 0;
    /// The limit of the output; nothing where there is none to tell.
    virtual std::optional<PixelSize> maximumDimensions() const = 0;

    /// Null for a combination that the scaler refuses.
    virtual std::shared_ptr<const VTSuperResolutionScalerConfiguration> makeConfiguration(
        const VTSuperResolutionScalerOptions& options) const = 0;
    /// Without a session yet. Must not outlive this object.
    virtual std::unique_ptr<VTFrameProcessor> makeFrameProcessor() = 0;
};

}  // namespace quillmere
