// Jobs of the video processor over movies in memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Quillmere/Models/Video/VideoProcessor.h"
#include "Tests/Awaited.h"
#include "Tests/Fakes/FakeAVFoundation.h"
#include "Tests/Fakes/FakeAudioToolbox.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeCoreImage.h"
#include "Tests/Fakes/FakeCrashLog.h"
#include "Tests/Fakes/FakeFileManager.h"
#include "Tests/Fakes/FakeLocalization.h"
#include "Tests/Fakes/FakeVideoToolbox.h"
#include "Tests/Fakes/ManualClock.h"
#include "Tests/Quillmere/Video/FourSecondMovie.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsSupersetOf;
using Mode = VideoProcessor::Mode;

class VideoProcessorTest : public testing::Test {
protected:
    struct FakeDevice final : Device {
        SystemVersion version{26, 0};
        SystemVersion systemVersion() const override { return version; }
    };

    void makeMovie(bool hasSound, CVPixelFormat format = CVPixelFormat::bgra8) {
        avFoundation.movies["/in.mov"] = fourSecondMovie(hasSound, format);
    }

    /// Runs a job until nothing of it is left, on any thread.
    void run(Mode mode, double width = 4, double height = 2) {
        done = false;
        error.reset();
        Awaited<bool> over;
        // Goes with the last copy of the handler, which the end of the job keeps to its own end.
        const auto isOver = [&over](void*) { over.set(true); };
        processor->setCompletionHandler([this, held = std::shared_ptr<void>(nullptr, isOver)](
                                            const std::optional<Error>& failed) {
            error = failed;
            wasCancelled = processor->isForceCancel();
            done = true;
            dispatch.mainQueue().async([] {});
        });
        processor->startProcessing(avFoundation.assetWithURL("/in.mov"), "/out.mov", mode, width,
                                   height);
        dispatch.mainQueue().runUntil([this] { return done.load(); });
        processor->setCompletionHandler(nullptr);
        over.get();
        bool last = false;
        dispatch.mainQueue().async([&] { last = true; });
        dispatch.mainQueue().runUntil([&] { return last; });
    }

    std::string text() const { return error ? error->localizedDescription : ""; }
    const FakeWrittenTrack& written(AVMediaType type) {
        movies = avFoundation.written();
        return movies["/out.mov"][type];
    }

    CallLog log;
    DesktopDispatch dispatch{std::make_unique<ManualClock>()};
    FakeAVFoundation avFoundation{log, dispatch};
    FakeAudioToolbox audioToolbox;
    FakeVideoToolbox scaler;
    FakeCoreImage coreImage{log};
    FakeFileManager files;
    FakeCrashLog crashLog;
    FakeDevice device;
    FakeLocalization localization{log};
    FakeConsole console{log};
    std::map<std::filesystem::path, FakeWrittenMovie> movies;
    std::atomic<bool> done = false;
    bool wasCancelled = false;
    std::optional<Error> error;
    std::shared_ptr<VideoProcessor> processor = std::make_shared<VideoProcessor>(
        VideoProcessor::Ports{avFoundation, audioToolbox, scaler, coreImage, dispatch, files,
                              crashLog, device, localization, console});
};

TEST_F(VideoProcessorTest, EveryFrameAndSoundArrivesWithItsTimeAndProgressReachesBothTracks) {
    makeMovie(true);
    std::mutex mutex;
    std::vector<float> seen;
    processor->setProgressHandler([&](float value) {
        const std::lock_guard lock(mutex);
        seen.push_back(value);
    });
    processor->setImageProcessingHandler([](const CIImageRef& image) { return image; });
    run(Mode::standard());
    EXPECT_EQ(text(), "");
    ASSERT_EQ(written(AVMediaType::video).samples.size(), 4U);
    EXPECT_EQ(written(AVMediaType::video).samples[3]->presentationTimeStamp(), (MediaTime{3, 1}));
    EXPECT_EQ(written(AVMediaType::audio).samples.size(), 4U);
    const auto sound = std::get<AVAudioOutputSettings>(written(AVMediaType::audio).settings);
    EXPECT_EQ(sound.numberOfChannels, 2U);
    EXPECT_EQ(sound.sampleRate, 44100);
    EXPECT_THAT(crashLog.lines(), testing::UnorderedElementsAre("tryFinish A", "tryFinish D"));
    const std::lock_guard lock(mutex);
    EXPECT_EQ(*std::max_element(seen.begin(), seen.end()), 0.75F * 0.95F + 0.75F * 0.05F);
    EXPECT_EQ(seen[0], 0);
    EXPECT_EQ(seen[1], 0);
}

TEST_F(VideoProcessorTest, OnlyAQuarterTurnInTheStandardModeExchangesTheSides) {
    const std::vector<std::tuple<AffineTransform, Mode, double>> cases{
        {{0, 1, -1, 0, 0, 0}, Mode::standard(), 8},
        {{0, -1, 1, 0, 0, 0}, Mode::standard(), 8},
        {{-1, 0, 0, -1, 0, 0}, Mode::standard(), 4},
        {{}, Mode::standard(), 4},
        {{0, 1, -1, 0, 0, 0}, Mode::superResolution(2), 8},
    };
    for (const auto& [transform, mode, width] : cases) {
        const bool scales = mode.scaleFactor.has_value();
        makeMovie(false, scales ? CVPixelFormat::yCbCr8Planar420 : CVPixelFormat::bgra8);
        avFoundation.movies["/in.mov"].tracks[0].preferredTransform = transform;
        run(mode, scales ? 8 : 4, scales ? 4 : 8);
        EXPECT_EQ(text(), "");
        const auto& track = written(AVMediaType::video);
        EXPECT_EQ(std::get<AVVideoOutputSettings>(track.settings).width, width);
        EXPECT_EQ(track.transform, transform);
    }
}

TEST_F(VideoProcessorTest, FailuresReachTheCompletionOnceAndTheNextJobRuns) {
    struct Case {
        const char* expected;
        std::function<void()> arrange;
        bool scales = false;
    };
    const Error bad{"fake", 7, "bad"};
    const std::vector<Case> cases{
        {"bad", [&] { avFoundation.readerError = bad; }},
        {"bad", [&] { avFoundation.writerError = bad; }},
        {"bad", [&] { avFoundation.startReadingError = bad; }},
        {"bad", [&] { avFoundation.startWritingError = bad; }},
        {"bad", [&] { avFoundation.finishError = bad; }},
        {"The movie failed.", [&] { avFoundation.appendsUntilFailure = 1; }},
        {"The movie failed.", [&] { avFoundation.movies["/in.mov"].tracks[0].failsAfter = 1; }},
        {"FailedToAccessVideoError", [&] { avFoundation.movies["/in.mov"].tracks.clear(); }},
        {"Can't add video output", [&] { avFoundation.refusedOutputs = {AVMediaType::video}; }},
        {"Can't add video input", [&] { avFoundation.refusedInputs = {AVMediaType::video}; }},
        {"Can't add audio input", [&] { avFoundation.refusedOutputs = {AVMediaType::audio}; }},
        {"", [&] { avFoundation.refusedInputs = {AVMediaType::audio}; }},
        {"VideoSuperResolutionRequiresLatestOS",
         [&] {
             device.version = {18, 5};
         },
         true},
        {"VideoSuperResolutionUnsupported", [&] { scaler.state.isSupported = false; }, true},
        {"VideoSuperResolutionConfigurationFailed", [&] { scaler.state.refusedFactors = {2}; },
         true},
        {"bad", [&] { scaler.state.downloadError = bad; }, true},
        {"bad", [&] { scaler.state.startError = bad; }, true},
        {"bad", [&] { scaler.state.processError = bad; }, true},
        {"VideoSuperResolutionConfigurationFailed", [&] { avFoundation.poolIsMissing = true; },
         true},
        {"VideoSuperResolutionConfigurationFailed", [&] { avFoundation.poolIsEmpty = true; }, true},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        const Case& c = cases[i];
        const Mode mode = c.scales ? Mode::superResolution(2) : Mode::standard();
        makeMovie(true, c.scales ? CVPixelFormat::yCbCr8Planar420 : CVPixelFormat::bgra8);
        c.arrange();
        run(mode, c.scales ? 8 : 4, c.scales ? 4 : 2);
        EXPECT_EQ(text(), c.expected);
        EXPECT_EQ(scaler.state.sessionsStarted, scaler.state.sessionsEnded);

        avFoundation.readerError = avFoundation.writerError = std::nullopt;
        avFoundation.startReadingError = avFoundation.startWritingError = std::nullopt;
        avFoundation.finishError = std::nullopt;
        avFoundation.appendsUntilFailure = std::nullopt;
        avFoundation.refusedOutputs = avFoundation.refusedInputs = {};
        avFoundation.poolIsMissing = avFoundation.poolIsEmpty = false;
        device.version = {26, 0};
        scaler.state = {};
    }
    makeMovie(true);
    run(Mode::standard());
    EXPECT_EQ(text(), "");
}

TEST_F(VideoProcessorTest, TheCrashLogTellsTheStepsOfASilentMoviesEndInTheirOrder) {
    const Error bad{"fake", 7, "bad"};
    const char *const noSound = "tryFinish F", *const drained = "tryFinish A",
                      *const stopped = "tryFinish B", *const late = "reader == nil at tryFinish";
    struct Case {
        const char* name;
        std::function<void()> arrange;
        bool scales;
        std::vector<std::string> steps;
    };
    const auto cancelsAtSecond = [&] {
        avFoundation.beforeCopy = [&](AVMediaType, std::size_t index) {
            if (index == 1) processor->setForceCancel();
        };
    };
    const std::vector<Case> cases{
        {"whole", [] {}, false, {noSound, drained}},
        {"scaled", [] {}, true, {noSound, drained}},
        {"no buffer", [&] { avFoundation.poolIsEmpty = true; }, false, {noSound, stopped}},
        {"writer fails", [&] { avFoundation.appendsUntilFailure = 1; }, false, {noSound, stopped}},
        {"reader fails",
         [&] { avFoundation.movies["/in.mov"].tracks[0].failsAfter = 1; },
         false,
         {noSound, drained}},
        {"scaler fails",
         [&] { scaler.state.processError = bad; },
         true,
         {noSound, "tryFinish SuperResolutionError"}},
        {"cancel", cancelsAtSecond, false, {noSound, drained, stopped, late}},
        {"cancel scaled", cancelsAtSecond, true, {noSound, drained, stopped, late}},
    };
    for (const Case& c : cases) {
        makeMovie(false, c.scales ? CVPixelFormat::yCbCr8Planar420 : CVPixelFormat::bgra8);
        c.arrange();
        const auto before = static_cast<std::ptrdiff_t>(crashLog.lines().size());
        run(c.scales ? Mode::superResolution(2) : Mode::standard(), c.scales ? 8 : 4,
            c.scales ? 4 : 2);
        std::vector<std::string> steps = crashLog.lines();
        steps.erase(steps.begin(), steps.begin() + before);
        EXPECT_EQ(steps, c.steps) << c.name;
        avFoundation.beforeCopy = {};
        avFoundation.poolIsEmpty = false;
        avFoundation.appendsUntilFailure = std::nullopt;
        scaler.state = {};
    }
}

TEST_F(VideoProcessorTest, ACancelAtAnyFrameDeletesTheFileAndIsStillToldInTheCompletion) {
    for (const bool scales : {false, true}) {
        for (std::size_t at = 0; at < 4; ++at) {
            SCOPED_TRACE(at);
            makeMovie(at % 2 == 1, scales ? CVPixelFormat::yCbCr8Planar420 : CVPixelFormat::bgra8);
            files.files["/out.mov"] = {};
            avFoundation.beforeCopy = [&, at](AVMediaType type, std::size_t index) {
                if (type == AVMediaType::video && index == at) processor->setForceCancel();
            };
            run(scales ? Mode::superResolution(2) : Mode::standard(), scales ? 8 : 4,
                scales ? 4 : 2);
            EXPECT_EQ(text(), "");
            EXPECT_TRUE(wasCancelled);
            EXPECT_FALSE(processor->isForceCancel());
            EXPECT_FALSE(files.files.contains("/out.mov"));
        }
    }
    EXPECT_THAT(crashLog.lines(), IsSupersetOf({"tryFinish A", "tryFinish F"}));
}

TEST_F(VideoProcessorTest, AFrameWithoutAnAnswerPassesThroughAndAnEmptyPoolKeepsTheFile) {
    makeMovie(false);
    run(Mode::standard());
    EXPECT_EQ(written(AVMediaType::video).samples.size(), 4U);
    processor->setImageProcessingHandler([](const CIImageRef&) { return nullptr; });
    run(Mode::standard());
    EXPECT_EQ(text(), "");
    EXPECT_FALSE(wasCancelled);
}

TEST_F(VideoProcessorTest, TheScalerGetsEachFrameWithTheOneBeforeItAndAnUnknownLengthIsWhole) {
    makeMovie(false, CVPixelFormat::yCbCr8Planar420);
    avFoundation.movies["/in.mov"].duration = {};
    std::atomic<float> largest = 0;
    processor->setProgressHandler([&](float value) { largest = std::max(largest.load(), value); });
    run(Mode::superResolution(2), 8, 4);
    EXPECT_EQ(text(), "");
    EXPECT_EQ(largest, 1.0F);
    const auto& all = scaler.state.processed;
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(all[0].previousFrame, nullptr);
    for (std::size_t i = 1; i < all.size(); ++i) {
        EXPECT_EQ(all[i].previousFrame, all[i - 1].sourceFrame);
        EXPECT_EQ(all[i].previousOutputFrame, all[i - 1].destinationFrame);
    }
}

}  // namespace
}  // namespace quillmere
