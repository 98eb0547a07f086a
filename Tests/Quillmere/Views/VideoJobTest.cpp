// Video jobs of the detail screen over fakes: what the user sees of each, and in which order.
#include "Quillmere/Models/Services/Notifications.h"
#include "Tests/Awaited.h"
#include "Tests/Fakes/FakeAudioToolbox.h"
#include "Tests/Fakes/FakeCoreImage.h"
#include "Tests/Fakes/FakeCrashLog.h"
#include "Tests/Fakes/FakeFileManager.h"
#include "Tests/Fakes/FakeVideoToolbox.h"
#include "Tests/Fakes/FirstBytes.h"
#include "Tests/Quillmere/Video/FourSecondMovie.h"
#include "Tests/Quillmere/Views/DetailViewModelFixture.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A base of its own, because what an ended job still does on its threads needs them until the
/// dispatch of the other base has ended.
struct VideoFakes {
    CallLog drawing;
    FakeAudioToolbox audioToolbox;
    FakeVideoToolbox scaler;
    FakeCoreImage coreImage{drawing};
    FakeFileManager files;
    FakeCrashLog crashLog;
    NotificationCenter notificationCenter;
    std::unique_ptr<CIContext> context = coreImage.makeContext({});
};

class VideoJobTest : protected VideoFakes, public DetailViewModelTest {
protected:
    VideoJobTest() {
        DetailPorts withVideo = ports();
        withVideo.video.emplace(DetailPorts::Video{
            audioToolbox, scaler, coreImage, files, crashLog, console, notificationCenter,
            [this]() -> CIContext& { return *context; }, videoFiles});
        model = std::make_shared<DetailViewModel>(withVideo);
        avFoundation.movies["/in.mov"] = fourSecondMovie(true);
        model->prepare(FakeImageIO::picture({4, 2}), "/in.mov", std::nullopt);
    }
    void run() {
        model->startVideoSave();
        pumpUntil([this] { return !model->isVideoProcessing.get(); });
        pump();
    }

    Subscription recordFlag(Published<bool>& flag, std::string name) {
        return flag.subscribe([this, name](bool on) { log.record(name + (on ? " on" : " off")); });
    }
    Subscription recordProgress() {
        return model->videoProgress.subscribe(
            [this](float value) { log.record("progress " + std::to_string(value)); });
    }

    Size writtenSize() const {
        const auto movies = avFoundation.written();
        if (movies.empty()) return {};
        const auto& track = movies.begin()->second.at(AVMediaType::video);
        const auto& settings = std::get<AVVideoOutputSettings>(track.settings);
        return {settings.width, settings.height};
    }

    VideoFileManager videoFiles{{files, dateFormatter, console, firstBytes}};
};

TEST_F(VideoJobTest, EachEndTellsItsEventAndFlagsInOrderAndShowsWhatItMust) {
    const Error bad{"fake", 7, "bad"};
    struct Case {
        const char* name;
        std::function<void()> arrange;
        Lines told;
        std::optional<std::string> message;
    };
    const auto limitIsHigh = [&] {
        userDefaults.integers[std::string(resolutionLimitIndexKey)] = 1;
    };
    const auto sourceIsLarge = [&] { model->originalImage = FakeImageIO::picture({1025, 2}); };
    const Lines failure{"event SaveVideoFailure Style=0", "processing off", "progress 0.000000",
                        "converting off"};
    for (const Case& c : {
             Case{"success",
                  [] {},
                  {"event SaveVideoSuccess Style=0", "progress 1.000000", "processing off",
                   "converting off", "preview on"},
                  std::nullopt},
             Case{"cancel",
                  [&] {
                      avFoundation.beforeCopy = [&](AVMediaType type, std::size_t index) {
                          if (type == AVMediaType::video && index == 2)
                              notificationCenter.post(cancelSaveVideo);
                      };
                  },
                  {"event SaveVideoCanceled Style=0", "processing off", "progress 0.000000",
                   "converting off"},
                  "CanceledToSaveVideo"},
             Case{"stop",
                  [&] {
                      avFoundation.beforeCopy = [&](AVMediaType type, std::size_t index) {
                          if (type == AVMediaType::video && index == 2) model->stopWork();
                      };
                  },
                  {"event SaveVideoCanceled Style=0", "processing off", "progress 0.000000",
                   "converting off"},
                  "CanceledToSaveVideo"},
             Case{"failure", [&] { avFoundation.readerError = bad; }, failure, "bad"},
             Case{"small source under the high limit", limitIsHigh, failure, "bad"},
             Case{"large source under the high limit", sourceIsLarge, failure,
                  "bad\nMayBeTooLargeError"},
         }) {
        SCOPED_TRACE(c.name);
        c.arrange();
        const std::size_t start = log.lines().size();
        const auto processing = recordFlag(model->isVideoProcessing, "processing");
        const auto converting = recordFlag(model->isConverting, "converting");
        const auto preview = recordFlag(model->isShowingVideoPreview, "preview");
        const auto progress = recordProgress();
        run();

        Lines told = lines("", start);
        const auto isEnd = [](const std::string& line) { return line.starts_with("event Save"); };
        told.erase(told.begin(), std::find_if(told.begin(), told.end(), isEnd));
        std::erase_if(told, [](const std::string& line) {
            return line.starts_with("localized") || line.starts_with("integerForKey");
        });
        EXPECT_EQ(told, c.told);
        EXPECT_EQ(alertMessage(), c.message);
        EXPECT_FALSE(application.idleTimerDisabled);
        EXPECT_THAT(lines("event Try", start), ElementsAre("event TrySaveVideo Style=0"));
        avFoundation.beforeCopy = {};
    }
    EXPECT_EQ(model->originalVideoSize, (Size{4, 2}));
    EXPECT_EQ(model->outputVideoUrl->parent_path(), "/temporary/Videos");
    EXPECT_EQ(avFoundation.written().count(*model->outputVideoUrl), 1u);
}

TEST_F(VideoJobTest, AJobThatCanNotStartChangesNothingOrSaysWhyAndLeavesTheMachineAwake) {
    struct Case {
        const char* name;
        std::function<void()> arrange;
        std::optional<std::string> message;
        bool tries;
    };
    for (const Case& c : {
             Case{"running", [&] { model->isVideoProcessing.set(true); }, std::nullopt, false},
             Case{"no preview",
                  [&] {
                      model->isVideoProcessing.set(false);
                      model->selectedStyle.set(EnhanceStyle::high);
                  },
                  std::nullopt, false},
             Case{"no factor", [&] { model->selectedStyle.set(EnhanceStyle::rapidHQ); },
                  "VideoSuperResolutionUnsupported", true},
             Case{"no scaler",
                  [&] {
                      factor = 2;
                      scaler.state.isSupported = false;
                  },
                  "VideoSuperResolutionUnsupported", true},
             Case{"old system",
                  [&] {
                      scaler.state.isSupported = true;
                      device.version = {18, 6};
                  },
                  "VideoSuperResolutionUnsupported", true},
             Case{"no video track", [&] { model->originalVideoUrl = "/nothing.mov"; },
                  "FailedToAccessVideoError", true},
         }) {
        SCOPED_TRACE(c.name);
        c.arrange();
        application.idleTimerDisabled = false;
        model->alert.set(std::nullopt);
        const bool was = model->isVideoProcessing.get();
        const std::size_t start = log.lines().size();
        model->startVideoSave();
        EXPECT_EQ(alertMessage(), c.message);
        EXPECT_EQ(application.idleTimerDisabled, c.tries);
        EXPECT_EQ(model->isVideoProcessing.get(), was);
        EXPECT_FALSE(model->isConverting.get());
        EXPECT_EQ(lines("event", start).size(), c.tries ? 1u : 0u);
        EXPECT_THAT(lines("startWriting"), IsEmpty());
    }
}

TEST_F(VideoJobTest, AJobWhoseScreenHasGoneLeavesTheMachineToSleep) {
    Awaited<bool> isInWork;
    Awaited<bool> mayGoOn;
    Awaited<bool> goesOn;
    avFoundation.beforeCopy = [&](AVMediaType type, std::size_t index) {
        if (type != AVMediaType::video || index != 2) return;
        isInWork.set(true);
        goesOn.set(mayGoOn.get());
    };
    model->startVideoSave();
    isInWork.get();
    EXPECT_TRUE(application.idleTimerDisabled);
    notificationCenter.post(cancelSaveVideo);
    model->abandonWork();
    EXPECT_FALSE(application.idleTimerDisabled);
    model.reset();
    mayGoOn.set(true);
    goesOn.get();
    pump();
    EXPECT_THAT(lines("event Save"), IsEmpty());
}

TEST_F(VideoJobTest,
       EveryFrameGoesThroughTheEngineInTheSizeOfThePreviewAndOneThatFailsStaysAsItIs) {
    const UIImage large = FakeImageIO::picture({8, 4});
    convert(EnhanceStyle::high);
    std::vector<Size> seen;
    int calls = 0;
    enhance = [&](EnhanceStyle, const UIImage& image, const TileEngine::Progress&,
                  const TileEngine::Completion& completion) {
        seen.push_back(image.size());
        switch (calls++) {
            case 0:
                return completion(large, std::nullopt);
            case 1:
                completion(std::nullopt, "a tile failed");
                return completion(large, std::nullopt);
            case 2:
                return completion(std::nullopt, std::nullopt);
            default:
                return;  // not even an end
        }
    };
    // A border beyond the track's size, which the engine must not see.
    avFoundation.movies["/in.mov"].tracks[0].naturalSize = {3, 2};
    run();
    EXPECT_EQ(alertMessage(), std::nullopt);
    EXPECT_EQ(writtenSize(), (Size{8, 4}));
    EXPECT_THAT(seen, ElementsAre(Size{3, 2}, Size{3, 2}, Size{3, 2}, Size{3, 2}));
    Lines rendered = drawing.lines();
    std::erase_if(rendered, [](const std::string& line) { return !line.starts_with("render"); });
    EXPECT_THAT(rendered, ElementsAre("render 0,0 8,4", "render 0,0 4,2", "render 0,0 4,2",
                                      "render 0,0 4,2"));
}

TEST_F(VideoJobTest, TheScalerNeedsNoPreviewAndProgressOnlyGoesForwardPercentByPercent) {
    avFoundation.movies["/in.mov"] = fourSecondMovie(true, CVPixelFormat::yCbCr8Planar420);
    model->selectedStyle.set(EnhanceStyle::rapidHQ);
    factor = 4;
    const auto progress = recordProgress();
    run();
    EXPECT_EQ(alertMessage(), std::nullopt);
    EXPECT_EQ(model->rapidHQExpectedSize.get(), (Size{16, 8}));
    EXPECT_EQ(writtenSize(), (Size{16, 8}));
    EXPECT_EQ(scaler.state.processed.size(), 4u);
    const Lines shown = lines("progress");
    EXPECT_GT(shown.size(), 3u);
    EXPECT_TRUE(std::is_sorted(shown.begin(), shown.end()));
    EXPECT_EQ(std::adjacent_find(shown.begin(), shown.end()), shown.end());
}

TEST_F(VideoJobTest, TheLimitsAreToldOnlyForAVideoThatTheScalerCanNotTake) {
    const auto limits = [this]() -> std::vector<double> {
        const auto l = model->rapidHQSizeLimits();
        if (!l) return {};
        return {l->sourceWidth, l->sourceHeight, l->limitWidth, l->limitHeight};
    };
    EXPECT_THAT(limits(), IsEmpty()) << "another style";
    model->selectedStyle.set(EnhanceStyle::rapidHQ);
    EXPECT_THAT(limits(), ElementsAre(4, 2, 1024, 1024)) << "the largest factor";
    factor = 2;
    EXPECT_THAT(limits(), ElementsAre(4, 2, 2048, 2048));
    factor.reset();
    scaler.state.factors = {};
    scaler.state.limit = std::nullopt;
    EXPECT_THAT(limits(), ElementsAre(4, 2, 4096, 4096));
    device.version = {18, 6};
    EXPECT_THAT(limits(), IsEmpty());
    device.version = {26, 0};
    model->rapidHQExpectedSize.set(Size{8, 4});
    EXPECT_THAT(limits(), IsEmpty()) << "it can";
}

}  // namespace
}  // namespace quillmere
