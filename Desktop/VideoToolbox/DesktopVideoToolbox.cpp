#include "Desktop/VideoToolbox/DesktopVideoToolbox.h"

#include <new>
#include <string>

#include "Desktop/VideoToolbox/FrameScaler.h"

namespace quillmere {
namespace {

constexpr CVPixelFormat kFormat = CVPixelFormat::yCbCr8Planar420;

Error scalerError(ScalerErrorCode code, std::string sentence) {
    return {"quillmere.videotoolbox", static_cast<int>(code), std::move(sentence)};
}

Error outOfMemory() {
    return scalerError(ScalerErrorCode::outOfMemory,
                       "There is not enough memory to enlarge a video of this size.");
}

class Configuration final : public VTSuperResolutionScalerConfiguration {
public:
    explicit Configuration(const VTSuperResolutionScalerOptions& options) : options_(options) {}

    PixelSize frameSize() const override { return options_.frame; }
    int scaleFactor() const override { return options_.scaleFactor; }
    CVPixelBufferAttributes sourcePixelBufferAttributes() const override { return {kFormat}; }
    CVPixelBufferAttributes destinationPixelBufferAttributes() const override { return {kFormat}; }
    void downloadConfigurationModel(
        const std::function<void(std::optional<Error>)>& completion) const override {
        completion(std::nullopt);
    }

private:
    VTSuperResolutionScalerOptions options_;
};

/// `T` is const for a source.
template <class T, class Buffer>
scaler::PlanarFrame<T> planesOf(Buffer& buffer) {
    const auto plane = [&](std::size_t n) {
        return scaler::PlaneView<T>{buffer.baseAddressOfPlane(n),
                                    static_cast<std::ptrdiff_t>(buffer.bytesPerRowOfPlane(n)),
                                    buffer.sizeOfPlane(n)};
    };
    return {plane(0), plane(1), plane(2)};
}

class Processor final : public VTFrameProcessor {
public:
    explicit Processor(WorkerPool& pool) : pool_(pool) {}

    Result<void> startSession(const VTSuperResolutionScalerConfiguration& configuration) override {
        endSession();
        const PixelSize frame = configuration.frameSize();
        const int factor = configuration.scaleFactor();
        try {
            scaler_ = std::make_unique<scaler::FrameScaler>(frame, factor, pool_);
        } catch (const std::bad_alloc&) {
            return outOfMemory();
        }
        source_ = frame;
        target_ = {frame.width * factor, frame.height * factor};
        return {};
    }

    void process(const VTSuperResolutionScalerParameters& parameters,
                 const Completion& completion) override {
        completion(parameters, scale(parameters));
    }

    void endSession() override {
        scaler_.reset();
        lastSource_.reset();
        lastOutput_.reset();
    }

private:
    std::optional<Error> scale(const VTSuperResolutionScalerParameters& parameters) {
        if (!scaler_) {
            return scalerError(ScalerErrorCode::noSession,
                               "The video can't be enlarged, since no session was started.");
        }
        const auto& source = parameters.sourceFrame->buffer();
        const auto& target = parameters.destinationFrame->writableBuffer();
        if (source->size() != source_ || target->size() != target_ || source->format() != kFormat ||
            target->format() != kFormat) {
            return scalerError(ScalerErrorCode::unsuitableFrame,
                               "A frame of the video has another size or format than the first.");
        }
        if (!continues(parameters)) scaler_->forget();
        try {
            scaler_->scale(planesOf<const std::uint8_t>(*source), planesOf<std::uint8_t>(*target));
        } catch (const std::bad_alloc&) {
            scaler_->forget();
            return outOfMemory();
        }
        lastSource_ = source;
        lastOutput_ = target;
        return std::nullopt;
    }

    /// A buffer that a pool gave out again is a new one, since whoever held the old one let it go.
    bool continues(const VTSuperResolutionScalerParameters& parameters) const {
        const auto isLast = [](const VTFrameProcessorFrameRef& frame,
                               const std::weak_ptr<const CVPixelBuffer>& last) {
            return frame && frame->buffer() == last.lock();
        };
        return isLast(parameters.previousFrame, lastSource_) &&
               isLast(parameters.previousOutputFrame, lastOutput_);
    }

    WorkerPool& pool_;
    std::unique_ptr<scaler::FrameScaler> scaler_;
    PixelSize source_;
    PixelSize target_;
    std::weak_ptr<const CVPixelBuffer> lastSource_;
    std::weak_ptr<const CVPixelBuffer> lastOutput_;
};

}  // namespace

std::shared_ptr<const VTSuperResolutionScalerConfiguration> DesktopVideoToolbox::makeConfiguration(
    const VTSuperResolutionScalerOptions& options) const {
    const int factor = options.scaleFactor;
    if (factor != 2 && factor != 4) return nullptr;
    const auto fits = [&](int side, int limit) { return side > 0 && side <= limit / factor; };
    const PixelSize limit = *maximumDimensions();
    if (!fits(options.frame.width, limit.width) || !fits(options.frame.height, limit.height) ||
        options.usePrecomputedFlow) {
        return nullptr;
    }
    return std::make_shared<Configuration>(options);
}

std::unique_ptr<VTFrameProcessor> DesktopVideoToolbox::makeFrameProcessor() {
    return std::make_unique<Processor>(pool_);
}

}  // namespace quillmere
