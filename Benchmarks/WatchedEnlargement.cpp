#include "Benchmarks/WatchedEnlargement.h"

#include <algorithm>
#include <cstdio>
#include <future>
#include <optional>
#include <utility>

#include "Benchmarks/Photo.h"
#include "Benchmarks/Timing.h"
#include "CommandLine/LimitOption.h"
#include "Desktop/DesktopPlatform.h"
#include "Quillmere/Models/Enhance/TileEngine.h"

namespace quillmere::benchmark {
namespace {

/// Passes everything on, and adds up how long requests take.
class WatchedVision final : public Vision {
public:
    explicit WatchedVision(Vision& vision) : vision_(vision) {}

    double seconds() const { return seconds_; }

    Result<std::shared_ptr<VNCoreMLModel>> modelForMLModel(const MLModelRef& model) override {
        return vision_.modelForMLModel(model);
    }
    std::unique_ptr<VNCoreMLRequest> requestWithModel(
        const std::shared_ptr<VNCoreMLModel>& model) override {
        return vision_.requestWithModel(model);
    }
    std::unique_ptr<VNImageRequestHandler> handlerWithCIImage(
        const CIImageRef& image, const VNImageOptions& options) override {
        return std::make_unique<Handler>(vision_.handlerWithCIImage(image, options), seconds_);
    }

private:
    class Handler final : public VNImageRequestHandler {
    public:
        Handler(std::unique_ptr<VNImageRequestHandler> handler, double& seconds)
            : handler_(std::move(handler)), seconds_(seconds) {}

        Result<void> performRequests(std::span<VNCoreMLRequest* const> requests) override {
            Result<void> done;
            seconds_ += secondsOf([&] { done = handler_->performRequests(requests); });
            return done;
        }

    private:
        std::unique_ptr<VNImageRequestHandler> handler_;
        double& seconds_;
    };

    Vision& vision_;
    double seconds_ = 0;
};

Error failure(const std::string& sentence) { return {"quillmere.benchmark", 1, sentence}; }

std::optional<EnhanceStyle> styleNamed(const std::string& name) {
    const auto found = std::find_if(allEnhanceStyles.begin(), allEnhanceStyles.end(),
                                    [&](EnhanceStyle style) { return displayKey(style) == name; });
    if (found == allEnhanceStyles.end()) return std::nullopt;
    return *found;
}

Result<void> enlarge(DesktopPlatform& platform, Vision& vision, EnhanceStyle style,
                     const std::filesystem::path& input, const std::filesystem::path& output) {
    const ModelCatalogue catalogue(platform.coreML(), platform.bundles());
    // As the command line does it: the picture is decoded meanwhile.
    const auto network = std::async(std::launch::async, [&] { return catalogue.makeModel(style); });
    const auto data = platform.fileManager().contentsOfFile(input);
    if (!data) return data.error();
    const auto picture = platform.imageIO().imageWithData(*data);
    if (!picture) return picture.error();

    const cli::LimitOption limit(platform.userDefaults(), 1024);
    TileEngine engine({limit, platform.graphics(), platform.coreImage(), vision, catalogue,
                       platform.dispatch(), platform.analytics(), platform.localization(),
                       platform.console()});
    std::optional<UIImage> result;
    std::optional<std::string> failed;
    engine.enhanceImage(style, *picture, {},
                        [&](std::optional<UIImage> made, std::optional<std::string> text) {
                            if (made) result = std::move(made);
                            if (text) failed = std::move(text);
                        });
    if (failed) return failure(*failed);
    if (!result) return failure("The style's network could not be loaded.");

    const auto encoded = platform.imageIO().jpegRepresentation(*result, kLossyQuality);
    if (!encoded) return encoded.error();
    return platform.fileManager().writeFile(output, *encoded, WriteExisting::replace);
}

}  // namespace

int enlargeWatched(const std::string& styleName, const std::filesystem::path& input,
                   const std::filesystem::path& output) {
    const auto style = styleNamed(styleName);
    const auto platform = DesktopPlatform::make();
    if (!style || !platform) return 1;
    WatchedVision vision((*platform)->vision());

    // The engine must not run on the main thread, which pumps the main queue meanwhile.
    DesktopDispatch& dispatch = (*platform)->dispatch();
    std::optional<Result<void>> done;
    dispatch.globalQueue(QualityOfService::userInitiated).async([&] {
        const Result<void> result = enlarge(**platform, vision, *style, input, output);
        dispatch.mainQueue().async([&done, result] { done = result; });
    });
    dispatch.mainQueue().runUntil([&] { return done.has_value(); });
    if (!*done) {
        std::fprintf(stderr, "%s\n", done->error().localizedDescription.c_str());
        return 1;
    }
    std::printf("%f\n", vision.seconds());
    return 0;
}

}  // namespace quillmere::benchmark
