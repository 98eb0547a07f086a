#include "Quillmere/Models/Video/SuperResolutionContext.h"

#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "Base/Invariant.h"
#include "Quillmere/Models/Video/ExportError.h"

namespace quillmere {
namespace {

constexpr const char* configurationFailed = "VideoSuperResolutionConfigurationFailed";

/// Nothing for a side that no configuration can have.
std::optional<int> wholeSide(double side) {
    if (!std::isfinite(side)) invariantBroken();
    const double whole = std::trunc(std::abs(side));
    if (whole > std::numeric_limits<int>::max()) return std::nullopt;
    return static_cast<int>(whole);
}

/// What one asynchronous operation ended with. The operation may end before it has returned, and
/// on any thread; the semaphore orders the writing before the reading.
struct Outcome {
    std::optional<Error> error;
    std::shared_ptr<DispatchSemaphore> isThere;
};

}  // namespace

Result<std::shared_ptr<SuperResolutionContext>> SuperResolutionContext::prepare(const Ports& ports,
                                                                                Size naturalSize,
                                                                                int scaleFactor) {
    const auto failed = [&](const char* key) { return exportError(ports.localization, key); };
    if (ports.device.systemVersion() < superResolutionSystemVersion) {
        return failed("VideoSuperResolutionRequiresLatestOS");
    }
    if (!ports.videoToolbox.superResolutionScalerIsSupported()) {
        return failed("VideoSuperResolutionUnsupported");
    }
    const auto width = wholeSide(naturalSize.width);
    const auto height = wholeSide(naturalSize.height);
    if (!width || !height) return failed(configurationFailed);
    auto configuration = ports.videoToolbox.makeConfiguration({{*width, *height}, scaleFactor});
    if (!configuration) return failed(configurationFailed);

    const auto download =
        std::make_shared<Outcome>(Outcome{std::nullopt, ports.dispatch.makeSemaphore(0)});
    configuration->downloadConfigurationModel([download](std::optional<Error> error) {
        download->error = std::move(error);
        download->isThere->signal();
    });
    download->isThere->wait();
    if (download->error) return *download->error;

    auto processor = ports.videoToolbox.makeFrameProcessor();
    if (const auto started = processor->startSession(*configuration); !started) {
        return started.error();
    }
    return std::shared_ptr<SuperResolutionContext>(
        new SuperResolutionContext(ports, std::move(processor), std::move(configuration)));
}

Result<void> SuperResolutionContext::processSuperResolutionFrame(
    const CMSampleBuffer& sample, const std::shared_ptr<CVPixelBuffer>& destination) {
    const auto refused = [&] { return exportError(ports_.localization, configurationFailed); };
    if (!sample.imageBuffer()) return refused();
    const MediaTime time = sample.presentationTimeStamp();
    const auto sourceFrame = VTFrameProcessorFrame::initWithBuffer(sample.imageBuffer(), time);
    if (!sourceFrame) return refused();
    const auto destinationFrame = VTFrameProcessorFrame::initWithBuffer(destination, time);
    if (!destinationFrame) return refused();
    const auto parameters = VTSuperResolutionScalerParameters::init(
        sourceFrame, previousFrame_, previousOutputFrame_,
        VTSuperResolutionScalerParameters::kSequential, destinationFrame);
    if (!parameters) return refused();

    const auto frame =
        std::make_shared<Outcome>(Outcome{std::nullopt, ports_.dispatch.makeSemaphore(0)});
    ports_.dispatch.globalQueue(QualityOfService::userInitiated)
        .async([processor = processor_.get(), parameters = *parameters, frame] {
            processor->process(parameters, [frame](const VTSuperResolutionScalerParameters&,
                                                   const std::optional<Error>& error) {
                frame->error = error;
                frame->isThere->signal();
            });
        });
    frame->isThere->wait();
    if (frame->error) return *frame->error;
    previousFrame_ = sourceFrame;
    previousOutputFrame_ = destinationFrame;
    return {};
}

}  // namespace quillmere
