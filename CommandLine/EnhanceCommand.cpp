#include "CommandLine/EnhanceCommand.h"

#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <utility>

#include "CommandLine/LibrarySave.h"
#include "Desktop/Application/HeadlessApplication.h"
#include "Desktop/Photos/FileRecord.h"
#include "Quillmere/Models/Services/AssetRequest.h"
#include "Quillmere/Models/Services/LocalizedReason.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"

namespace quillmere::cli {
namespace {

constexpr std::chrono::milliseconds redrawInterval{500};

Error failure(std::string sentence, std::vector<std::string> values = {}) {
    return {"quillmere.commandline", 1, std::move(sentence), std::move(values)};
}

}  // namespace

EnhanceCommand::EnhanceCommand(DesktopPlatform& platform, Interruption& interruption,
                               const EnhanceOptions& options)
    : platform_(platform),
      interruption_(interruption),
      options_(options),
      outputs_(options, UserDefaultsHelper::imageFormat(platform.userDefaults())),
      reporter_(options),
      catalogue_(platform.coreML(), platform.bundles()),
      limit_(platform.userDefaults(), options.limit),
      engine_({limit_, platform.graphics(), platform.coreImage(), platform.vision(), catalogue_,
               platform.dispatch(), platform.analytics(), platform.localization(),
               platform.console()}),
      save_(platform.dispatch()),
      keepsDate_(
          options.keepDate.value_or(platform.userDefaults().boolForKey(preserveCreationDateKey))),
      keepsLocation_(
          options.keepLocation.value_or(platform.userDefaults().boolForKey(preserveLocationKey))) {}

int EnhanceCommand::run() {
    // The first picture is decoded meanwhile, and no network goes between two pictures.
    const auto network =
        std::async(std::launch::async, [this] { return catalogue_.makeModel(options_.style); });
    HeadlessApplication application;
    if (options_.inputs.size() > 1) application.setIdleTimerDisabled(true);
    for (const std::filesystem::path& input : options_.inputs) {
        // Not the file's name, which is the user's own business.
        platform_.crashLog().log("enhance " + std::string(displayKey(options_.style)) + ", input " +
                                 std::to_string(++number_) + " of " +
                                 std::to_string(options_.inputs.size()));
        runOne(input);
    }
    save_.finish();
    application.setIdleTimerDisabled(false);
    return allDone_ ? 0 : 1;
}

/// One picture that is being enlarged; lives on the main thread.
struct EnhanceCommand::Job {
    std::filesystem::path input;
    std::chrono::nanoseconds start;
    float fraction = 0;
    std::optional<Result<UIImage>> result;
};

void EnhanceCommand::runOne(const std::filesystem::path& input) {
    const Result<OutputFile> output = outputs_.outputFor(input);
    if (!output) return fail(input, output.error());

    // What is not there yet may be the result that is still being saved.
    std::error_code ignored;
    if (!std::filesystem::exists(input, ignored)) save_.finish();

    const auto job = std::make_shared<Job>(Job{input, platform_.dispatch().now(), 0, std::nullopt});
    Result<UIImage> picture = enlargeInBackground(job);
    if (!picture) return fail(input, picture.error());
    save_.start([this, picture = *std::move(picture), output = *output,
                 kept = keptOf(input)] { return save(picture, output, kept); },
                [this, input, output = *output, start = job->start](const Result<PixelSize>& size) {
                    if (!size) return fail(input, size.error());
                    reporter_.succeeded(input, output.path, *size,
                                        platform_.dispatch().now() - start);
                });
}

Result<UIImage> EnhanceCommand::enlargeInBackground(const std::shared_ptr<Job>& job) {
    DesktopDispatch& dispatch = platform_.dispatch();
    dispatch.globalQueue(QualityOfService::userInitiated).async([this, job] {
        Result<UIImage> done = enlarge(job->input, [this, job](float fraction) {
            job->fraction = fraction;
            redraw(*job);
        });
        platform_.dispatch().mainQueue().async(
            [job, done = std::move(done)] { job->result = done; });
    });
    keepRedrawing(job);
    dispatch.mainQueue().runUntil([&] { return job->result.has_value(); });
    return *std::move(job->result);
}

void EnhanceCommand::redraw(const Job& job) {
    const auto elapsed = platform_.dispatch().now() - job.start;
    reporter_.progress(job.input, number_, job.fraction,
                       std::chrono::floor<std::chrono::seconds>(elapsed));
}

void EnhanceCommand::keepRedrawing(const std::weak_ptr<Job>& job) {
    const auto running = job.lock();
    if (!running || running->result) return;
    redraw(*running);
    platform_.dispatch().mainQueue().asyncAfter(redrawInterval,
                                                [this, job] { keepRedrawing(job); });
}

void EnhanceCommand::fail(const std::filesystem::path& input, const Error& error) {
    save_.finish();
    reporter_.failed(input, localizedReason(error, platform_.localization()));
    allDone_ = false;
}

Result<UIImage> EnhanceCommand::enlarge(const std::filesystem::path& input,
                                        const TileEngine::Progress& progress) {
    const auto data = platform_.fileManager().contentsOfFile(input);
    if (!data) return data.error();
    const auto picture = platform_.imageIO().imageWithData(*data);
    if (!picture) return picture.error();

    std::optional<UIImage> result;
    std::optional<std::string> firstFailure;
    engine_.enhanceImage(options_.style, *picture, progress,
                         [&](std::optional<UIImage> made, std::optional<std::string> text) {
                             if (made) result = std::move(made);
                             if (text && !firstFailure) firstFailure = std::move(text);
                         });
    // A picture with holes is no result: one failed tile fails the file.
    if (firstFailure) return failure(*firstFailure);
    if (!result) {
        return failure(
            "The network of the style %@ could not be loaded. Call ./run in Quillmere's folder, "
            "which fetches what is missing, or install Quillmere again.",
            {std::string(displayKey(options_.style))});
    }
    return *std::move(result);
}

ImageMetadataHelper::OriginalMetadata EnhanceCommand::keptOf(
    const std::filesystem::path& input) const {
    if (!keepsDate_ && !keepsLocation_) return {};
    const auto record = readFileRecord(input);
    if (!record) return {};
    return {keepsDate_ ? record->creationDate : std::nullopt,
            keepsLocation_ ? record->location : std::nullopt};
}

Result<PixelSize> EnhanceCommand::save(const UIImage& picture, const OutputFile& output,
                                       const OriginalMetadata& kept) {
    const auto written = output.path.empty()
                             ? saveToLibrary(platform_, picture, output.format, kept)
                             : write(picture, output, kept);
    if (!written) return written.error();
    const Size size = picture.size();
    return PixelSize{static_cast<int>(size.width), static_cast<int>(size.height)};
}

Result<void> EnhanceCommand::write(const UIImage& picture, const OutputFile& output,
                                   const OriginalMetadata& kept) {
    auto encoded = encodePicture(platform_.imageIO(), picture, output.format);
    if (!encoded) return encoded.error();
    const auto data = ImageMetadataHelper::embedMetadata(
        *std::move(encoded), kept.creationDate, kept.location, output.format,
        {platform_.imageMetadata(), platform_.dateFormatter()});
    const auto lock = interruption_.whileWriting();
    return platform_.fileManager().writeFile(
        output.path, data, options_.force ? WriteExisting::replace : WriteExisting::refuse);
}

}  // namespace quillmere::cli
