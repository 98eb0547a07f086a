// A frame scaler that repeats pixels, refuses and fails where it is told to, and remembers.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "Platform/VideoToolbox/VideoToolbox.h"

namespace quillmere {

/// What tests set and read. One session at a time.
struct FakeScalerState {
    bool isSupported = true;
    std::vector<int> factors{2, 4};
    std::optional<PixelSize> limit = PixelSize{4096, 4096};
    std::set<int> refusedFactors;  // by makeConfiguration
    std::optional<Error> downloadError, startError, processError;

    std::vector<VTSuperResolutionScalerOptions> configurations;  // that were asked for
    std::vector<VTSuperResolutionScalerParameters> processed;    // with success
    int downloads = 0, sessionsStarted = 0, sessionsEnded = 0;
};

class FakeVideoToolbox final : public VideoToolbox {
public:
    mutable FakeScalerState state;  // being asked is remembered as well

    bool superResolutionScalerIsSupported() const override { return state.isSupported; }
    std::vector<int> supportedScaleFactors() const override { return state.factors; }
    std::optional<PixelSize> maximumDimensions() const override { return state.limit; }

    std::shared_ptr<const VTSuperResolutionScalerConfiguration> makeConfiguration(
        const VTSuperResolutionScalerOptions& options) const override {
        state.configurations.push_back(options);
        const auto& [width, height] = options.frame;
        const int factor = options.scaleFactor;
        const PixelSize limit = state.limit.value_or(PixelSize{4096, 4096});
        const bool fits = width > 0 && height > 0 && width <= limit.width / std::max(factor, 1) &&
                          height <= limit.height / std::max(factor, 1);
        const bool isKnown = std::count(state.factors.begin(), state.factors.end(), factor) != 0;
        if (!fits || !isKnown || options.usePrecomputedFlow || state.refusedFactors.count(factor)) {
            return nullptr;
        }
        return std::make_shared<Configuration>(state, options);
    }
    std::unique_ptr<VTFrameProcessor> makeFrameProcessor() override {
        return std::make_unique<Processor>(state);
    }

private:
    struct Configuration final : VTSuperResolutionScalerConfiguration {
        Configuration(FakeScalerState& s, const VTSuperResolutionScalerOptions& o)
            : state(s), options(o) {}
        PixelSize frameSize() const override { return options.frame; }
        int scaleFactor() const override { return options.scaleFactor; }
        CVPixelBufferAttributes sourcePixelBufferAttributes() const override {
            return {CVPixelFormat::yCbCr8Planar420};
        }
        CVPixelBufferAttributes destinationPixelBufferAttributes() const override {
            return {CVPixelFormat::yCbCr8Planar420};
        }
        void downloadConfigurationModel(
            const std::function<void(std::optional<Error>)>& completion) const override {
            ++state.downloads;
            completion(state.downloadError);
        }

        FakeScalerState& state;
        VTSuperResolutionScalerOptions options;
    };

    struct Processor final : VTFrameProcessor {
        explicit Processor(FakeScalerState& s) : state(s) {}

        Result<void> startSession(
            const VTSuperResolutionScalerConfiguration& configuration) override {
            if (state.startError) return *state.startError;
            ++state.sessionsStarted;
            frame = configuration.frameSize();
            factor = configuration.scaleFactor();
            return {};
        }
        void process(const VTSuperResolutionScalerParameters& parameters,
                     const Completion& completion) override {
            const CVPixelBuffer& from = *parameters.sourceFrame->buffer();
            CVPixelBuffer& to = *parameters.destinationFrame->writableBuffer();
            const PixelSize large{frame.width * factor, frame.height * factor};
            const auto planar = CVPixelFormat::yCbCr8Planar420;
            if (factor == 0 || from.size() != frame || to.size() != large ||
                from.format() != planar || to.format() != planar) {
                return completion(parameters, Error{"fake", 1, "The frame does not fit."});
            }
            if (state.processError) return completion(parameters, state.processError);
            for (std::size_t plane = 0; plane < to.planeCount(); ++plane) {
                const PixelSize size = to.sizeOfPlane(plane);
                for (int y = 0; y < size.height; ++y) {
                    for (int x = 0; x < size.width; ++x) {
                        to.baseAddressOfPlane(plane)[y * to.bytesPerRowOfPlane(plane) + x] =
                            from.baseAddressOfPlane(
                                plane)[y / factor * from.bytesPerRowOfPlane(plane) + x / factor];
                    }
                }
            }
            state.processed.push_back(parameters);
            completion(parameters, std::nullopt);
        }
        void endSession() override {
            if (factor != 0) ++state.sessionsEnded;
            factor = 0;
        }

        FakeScalerState& state;
        PixelSize frame;
        int factor = 0;
    };
};

}  // namespace quillmere
