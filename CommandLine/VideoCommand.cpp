#include "CommandLine/VideoCommand.h"

#include <string>
#include <utility>
#include <vector>

#include "CommandLine/OutputCheck.h"
#include "CommandLine/WorkFile.h"
#include "Desktop/Application/HeadlessApplication.h"
#include "Quillmere/Models/Services/LocalizedReason.h"

namespace quillmere::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds redrawInterval{500};

Error noMovieModule() {
    return {"quillmere.commandline", 1,
            "This Quillmere came without its part for videos, quillmere-movies.so. Call ./run in "
            "Quillmere's folder, or install Quillmere again."};
}

}  // namespace

VideoCommand::VideoCommand(DesktopPlatform& platform, Interruption& interruption,
                           const VideoOptions& options)
    : platform_(platform),
      interruption_(interruption),
      options_(options),
      reporter_(options, platform.localization()),
      catalogue_(platform.coreML(), platform.bundles()),
      limit_(platform.userDefaults(), options.limit),
      engine_({limit_, platform.graphics(), platform.coreImage(), platform.vision(), catalogue_,
               platform.dispatch(), platform.analytics(), platform.localization(), console_}) {}

int VideoCommand::run() {
    // Not the file's name, which is the user's own business.
    platform_.crashLog().log("video " + std::string(displayKey(options_.style)));
    const fs::path output = outputPath();
    if (const auto checked = checkOutput(output, {options_.input}, options_.force); !checked) {
        return fail(checked.error());
    }
    // Says it in plain words, where the movie module would speak of its own.
    if (const auto status = fs::status(options_.input); !fs::is_regular_file(status)) {
        const std::string name = options_.input.string();
        return fail(
            outputRefusal(fs::exists(status) ? "%@ is no file." : "There is no file %@.", {name}));
    }
    if (!platform_.avFoundation()) return fail(noMovieModule());

    HeadlessApplication application;
    application.setIdleTimerDisabled(true);
    reporter_.looking();
    const Result<VideoPlan> plan = planInBackground();
    if (!plan) return fail(plan.error());
    reporter_.planned(*plan, output);

    const auto start = platform_.dispatch().now();
    FrameEnhancer enhancer(
        {platform_.coreImage(), platform_.dispatch(), console_,
         [this](EnhanceStyle style, const UIImage& image, const TileEngine::Progress& progress,
                const TileEngine::Completion& completion) {
             engine_.enhanceImage(style, image, progress, completion);
         },
         [this]() -> CIContext& { return engine_.sharedCIContext(); }},
        plan->natural, options_.style);
    WorkFile work(output);
    const Ending ending = encode(*plan, work.path(), enhancer);
    application.setIdleTimerDisabled(false);
    if (ending.error) return fail(*ending.error);
    if (ending.wasCancelled || wasInterrupted_.load()) {
        reporter_.interrupted();
        return interruptedExitCode;
    }
    if (const auto moved = work.commit(options_.force); !moved) return fail(moved.error());
    reporter_.succeeded(*plan, output, enhancer.failedFrames(), platform_.dispatch().now() - start);
    return 0;
}

fs::path VideoCommand::outputPath() const {
    std::error_code ignored;
    const bool intoFolder = options_.output && fs::is_directory(*options_.output, ignored);
    if (options_.output && !intoFolder) return *options_.output;
    const std::string name =
        options_.input.stem().string() + "_" + std::string(displayKey(options_.style)) + ".mov";
    return (intoFolder ? *options_.output : options_.input.parent_path()) / name;
}

Result<VideoPlan> VideoCommand::planInBackground() {
    const auto plan = std::make_shared<std::optional<Result<VideoPlan>>>();
    platform_.dispatch().globalQueue(QualityOfService::userInitiated).async([this, plan] {
        auto made = planVideo({platform_, *platform_.avFoundation(), engine_, catalogue_, console_},
                              options_);
        platform_.dispatch().mainQueue().async(
            [plan, made = std::move(made)] { plan->emplace(made); });
    });
    platform_.dispatch().mainQueue().runUntil([&] { return plan->has_value(); });
    return *std::move(*plan);
}

/// One video that is being encoded; lives on the main thread, but for the fraction.
struct VideoCommand::Job {
    Job(const VideoPlan& plan_, std::chrono::nanoseconds start_) : plan(plan_), start(start_) {}

    const VideoPlan& plan;
    std::chrono::nanoseconds start;
    std::atomic<float> fraction = 0;
    std::optional<Ending> ending;
};

VideoCommand::Ending VideoCommand::encode(const VideoPlan& plan, const fs::path& workPath,
                                          FrameEnhancer& enhancer) {
    DesktopDispatch& dispatch = platform_.dispatch();
    const auto job = std::make_shared<Job>(plan, dispatch.now());
    const auto processor = std::make_shared<VideoProcessor>(VideoProcessor::Ports{
        *platform_.avFoundation(), *platform_.audioToolbox(), platform_.videoToolbox(),
        platform_.coreImage(), dispatch, platform_.fileManager(), platform_.crashLog(),
        platform_.device(), platform_.localization(), console_});
    if (options_.quality) {
        processor->setVideoQuality(static_cast<float>(*options_.quality) / 100);
    }
    processor->setProgressHandler([job](float fraction) {
        // The end of a job goes back to 0, which nobody needs to see.
        if (fraction > job->fraction) job->fraction = fraction;
    });
    processor->setImageProcessingHandler(
        [&enhancer](const CIImageRef& frame) { return enhancer.enhance(frame); });
    processor->setCompletionHandler(
        [job, &dispatch, processor = processor.get()](const std::optional<Error>& error) {
            dispatch.mainQueue().async([job, ending = Ending{error, processor->isForceCancel()}] {
                job->ending = ending;
            });
        });
    processor->startProcessing(plan.asset, workPath, plan.mode, plan.output.width,
                               plan.output.height);
    // Not before: the start of a job clears the mark of a cancel.
    interruption_.cancelBy([this, processor] {
        wasInterrupted_ = true;
        processor->setForceCancel();
    });
    keepRedrawing(job);
    dispatch.mainQueue().runUntil([&] { return job->ending.has_value(); });
    processor->waitForEnd();
    interruption_.cancelBy(nullptr);
    return *job->ending;
}

void VideoCommand::keepRedrawing(const std::weak_ptr<Job>& job) {
    const auto running = job.lock();
    if (!running || running->ending) return;
    reporter_.progress(running->plan, running->fraction,
                       platform_.dispatch().now() - running->start);
    platform_.dispatch().mainQueue().asyncAfter(redrawInterval,
                                                [this, job] { keepRedrawing(job); });
}

int VideoCommand::fail(const Error& error) {
    reporter_.failed(localizedReason(error, platform_.localization()));
    return 1;
}

}  // namespace quillmere::cli
