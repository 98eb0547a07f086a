#include "CommandLine/EnhanceCommand.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "Base/Invariant.h"

namespace quillmere::cli {
namespace {

constexpr double lossyQuality = 0.9;
constexpr std::chrono::milliseconds redrawInterval{500};

Error failure(std::string sentence) { return {"quillmere.commandline", 1, std::move(sentence)}; }

}  // namespace

EnhanceCommand::EnhanceCommand(DesktopPlatform& platform, Interruption& interruption,
                               const EnhanceOptions& options)
    : platform_(platform),
      interruption_(interruption),
      options_(options),
      outputs_(options),
      reporter_(options),
      catalogue_(platform.coreML(), platform.bundles()),
      limit_(options.limit),
      engine_({limit_, platform.graphics(), platform.coreImage(), platform.vision(), catalogue_,
               platform.dispatch(), platform.analytics(), platform.localization(),
               platform.console()}) {}

int EnhanceCommand::run() {
    bool allDone = true;
    for (const std::filesystem::path& input : options_.inputs) {
        allDone = runOne(input) && allDone;
    }
    return allDone ? 0 : 1;
}

/// One picture on its way; lives on the main thread.
struct EnhanceCommand::Job {
    std::filesystem::path input;
    std::chrono::nanoseconds start;
    float fraction = 0;
    std::optional<Result<PixelSize>> result;
};

bool EnhanceCommand::runOne(const std::filesystem::path& input) {
    const Result<OutputFile> output = outputs_.outputFor(input);
    if (!output) {
        reporter_.failed(input, output.error().localizedDescription);
        return false;
    }

    DesktopDispatch& dispatch = platform_.dispatch();
    const auto job = std::make_shared<Job>(Job{input, dispatch.now(), 0, std::nullopt});
    dispatch.globalQueue(QualityOfService::userInitiated).async([this, job, output = *output] {
        Result<PixelSize> done = enhance(job->input, output, [this, job](float fraction) {
            job->fraction = fraction;
            redraw(*job);
        });
        platform_.dispatch().mainQueue().async(
            [job, done = std::move(done)] { job->result = done; });
    });
    keepRedrawing(job);
    dispatch.mainQueue().runUntil([&] { return job->result.has_value(); });

    if (!*job->result) {
        reporter_.failed(input, job->result->error().localizedDescription);
        return false;
    }
    reporter_.succeeded(input, output->path, **job->result, dispatch.now() - job->start);
    return true;
}

void EnhanceCommand::redraw(const Job& job) {
    const auto elapsed = platform_.dispatch().now() - job.start;
    reporter_.progress(job.input, job.fraction, std::chrono::floor<std::chrono::seconds>(elapsed));
}

void EnhanceCommand::keepRedrawing(const std::weak_ptr<Job>& job) {
    const auto running = job.lock();
    if (!running || running->result) return;
    redraw(*running);
    platform_.dispatch().mainQueue().asyncAfter(redrawInterval,
                                                [this, job] { keepRedrawing(job); });
}

Result<PixelSize> EnhanceCommand::enhance(const std::filesystem::path& input,
                                          const OutputFile& output,
                                          const TileEngine::Progress& progress) {
    const auto data = platform_.fileManager().contentsOfFile(input);
    if (!data) return data.error();
    const auto picture = platform_.imageIO().imageWithData(*data);
    if (!picture) return picture.error();
    const auto enlarged = enlarge(*picture, progress);
    if (!enlarged) return enlarged.error();
    const auto encoded = encode(*enlarged, output.format);
    if (!encoded) return encoded.error();

    const auto lock = interruption_.whileWriting();
    const auto written = platform_.fileManager().writeFile(
        output.path, *encoded, options_.force ? WriteExisting::replace : WriteExisting::refuse);
    if (!written) return written.error();
    const Size size = enlarged->size();
    return PixelSize{static_cast<int>(size.width), static_cast<int>(size.height)};
}

Result<UIImage> EnhanceCommand::enlarge(const UIImage& picture,
                                        const TileEngine::Progress& progress) {
    std::optional<UIImage> result;
    std::optional<std::string> firstFailure;
    engine_.enhanceImage(options_.style, picture, progress,
                         [&](std::optional<UIImage> made, std::optional<std::string> text) {
                             if (made) result = std::move(made);
                             if (text && !firstFailure) firstFailure = std::move(text);
                         });
    // A picture with holes is no result: one failed tile fails the file.
    if (firstFailure) return failure(*firstFailure);
    if (!result) {
        return failure("The network of the style " + std::string(displayKey(options_.style)) +
                       " could not be loaded. Call ./run in Quillmere's folder, which fetches "
                       "what is missing, or install Quillmere again.");
    }
    return *std::move(result);
}

Result<std::vector<std::byte>> EnhanceCommand::encode(const UIImage& picture,
                                                      PictureFormat format) {
    ImageIO& imageIO = platform_.imageIO();
    switch (format) {
        case PictureFormat::jpg:
            return imageIO.jpegRepresentation(picture, lossyQuality);
        case PictureFormat::heic:
            return imageIO.heicRepresentation(picture, lossyQuality);
        case PictureFormat::png:
            return imageIO.pngRepresentation(picture);
    }
    invariantBroken();
}

}  // namespace quillmere::cli
