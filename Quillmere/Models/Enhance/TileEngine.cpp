#include "Quillmere/Models/Enhance/TileEngine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "Base/FormatString.h"
#include "Base/Invariant.h"
#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Models/Services/LocalizedReason.h"
#include "Quillmere/Models/Services/ResolutionLimit.h"

namespace quillmere {

/// What lives as long as one run.
struct TileEngine::Run {
    const UIImage& working;
    VNCoreMLRequest& request;
    float total;
    const Progress& progress;
    const Completion& completion;
    CIImageRef accumulated;
    std::int64_t done = 0;

    void fail(std::string text) const { completion(std::nullopt, std::move(text)); }
};

void TileEngine::enhanceImage(EnhanceStyle style, const UIImage& image, const Progress& progress,
                              const Completion& completion) {
    if (style == EnhanceStyle::original) return completion(image, std::nullopt);

    const double limit = resolutionLimit(ports_.userDefaults);
    const UIImage working = resizeImage(uprightPicture(image), limit);

    const MLModelRef model = ports_.catalogue.makeModel(style);
    if (!model) return completion(std::nullopt, std::nullopt);

    const auto visionModel = ports_.vision.modelForMLModel(model);
    if (!visionModel) {
        return completion(
            std::nullopt,
            failedToConvertMessage(6) + localizedReason(visionModel.error(), ports_.localization));
    }
    const auto request = ports_.vision.requestWithModel(*visionModel);

    const TilePlan plan(working.size());
    Run run{working, *request, static_cast<float>(plan.count()), progress, completion, nullptr};
    for (std::int64_t row = 0; row < plan.rows(); ++row) {
        for (std::int64_t column = 0; column < plan.columns(); ++column) {
            runTile(run, plan.tile(row, column));
        }
    }
    if (auto result = finish(run, style, plan)) completion(std::move(result), std::nullopt);
}

void TileEngine::runTile(Run& run, const Tile& tile) {
    const std::optional<UIImage> canvas = drawTile(run.working, tile);
    if (!canvas) return run.fail(failedToConvertMessage(1));

    const CIImageRef input = ports_.coreImage.imageWithImage(*canvas);
    if (!input) return run.fail(failedToConvertMessage(2));

    const auto handler = ports_.vision.handlerWithCIImage(input, {});
    const std::array requests{&run.request};
    if (const auto performed = handler->performRequests(requests); !performed) {
        return run.fail(failedToConvertMessage(5) +
                        "\nThere is a possibility of insufficient memory."
                        "\n*iPhone 7 and earlier devices are not supported.\n" +
                        localizedReason(performed.error(), ports_.localization));
    }

    const auto results = run.request.results();
    if (!results || results->empty()) invariantBroken();
    const auto* output = dynamic_cast<const VNPixelBufferObservation*>(results->front().get());
    if (!output) invariantBroken();

    const CIImageRef placed =
        ports_.coreImage.imageWithCVPixelBuffer(output->pixelBuffer())
            ->imageByCroppingToRect(tile.crop)
            ->imageByApplyingTransform(AffineTransform::translation(tile.offset.x, tile.offset.y));
    run.accumulated =
        run.accumulated ? placed->imageByCompositingOverImage(run.accumulated) : placed;

    run.done += 1;
    const float fraction = static_cast<float>(run.done) / run.total;
    ports_.dispatch.mainQueue().async([progress = run.progress, fraction] {
        if (progress) progress(fraction);
    });
}

std::optional<UIImage> TileEngine::drawTile(const UIImage& working, const Tile& tile) {
    const auto context = ports_.graphics.beginImageContextWithOptions(
        {TilePlan::tileSize, TilePlan::tileSize}, false, 1.0);
    if (!working.cgImage()) invariantBroken();
    const auto cut = ports_.graphics.imageInRect(*working.cgImage(), tile.cut);
    if (!cut) invariantBroken();
    const UIImage content(*cut, working.scale(), working.imageOrientation());
    for (const Point& at : tile.draws) {
        context->drawInRect(content, {at.x, at.y, tile.cut.width, tile.cut.height});
    }
    return context->imageFromCurrentContext();
}

std::optional<UIImage> TileEngine::finish(Run& run, EnhanceStyle style, const TilePlan& plan) {
    if (style == EnhanceStyle::high && run.accumulated) {
        run.accumulated =
            run.accumulated->imageByApplyingTransform(AffineTransform::scale(0.5, 0.5));
    }
    if (!run.accumulated) {
        run.fail(failedToConvertMessage(3));
        return std::nullopt;
    }
    const auto rendered =
        sharedCIContext().createCGImage(*run.accumulated, run.accumulated->extent());
    if (!rendered) {
        ports_.console.print("Image processing failed.Please try with another image.");
        run.fail(failedToConvertMessage(4));
        return std::nullopt;
    }
    const auto scale = outputScale(style);
    if (!scale) invariantBroken();  // a style without a scale has no network either
    const auto result = ports_.graphics.imageInRect(*rendered, plan.resultCut(*scale));
    if (!result) invariantBroken();
    return UIImage(*result);
}

UIImage TileEngine::uprightPicture(const UIImage& image) {
    if (image.imageOrientation() == UIImageOrientation::up) return image;
    const auto context =
        ports_.graphics.beginImageContextWithOptions(image.size(), false, image.scale());
    context->drawInRect(image, {0, 0, image.size().width, image.size().height});
    const auto upright = context->imageFromCurrentContext();
    if (!upright) invariantBroken();
    return *upright;
}

UIImage TileEngine::resizeImage(const UIImage& image, double maxDimension) {
    const Size size = image.size();
    if (size.width <= maxDimension && size.height <= maxDimension) return image;
    const double ratio = maxDimension / std::max(size.width, size.height);
    const Size reduced{std::round(size.width * ratio), std::round(size.height * ratio)};
    const auto context = ports_.graphics.beginImageContext(reduced);
    context->drawInRect(image, {0, 0, reduced.width, reduced.height});
    const auto resized = context->imageFromCurrentContext();
    if (!resized) invariantBroken();
    return *resized;
}

std::string TileEngine::failedToConvertMessage(int code) {
    const std::string number = std::to_string(code);
    ports_.analytics.logEventWithName(eventName("ConvertFailed"),
                                      AnalyticsParameters{{"ErrorCode", number}});
    return formatString(ports_.localization.localizedString("FailedToConvertMessage"), {number});
}

CIContext& TileEngine::sharedCIContext() {
    std::call_once(contextOnce_, [this] {
        context_ = ports_.coreImage.makeContext(
            {.useSoftwareRenderer = false, .cacheIntermediates = false});
    });
    return *context_;
}

}  // namespace quillmere
