#include "CommandLine/VideoPlan.h"

#include <chrono>
#include <cmath>
#include <future>
#include <memory>
#include <utility>

#include "Desktop/AVFoundation/MovieModule.h"
#include "Quillmere/Models/Video/SuperResolutionContext.h"
#include "Quillmere/Models/Video/SuperResolutionFactor.h"

namespace quillmere::cli {
namespace {

Error failure(std::string sentence, std::vector<std::string> values = {}) {
    return {"quillmere.commandline", 1, std::move(sentence), std::move(values)};
}

std::string count(int number, const std::string& what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::vector<std::string> lossesOf(const MovieSurvey& survey) {
    std::vector<std::string> losses;
    const auto add = [&](bool isThere, std::string text) {
        if (isThere) losses.push_back(std::move(text));
    };
    add(survey.videoTracks > 1, count(survey.videoTracks - 1, "further video track"));
    add(survey.audioTracks > 1, count(survey.audioTracks - 1, "further audio track"));
    add(survey.subtitleTracks > 0, count(survey.subtitleTracks, "subtitle track"));
    add(survey.otherTracks > 0, count(survey.otherTracks, "other track"));
    add(survey.chapters > 0, count(survey.chapters, "chapter mark"));
    add(survey.audioChannels > 2,
        "sound of " + std::to_string(survey.audioChannels) + " channels (it becomes stereo)");
    add(survey.isHighDynamicRange, "high dynamic range (it becomes standard range)");
    add(!survey.isHighDynamicRange && survey.bitsPerChannel > 8,
        std::to_string(survey.bitsPerChannel) + " bits a channel (they become 8)");
    add(survey.isTransparent, "transparency");
    add(survey.hasDate, "the date");
    add(survey.hasPlace, "the place");
    return losses;
}

Result<UIImage> firstFrame(const VideoPlanPorts& ports, const AVAssetRef& asset) {
    const auto generator = ports.avFoundation.assetImageGeneratorWithAsset(asset);
    generator->setAppliesPreferredTrackTransform(true);
    const auto frame = std::make_shared<std::promise<Result<CGImage>>>();
    generator->generateCGImagesAsynchronouslyForTimes(
        {MediaTime::zero()},
        [frame](MediaTime, Result<CGImage> image) { frame->set_value(std::move(image)); });
    auto image = frame->get_future().get();
    if (!image) {
        const bool isEmpty = image.error().domain == AVFoundation::errorDomain &&
                             image.error().code == static_cast<int>(AVErrorCode::noImageAtTime);
        return isEmpty ? failure("The video holds no frames.") : image.error();
    }
    return UIImage(*std::move(image));
}

template <class Work>
double secondsOf(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The size of the style's preview decides that of the movie, as on the detail screen.
Result<Size> planEnlarging(const VideoPlanPorts& ports, EnhanceStyle style, const UIImage& frame,
                           VideoPlan& plan) {
    if (style == EnhanceStyle::original) return frame.size();
    // Loaded before the clock runs; the run below finds it in the cache.
    const auto network = ports.catalogue.makeModel(style);
    std::optional<UIImage> preview;
    std::optional<std::string> wrong;
    plan.secondsPerFrame = secondsOf([&] {
        ports.engine.enhanceImage(
            style, frame, {}, [&](std::optional<UIImage> made, std::optional<std::string> text) {
                if (made) preview = std::move(made);
                if (text && !wrong) wrong = std::move(text);
            });
    });
    if (wrong) return failure(*wrong);
    if (preview) return preview->size();
    return failure(
        "The network of the style %@ could not be loaded. Call ./run in Quillmere's folder, which "
        "fetches what is missing, or install Quillmere again.",
        {std::string(displayKey(style))});
}

Result<Size> planScaling(const VideoPlanPorts& ports, VideoPlan& plan) {
    VideoToolbox& scaler = ports.platform.videoToolbox();
    const auto factor = resolveSuperResolutionFactor(scaler, ports.console, plan.natural.width,
                                                     plan.natural.height);
    if (!factor) {
        const PixelSize limit = scaler.maximumDimensions().value_or(assumedMaximumDimensions);
        return failure(
            "The style rapidHQ makes no videos larger than %@ by %@, and at least "
            "doubles each side; choose another style.",
            {std::to_string(limit.width), std::to_string(limit.height)});
    }
    plan.mode = VideoProcessor::Mode::superResolution(*factor);
    // Finds out before the work whether the scaler takes the frames.
    const auto context = SuperResolutionContext::prepare(
        {scaler, ports.platform.dispatch(), ports.platform.device(), ports.platform.localization()},
        plan.natural, *factor);
    if (!context) return context.error();
    (*context)->endSession();
    return Size{plan.natural.width * *factor, plan.natural.height * *factor};
}

/// The coded size is even.
int evenSide(double side) { return (static_cast<int>(std::lround(side)) + 1) / 2 * 2; }

}  // namespace

Result<VideoPlan> planVideo(const VideoPlanPorts& ports, const VideoOptions& options) {
    VideoPlan plan;
    plan.asset = ports.avFoundation.assetWithURL(options.input);
    // Tells what is wrong with a file that can't be read.
    if (const auto reader = ports.avFoundation.assetReaderWithAsset(plan.asset); !reader) {
        return reader.error();
    }
    const auto tracks = plan.asset->tracksWithMediaType(AVMediaType::video);
    if (tracks.empty()) {
        return failure(ports.platform.localization().localizedString("FailedToAccessVideoError"));
    }
    const Size stored = tracks.front()->naturalSize();
    plan.natural = {std::abs(stored.width), std::abs(stored.height)};
    plan.survey = loadMovieModule()->surveyMovie(options.input).value_or(MovieSurvey());
    const MediaTime duration = plan.asset->duration();
    if (duration.isKnown()) plan.duration = duration.seconds();
    plan.notKept = lossesOf(plan.survey);

    const auto frame = firstFrame(ports, plan.asset);
    if (!frame) return frame.error();
    plan.source = {static_cast<int>(frame->size().width), static_cast<int>(frame->size().height)};
    const auto output = options.style == EnhanceStyle::rapidHQ
                            ? planScaling(ports, plan)
                            : planEnlarging(ports, options.style, *frame, plan);
    if (!output) return output.error();
    plan.output = *output;
    // The processor turns the sides of what goes through the engine, and not of what is scaled.
    const bool isOnItsSide =
        plan.mode.scaleFactor &&
        (plan.source.width > plan.source.height) != (plan.natural.width > plan.natural.height);
    plan.result = isOnItsSide ? PixelSize{evenSide(output->height), evenSide(output->width)}
                              : PixelSize{evenSide(output->width), evenSide(output->height)};
    return plan;
}

}  // namespace quillmere::cli
