// What the detail screen shows in which state, and what its buttons do.
#include "Quillmere/Views/Detail/DetailView.h"
#include "Quillmere/Views/Detail/VideoPreviewViewModel.h"
#include "Tests/Fakes/FakeCrashLog.h"
#include "Tests/Fakes/FakeSharing.h"
#include "Tests/Fakes/FakeVideoToolbox.h"
#include "Tests/Quillmere/Views/DetailViewModelFixture.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class DetailViewTest : public DetailViewModelTest {
protected:
    DetailViewTest() {
        for (const char* key : {"VideoSuperResolutionResolutionFormat", "TooBigImageNotice",
                                "VideoSuperResolutionUnsupportedResolution"}) {
            localization.texts[key] = std::string(key) + " %@ %@ %@ %@";
        }
    }

    std::unique_ptr<DetailView> open(PixelSize size, bool isVideo = false, std::size_t picks = 0) {
        std::optional<std::vector<PHPickerResult>> results;
        if (picks > 0) {
            auto provider = std::make_shared<FakeItemProvider>(*dispatch);
            provider->image = FakeImageIO::picture(size);
            results.emplace(picks, PHPickerResult{std::nullopt, provider});
        }
        std::optional<std::filesystem::path> url;
        if (isVideo) url = "/in.mov";
        auto view = std::make_unique<DetailView>(
            ports(), scaler, DetailInput{FakeImageIO::picture(size), url, results});
        view->appear();
        return view;
    }
    void addMovie(Size size) {
        FakeMovie movie;
        movie.tracks.resize(1);
        movie.tracks[0].naturalSize = size;
        avFoundation.movies["/in.mov"] = movie;
    }

    FakeVideoToolbox scaler;
};

TEST_F(DetailViewTest, ComingBackLosesNoResultAndSeesAnotherChoiceOfTheFormat) {
    const auto view = open({10, 10});
    EXPECT_TRUE(view->showBannerAds.get());
    EXPECT_STREQ(view->formatName(), "JPG");
    view->styleTapped(EnhanceStyle::high);
    pumpUntil([&] { return !view->vm().isConverting.get(); });
    view->dragDivider(30, 100, false);
    view->disappear();
    userDefaults.integers[std::string(imageFormatKey)] = 2;
    view->appear();
    EXPECT_STREQ(view->formatName(), "PNG");
    EXPECT_EQ(sizeOf(view->result()).width, 20);
    EXPECT_EQ(view->sliderPosition.get(), 0.3);
    EXPECT_THAT(lines("event ShowDetail"), SizeIs(1));
}

TEST_F(DetailViewTest, TheDividerFollowsTheFingerAndStopsAtTheEdges) {
    const auto view = open({10, 10});
    EXPECT_EQ(view->sliderPosition.get(), 0.5);
    struct Case {
        double x;
        bool rightToLeft;
        double position;
    };
    for (const Case& c : {Case{50, false, 0.25}, Case{-9, false, 0}, Case{999, false, 1},
                          Case{50, true, 0.75}, Case{-9, true, 1}, Case{999, true, 0}}) {
        view->dragDivider(c.x, 200, c.rightToLeft);
        EXPECT_EQ(view->sliderPosition.get(), c.position) << c.x;
    }
    view->dragDivider(5, 0, false);
    EXPECT_EQ(view->sliderPosition.get(), 0) << "before there is any width";
}

TEST_F(DetailViewTest, EachStateHasItsCover) {
    struct Case {
        bool converting;
        bool processing;
        DetailView::Cover cover;
        const char* title;
    };
    for (const Case& c : {
             Case{false, false, DetailView::Cover::none, "Converting"},
             Case{true, false, DetailView::Cover::conversion, "Converting"},
             Case{true, true, DetailView::Cover::loading, ""},
         }) {
        const auto view = open({10, 10});
        view->vm().isVideoProcessing.set(c.processing);
        view->vm().isConverting.set(c.converting);
        view->vm().videoProgress.set(0.25F);
        EXPECT_EQ(view->cover(), c.cover);
        EXPECT_EQ(view->loadingTitle(), c.title);
        EXPECT_EQ(view->progressDisplay.get(), c.processing ? std::optional(0.25F) : std::nullopt);
        view->disappear();
        EXPECT_FALSE(view->progressDisplay.get());
    }
}

TEST_F(DetailViewTest, WorkThatWouldEndIsAskedAboutOnce) {
    using Picture = DetailViewModel::BatchPicture;
    localization.texts["StopHeldBatchNotice"] = "without %@";
    localization.texts["BatchIsHeld"] = "waits for %@";
    localization.texts["BatchPicture"] = "%@ of %@";
    struct Case {
        bool isVideo;
        bool converting;
        bool processing;
        std::optional<Picture> picture;
        std::optional<std::string> asks;
        std::string notice;
        std::vector<std::string> lines;
    };
    for (const Case& c : {
             Case{false, false, false, {}, {}, "", {}},
             Case{false, true, false, {}, "StopConversionQuestion", "StopNotice", {}},
             Case{true, true, true, {}, "StopVideoQuestion", "StopNotice", {}},
             Case{false, true, true, {}, "StopBatchQuestion", "StopBatchNotice", {}},
             Case{false,
                  true,
                  true,
                  Picture{"a.jpg", 1, 3, false},
                  "StopBatchQuestion",
                  "StopBatchNotice",
                  {"1 of 3", "a.jpg"}},
             Case{false,
                  true,
                  true,
                  Picture{"b.webp", 2, 3, true},
                  "StopBatchQuestion",
                  "without b.webp",
                  {"waits for b.webp"}},
             Case{false,
                  true,
                  true,
                  Picture{"", 2, 3, true},
                  "StopBatchQuestion",
                  "without 2 of 3",
                  {"waits for 2 of 3"}},
         }) {
        const auto view = open({10, 10}, c.isVideo);
        DetailViewModel& vm = view->vm();
        vm.isVideoProcessing.set(c.processing);
        vm.isConverting.set(c.converting);
        vm.batchPicture.set(c.picture);
        EXPECT_EQ(view->progressLines(), c.lines);
        int gone = 0;
        const auto go = [&] { return view->asksFirst([&] { ++gone; }); };
        ASSERT_EQ(go(), c.asks.has_value());
        if (!c.asks) continue;
        const auto answer = [&](std::size_t button) {
            const AlertTypes question = *view->question.get();
            EXPECT_EQ(question.title(), *c.asks);
            EXPECT_EQ(question.message(), c.notice);
            view->question.set(std::nullopt);
            if (const auto action = question.buttons().at(button).action) action();
        };
        answer(1);
        EXPECT_FALSE(view->isStopping.get() || gone > 0);
        EXPECT_TRUE(go()) << "again";
        answer(0);
        EXPECT_TRUE(view->isStopping.get() && gone == 1);
        EXPECT_FALSE(go()) << "the user has said yes";
        EXPECT_THAT(view->progressLines(),
                    ElementsAre(c.isVideo ? "StoppingVideo" : "StoppingBatch"));
        vm.isConverting.set(false);
        EXPECT_FALSE(view->isStopping.get());
        vm.isConverting.set(true);
        EXPECT_TRUE(go()) << "about the next work";
        vm.isConverting.set(false);
        EXPECT_FALSE(view->question.get()) << "it has ended by itself";
    }
}

TEST_F(DetailViewTest, EitherSideOverTheLimitIsNoticed) {
    struct Case {
        PixelSize size;
        std::int64_t index;
        bool notices;
    };
    for (const Case& c : {Case{{1024, 1024}, 0, false}, Case{{1025, 10}, 0, true},
                          Case{{10, 1025}, 0, true}, Case{{1025, 10}, 1, false}}) {
        userDefaults.integers[std::string(resolutionLimitIndexKey)] = c.index;
        const auto notice = open(c.size)->tooBigNotice();
        EXPECT_EQ(notice.has_value(), c.notices) << c.size.width;
        EXPECT_TRUE(!notice || notice->starts_with("TooBigImageNotice 1024 ")) << *notice;
    }
}

TEST_F(DetailViewTest, OnlyARealChangeOfTheLimitDropsTheResults) {
    const auto view = open({10, 10});
    view->styleTapped(EnhanceStyle::high);
    pumpUntil([&] { return !view->vm().isConverting.get(); });
    EXPECT_EQ(view->sourceSize() + " to " + view->resultSize(), "10 x 10 to 20 x 20");
    view->resolutionLimitTapped();
    view->showingSettingsView.set(false);
    EXPECT_TRUE(view->result());
    view->resolutionLimitTapped();
    userDefaults.integers[std::string(resolutionLimitIndexKey)] = 1;
    view->showingSettingsView.set(false);
    EXPECT_EQ(view->sizeLimit.get(), 2048);
    EXPECT_FALSE(view->result());
    EXPECT_THAT(view->linesWithoutResult(), ElementsAre("Unconverted"));
}

TEST_F(DetailViewTest, TheFastStyleOfVideosTellsWhatItWillDoOrWhyNot) {
    struct Case {
        Size size;
        std::optional<int> factor;
        std::vector<std::string> says;
    };
    for (const Case& c : {
             Case{{640, 360},
                  4,
                  {"VideoSuperResolutionNoPreviewTitle",
                   "VideoSuperResolutionResolutionFormat 2560 1440 %@ %@",
                   "VideoSuperResolutionWillApplyOnSave"}},
             Case{{0, 0},
                  std::nullopt,
                  {"VideoSuperResolutionNoPreviewTitle",
                   "VideoSuperResolutionUnsupportedResolutionGeneric"}},
         }) {
        if (c.size.width > 0) addMovie(c.size);
        factor = c.factor;
        const auto view = open({64, 36}, true);
        view->styleTapped(EnhanceStyle::rapidHQ);
        EXPECT_EQ(view->linesWithoutResult(), c.says);
        avFoundation.movies.clear();
    }
}

TEST_F(DetailViewTest, TheRowsOfStylesWarnAndSelect) {
    EXPECT_THAT(open({10, 10})->styleButtons(), SizeIs(3));
    const auto view = open({10, 10}, true);
    const auto rows = view->styleButtons();
    ASSERT_THAT(rows, SizeIs(4));
    EXPECT_TRUE(rows[0][0].isSelected);
    EXPECT_EQ(rows[0][0].color, StyleLabelColor::white);
    EXPECT_EQ(rows[1][0].color, StyleLabelColor::gray);
    EXPECT_EQ(rows[2][0].text, "speedGeneral");
    EXPECT_EQ(rows[3][0].style, EnhanceStyle::rapidHQ);
}

TEST_F(DetailViewTest, TheMainButtonDoesWhatTheInputAsksFor) {
    EXPECT_STREQ(open({10, 10}, true)->mainButtonKey(), "Convert");
    const auto one = open({10, 10}, false, 1);
    EXPECT_STREQ(one->mainButtonKey(), "Save");
    one->mainButtonTapped();
    pumpUntil([&] { return one->vm().isShowShare.get(); });
    EXPECT_TRUE(one->showsShareView());
    one->shareBackgroundTapped();
    EXPECT_FALSE(one->vm().isShowShare.get());

    const auto several = open({10, 10}, false, 2);
    several->mainButtonTapped();
    EXPECT_EQ(several->cover(), DetailView::Cover::loading);
    pumpUntil([&] { return several->cover() == DetailView::Cover::none; });
    EXPECT_THAT(library.savedAssets(), SizeIs(3));
}

TEST_F(DetailViewTest, TheFormatIsReadAgainWhenItsSheetCloses) {
    const auto view = open({10, 10});
    EXPECT_STREQ(view->formatName(), "JPG");
    view->formatTapped();
    userDefaults.integers[std::string(imageFormatKey)] = 2;
    EXPECT_STREQ(view->formatName(), "JPG");
    view->showingImageFormatSelection.set(false);
    EXPECT_STREQ(view->formatName(), "PNG");
    EXPECT_FALSE(open({10, 10}, true)->showsFormatButton());
    const std::size_t before = log.lines().size();
    view->screenshotTaken();
    EXPECT_THAT(lines("event ", before),
                ElementsAre("event ScreenshotTaken", "event ConvertAdsNotLoaded"));
}

class VideoPreviewTest : public DetailViewModelTest {
protected:
    std::shared_ptr<VideoPreviewViewModel> preview() {
        return std::make_shared<VideoPreviewViewModel>(
            VideoPreviewViewModel::Ports{*dispatch, analytics, localization, userDefaults,
                                         avFoundation, library, application, activities, crashLog},
            "/out.mov");
    }
    FakeActivityViewController activities;
    FakeCrashLog crashLog;
};

TEST_F(VideoPreviewTest, EachWayASaveCanEndTellsTheUserOnce) {
    const auto error = [](int code) { return Error{PHPhotosErrorDomain, code, "No."}; };
    const std::string hinted = "No.\nMayBeTooLargeError";
    using Errors = std::vector<std::optional<Error>>;
    struct Case {
        Errors ends;
        double longerSide;
        std::int64_t limitIndex;
        std::optional<std::string> title;
        std::optional<std::string> message;
    };
    library.isMovie = [](const auto&) { return true; };
    for (const Case& c : {
             Case{{}, 4000, 1, {}, {}},
             Case{{error(3305)}, 1024, 1, "Error", "No."},
             Case{{error(3305)}, 1025, 1, "Error", hinted},
             Case{{error(3305)}, 4000, 0, "Error", "No."},
             Case{{error(3302), std::nullopt}, 4000, 1, "CompletedToSave", {}},
             Case{{error(3302), error(3311)}, 4000, 1, "Error", hinted},
             Case{{error(3302), error(3302)}, 0, 1, "Error", "No."},
         }) {
        FakeMovie movie;
        if (c.longerSide > 0) {
            movie.tracks.resize(1);
            movie.tracks[0].naturalSize = {2, c.longerSide};
        }
        avFoundation.movies["/out.mov"] = movie;
        userDefaults.integers[std::string(resolutionLimitIndexKey)] = c.limitIndex;
        for (const auto& end : c.ends) library.failNext(end);
        const auto view = preview();
        view->saveTapped();
        pumpUntil([&] { return view->alert.get() || view->confirmation.get(); });
        const auto alert = view->alert.get();
        EXPECT_EQ(alert ? std::optional(alert->title()) : std::nullopt, c.title);
        EXPECT_EQ(alert ? alert->message() : std::nullopt, c.message);
        EXPECT_EQ(view->confirmation.get().has_value(), !c.title);
    }
}

TEST_F(VideoPreviewTest, EachTapOnShareIsCounted) {
    const auto view = preview();
    view->shareTapped();
    EXPECT_THAT(activities.presented, IsEmpty()) << "without a window";
    FakeViewController root;
    FakeWindow window(true, &root);
    scene.shown = {&window};
    view->shareTapped();
    ASSERT_THAT(activities.presented, SizeIs(1));
    EXPECT_EQ(std::get<std::filesystem::path>(activities.presented[0].items.at(0)), "/out.mov");
    EXPECT_THAT(lines("event saved_shareVideo"), SizeIs(2));
}

}  // namespace
}  // namespace quillmere
