#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <thread>
#include <utility>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Quillmere/Models/Services/Notifications.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Views/Home/DocumentPicker.h"
#include "Quillmere/Views/Home/HomeView.h"
#include "Quillmere/Views/Home/ImageCropper.h"
#include "Quillmere/Views/Home/ImagePicker.h"
#include "Quillmere/Views/Home/VideoPicker.h"
#include "Quillmere/Views/Home/WaysIn.h"
#include "Tests/Fakes/FakeAVFoundation.h"
#include "Tests/Fakes/FakeAnalytics.h"
#include "Tests/Fakes/FakeBundles.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeDateFormatter.h"
#include "Tests/Fakes/FakeFileManager.h"
#include "Tests/Fakes/FakeImageIO.h"
#include "Tests/Fakes/FakeItemProvider.h"
#include "Tests/Fakes/FakeLocalization.h"
#include "Tests/Fakes/FakeSharing.h"
#include "Tests/Fakes/FakeUIApplication.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/FirstBytes.h"
#include "Tests/Fakes/ManualClock.h"

namespace quillmere {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

Error lost() { return {"provider", 1, "lost"}; }

class HomeTest : public testing::Test {
protected:
    HomeTest() {
        settings.storeLink = "https://example.org/quillmere";
        settings.makerStorePage = "https://example.org/maker";
        fileManager.files["/bundle/sample_illustration_resized2.png"] =
            FakeImageIO::bytesOf("png 30x20");
        fileManager.files["/bundle/sample_photo_resized3.png"] = FakeImageIO::bytesOf("png 20x20");
        fileManager.files["/home/a.jpg"] = FakeImageIO::bytesOf("jpeg 7x7");
        fileManager.files["/home/a.txt"] = FakeImageIO::bytesOf("hello");
    }

    /// Until what was posted to the main queue by now, and what that posts, has run.
    void pump() {
        for (int round = 0; round < 3; ++round) {
            bool last = false;
            dispatch->mainQueue().async([&] { last = true; });
            dispatch->mainQueue().runUntil([&] { return last; });
        }
    }
    void pumpUntil(const std::function<bool()>& predicate) {
        dispatch->mainQueue().runUntil(predicate);
        pump();
    }

    static double widthOf(const std::optional<UIImage>& image) {
        return image ? image->size().width : 0;
    }

    std::shared_ptr<FakeItemProvider> item(std::optional<Result<UIImage>> image) {
        auto provider = std::make_shared<FakeItemProvider>(*dispatch);
        provider->image = std::move(image);
        return provider;
    }
    PHPickerResult good(int width) {
        return {std::nullopt, item(FakeImageIO::picture({width, 1}))};
    }

    void pick(const std::vector<PHPickerResult>& results) {
        home.showingImagePicker.set(true);
        bool written = false;
        const auto heard = home.tmpInputImage.subscribe(
            [&](const auto&) { dispatch->mainQueue().async([&] { written = true; }); });
        ImagePicker({home.tmpInputImage, home.pickerResults, home.showingImagePicker},
                    home.selectMultiple.get(), imageIO)
            .didFinishPicking(results);
        EXPECT_FALSE(home.showingImagePicker.get());
        pumpUntil([&] { return written; });
    }
    void pickFile(const char* path) {
        DocumentPicker{home.tmpInputImage, home.pickerResults, fileManager, imageIO}
            .didPickDocumentsAtURLs({path});
        pump();
    }

    CallLog log;
    ManualClock* clock = new ManualClock;  // the dispatch's
    std::unique_ptr<DesktopDispatch> dispatch =
        std::make_unique<DesktopDispatch>(std::unique_ptr<Clock>(clock));
    FakeUserDefaults userDefaults{log};
    FakeAnalytics analytics{log};
    FakeLocalization localization{log};
    FakeBundles bundles{log};
    FakeFileManager fileManager;
    FakeImageIO imageIO{log};
    FakeAVFoundation avFoundation{log, *dispatch};
    FakeUIApplication application;
    FakeActivityViewController activities;
    FakeConsole console{log};
    FakeDateFormatter dateFormatter;
    NotificationCenter notificationCenter;
    ProjectSettings settings;
    VideoFileManager videoFiles{
        {fileManager, dateFormatter, console, firstBytes, [] { return Date(); }}};
    std::uint64_t drawn = 0;
    HomeView home{{*dispatch, userDefaults, analytics, localization, bundles, fileManager, imageIO,
                   avFoundation, application, activities, notificationCenter, videoFiles, console,
                   settings, [this] { return drawn; }}};
    std::map<std::filesystem::path, PHPickerResult> library;
    WaysIn ways{{home, *dispatch, fileManager, videoFiles, imageIO, localization,
                 [this](const std::filesystem::path& file) {
                     const auto found = library.find(file);
                     return found == library.end() ? std::nullopt : std::optional(found->second);
                 }}};
};

TEST_F(HomeTest, EachAppearanceCancelsAndCleansAndOnlyTheFirstCountsALaunch) {
    const auto folder = fileManager.temporaryDirectory();
    ASSERT_TRUE(fileManager.createDirectory(folder / "Videos"));
    fileManager.files[folder / "Videos" / "a.mov"] = {};
    userDefaults.integers[std::string(enableCropKey)] = 1;
    int cancels = 0;
    const auto heard = notificationCenter.addObserver(cancelSaveVideo, [&] { ++cancels; });
    for (const std::uint64_t index : {0u, 7u}) {
        drawn = (index << 61) + 5;
        home.appear();
        EXPECT_EQ(home.moreAppsRandomIndex.get(), index);
    }
    EXPECT_EQ(cancels, 2);
    EXPECT_TRUE(home.vm.enableCrop.get());
    EXPECT_EQ(userDefaults.integers[std::string(launchCountKey)], 1);
    EXPECT_FALSE(fileManager.files.contains(folder / "Videos" / "a.mov"));
}

TEST_F(HomeTest, TheCropSettingIsReadAtEachTap) {
    home.cropRowTapped();
    EXPECT_TRUE(home.vm.enableCrop.get());
    userDefaults.integers[std::string(enableCropKey)] = 0;
    home.cropRowTapped();
    EXPECT_TRUE(home.vm.enableCrop.get());
    home.cropRowTapped();
    EXPECT_FALSE(home.vm.enableCrop.get());
}

TEST_F(HomeTest, OneRuleDecidesBetweenCropperAndDetailScreen) {
    enum class Way { one, several, file };
    struct Case {
        Way way;
        bool crop;
        bool opensCropper;
        double width;  // of what goes on
        std::size_t picks;
    };
    for (const Case& c : {
             Case{Way::one, false, false, 5, 1},
             Case{Way::one, true, true, 0, 1},
             Case{Way::several, false, false, 5, 2},
             Case{Way::several, true, false, 5, 2},
             Case{Way::file, false, false, 7, 0},
             Case{Way::file, true, true, 0, 0},
         }) {
        home.inputImage.set(std::nullopt);
        home.inputVideoUrl.set("/home/old.mov");
        pump();
        home.isShowingDetailView.set(false);
        home.showImageCropper.set(false);
        userDefaults.integers[std::string(enableCropKey)] = c.crop;
        switch (c.way) {
            case Way::one:
                home.selectFromLibraryTapped();
                pick({good(5)});
                break;
            case Way::several:
                home.selectMultipleFromLibraryTapped();
                pick({good(5), good(6)});
                break;
            case Way::file:
                pickFile("/home/a.jpg");
                break;
        }
        EXPECT_EQ(home.showImageCropper.get(), c.opensCropper);
        EXPECT_EQ(home.isShowingDetailView.get(), !c.opensCropper);
        EXPECT_EQ(widthOf(home.inputImage.get()), c.width);
        EXPECT_EQ(home.pickerResults.get().value_or(std::vector<PHPickerResult>()).size(), c.picks);
        EXPECT_FALSE(home.inputVideoUrl.get()) << "a video from before";
    }
}

TEST_F(HomeTest, OnlyAFinishedCropGoesOn) {
    userDefaults.integers[std::string(enableCropKey)] = 1;
    pickFile("/home/a.jpg");
    const auto cropper = [this] {
        return ImageCropper(home.tmpInputImage, home.showImageCropper,
                            [this](const UIImage& image) { home.cropped(image); });
    };
    EXPECT_EQ(cropper().picture().size().width, 7);
    cropper().didFinishCancelled();
    pump();
    EXPECT_FALSE(home.showImageCropper.get() || home.isShowingDetailView.get());
    EXPECT_TRUE(home.tmpInputImage.get());

    cropper().didCropToImage(FakeImageIO::picture({3, 3}));
    pump();
    EXPECT_TRUE(home.isShowingDetailView.get());
    EXPECT_EQ(widthOf(home.inputImage.get()), 3);
    EXPECT_FALSE(home.tmpInputImage.get());
    EXPECT_EQ(cropper().picture().size().width, 0) << "an empty picture where there is none";
}

TEST_F(HomeTest, WhatCantBeLoadedOpensNothing) {
    EXPECT_EQ(ImagePicker({home.tmpInputImage, home.pickerResults, home.showingImagePicker}, false,
                          imageIO)
                  .selectionLimit(),
              1);
    ImagePicker picker({home.tmpInputImage, home.pickerResults, home.showingImagePicker}, true,
                       imageIO);
    EXPECT_EQ(picker.selectionLimit(), 0);
    picker.didFinishPicking({});
    EXPECT_FALSE(home.pickerResults.get()) << "a cancel";

    pick({{std::nullopt, item(Result<UIImage>(lost()))}, good(5)});
    EXPECT_THAT(*home.pickerResults.get(), SizeIs(2));
    picker.didFinishPicking({{std::nullopt, item(std::nullopt)}});  // no picture at all
    const auto webP = item(std::nullopt);
    webP->data.emplace(UTTypeWebP, Result<std::vector<std::byte>>(lost()));
    picker.didFinishPicking({{std::nullopt, webP}});
    pickFile("/home/a.txt");
    EXPECT_FALSE(home.tmpInputImage.get());
    EXPECT_FALSE(home.isShowingDetailView.get());
}

TEST_F(HomeTest, AWebPItemIsReadFromItsData) {
    const auto webP = item(FakeImageIO::picture({1, 1}));
    webP->data.emplace(UTTypeWebP, FakeImageIO::bytesOf("webp 9x9"));
    pick({{std::nullopt, webP}});
    EXPECT_EQ(widthOf(home.inputImage.get()), 9);
}

TEST_F(HomeTest, ASampleOpensAtEachTapAndKeepsTheOldPicks) {
    home.pickerResults.set(std::vector<PHPickerResult>{good(1), good(2)});
    home.inputVideoUrl.set("/home/missing.mov");
    pump();
    for (const auto& sample : {HomeView::illustration, HomeView::illustration, HomeView::photo}) {
        home.isShowingDetailView.set(false);
        home.selectMultiple.set(true);
        home.sampleTapped(sample);
        EXPECT_FALSE(home.inputImage.get() || home.inputVideoUrl.get());
        EXPECT_FALSE(home.selectMultiple.get());
        clock->advanceBy(std::chrono::milliseconds(10));
        pump();
        EXPECT_TRUE(home.isShowingDetailView.get());
    }
    EXPECT_EQ(widthOf(home.inputImage.get()), 20);
    EXPECT_THAT(*home.pickerResults.get(), SizeIs(2));
}

TEST_F(HomeTest, AVideoOpensWithItsFirstFrameAndABadOneOnlyStopsTheLoading) {
    avFoundation.movies["/home/a.mov"].still = *FakeImageIO::picture({16, 9}).cgImage();
    home.selectVideoTapped();
    EXPECT_TRUE(home.vm.isLoading.get() && home.showingVideoPicker.get());
    home.showingVideoPicker.set(false);
    EXPECT_FALSE(home.vm.isLoading.get());
    home.inputVideoUrl.set("/home/a.mov");
    pumpUntil([this] { return home.isShowingDetailView.get() && !home.vm.isLoading.get(); });
    EXPECT_EQ(widthOf(home.inputImage.get()), 16);
    EXPECT_EQ(home.inputVideoUrl.get(), "/home/a.mov");

    home.isShowingDetailView.set(false);
    home.inputVideoUrl.set("/home/missing.mov");
    home.vm.isLoading.set(true);
    pumpUntil([this] { return !home.vm.isLoading.get(); });
    EXPECT_FALSE(home.isShowingDetailView.get());
    EXPECT_THAT(log.lines(), Contains(testing::StartsWith("console ")));
}

TEST_F(HomeTest, APickedVideoIsCopiedWhileItIsThere) {
    const auto pickVideo = [this](std::shared_ptr<FakeItemProvider> provider) {
        home.showingVideoPicker.set(true);
        VideoPicker{*dispatch,
                    fileManager,
                    videoFiles,
                    localization,
                    home.inputVideoUrl,
                    home.alert,
                    home.showingVideoPicker}
            .didFinishPicking({{std::nullopt, provider}});
        EXPECT_FALSE(home.showingVideoPicker.get());
    };
    const auto provider = item(std::nullopt);
    pickVideo(provider);  // neither is a file
    provider->types = {"public.movie"};
    pickVideo(provider);
    provider->files.emplace("public.movie", Result<std::filesystem::path>(lost()));
    pickVideo(provider);
    EXPECT_FALSE(home.inputVideoUrl.get() || home.alert.get());

    fileManager.files["/home/holiday.mp4"] = FakeImageIO::bytesOf("movie");
    const auto good = item(std::nullopt);
    good->files.emplace("public.movie", std::filesystem::path("/home/holiday.mp4"));
    pickVideo(good);
    pumpUntil([this] { return home.inputVideoUrl.get().has_value(); });
    EXPECT_EQ(home.inputVideoUrl.get()->extension(), ".mp4");
    EXPECT_TRUE(home.inputVideoUrl.get()->filename().string().starts_with("holiday_"));
    EXPECT_EQ(fileManager.files.at(*home.inputVideoUrl.get()), FakeImageIO::bytesOf("movie"));

    fileManager.files.clear();
    pickVideo(good);
    pumpUntil([this] { return home.alert.get().has_value(); });
    EXPECT_FALSE(home.alert.get()->message());
}

/// A picture that takes until `arrive`, and what became of it.
class SlowPicture {
public:
    SlowPicture(DesktopDispatch& dispatch, int width)
        : gate_(dispatch.makeSemaphore(0)), width_(width) {}

    WaysIn::Decode decode() {
        const auto token = std::make_shared<int>();
        underWay_ = token;
        return [this, token] {
            thread_ = std::this_thread::get_id();
            ++decodes_;
            gate_->wait();
            return FakeImageIO::picture({width_, 1});
        };
    }
    void arrive() {
        gate_->signal();
        while (!underWay_.expired()) std::this_thread::yield();
        EXPECT_EQ(decodes_, 1);
        EXPECT_NE(thread_, std::this_thread::get_id());
    }

private:
    std::shared_ptr<DispatchSemaphore> gate_;
    const int width_;
    std::weak_ptr<int> underWay_;
    std::thread::id thread_;
    int decodes_ = 0;
};

TEST_F(HomeTest, TheMainThreadIsFreeWhileAPictureComes) {
    SlowPicture picture(*dispatch, 4);
    ways.paste(picture.decode());
    pump();
    EXPECT_TRUE(ways.isLoading.get());
    EXPECT_FALSE(home.inputImage.get());
    picture.arrive();
    pump();
    EXPECT_FALSE(ways.isLoading.get());
    EXPECT_EQ(widthOf(home.inputImage.get()), 4);
    EXPECT_FALSE(home.pickerResults.get());
}

TEST_F(HomeTest, WhatComesTakesThePlaceOfWhatIsStillOnItsWay) {
    fileManager.files["/home/b.mp4"] = FakeImageIO::bytesOf("movie");
    const auto movie = item(std::nullopt);
    movie->files.emplace("public.movie", std::filesystem::path("/home/b.mp4"));
    library.emplace("/home/b.mp4", PHPickerResult{std::nullopt, movie});
    library.emplace("/home/c.jpg", good(9));
    avFoundation.movies[videoFiles.makeOutputUrl("b.mp4", ".mp4")].still =
        *FakeImageIO::picture({16, 9}).cgImage();
    struct Case {
        const char* name;
        std::function<void()> come;
        int width;
    };
    const Case cases[] = {
        {"a file", [&] { ways.filePicked("/home/a.jpg"); }, 7},
        {"pictures, one of which is a video",
         [&] {
             ways.open({"/home/c.jpg", "/home/b.mp4"});
         },
         9},
        {"a pick", [&] { ways.picked({good(5)}); }, 5},
        {"another paste", [&] { ways.paste([] {
                                    return FakeImageIO::picture({2, 2});
                                }); }, 2},
        {"a video", [&] { ways.open({"/home/b.mp4"}); }, 16},
        {"a cancel of picks",
         [&] {
             ways.picked({good(5), good(6)});
             ways.cancel();
         },
         0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        home.inputImage.set(std::nullopt);
        home.tmpInputImage.set(std::nullopt);
        SlowPicture old(*dispatch, 1);
        ways.paste(old.decode());
        c.come();
        pumpUntil([&] {
            return !ways.isLoading.get() && (home.inputImage.get().has_value() || c.width == 0);
        });
        old.arrive();
        pump();
        EXPECT_EQ(widthOf(home.inputImage.get()), c.width);
        EXPECT_FALSE(ways.isLoading.get());
    }
    EXPECT_FALSE(home.pickerResults.get());
}

TEST_F(HomeTest, WhatIsNoPictureIsToldAndOpensNothing) {
    localization.texts["FailedToOpenFile"] = "no %@";
    const auto decodeNothing = [] { return Result<UIImage>(Error{"d", 1, "lost"}); };
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { ways.filePicked("/home/a.txt"); }, "no a.txt"},
        {[&] { ways.filePicked("/home/gone.jpg"); }, "no gone.jpg"},
        {[&] { ways.open({"/home/gone.jpg"}); }, "no gone.jpg"},
        {[&] { ways.paste(decodeNothing); }, "lost"},
    };
    for (const auto& [come, message] : cases) {
        home.showingDocumentPicker.set(true);
        home.alert.set(std::nullopt);
        come();
        pumpUntil([&] { return home.alert.get().has_value(); });
        EXPECT_EQ(home.alert.get()->message(), message);
        EXPECT_FALSE(ways.isLoading.get() || home.isShowingDetailView.get()) << message;
    }
    ways.filePicked(std::nullopt);
    EXPECT_FALSE(home.showingDocumentPicker.get());
    ways.picked({{std::nullopt, item(Result<UIImage>(lost()))}});
    pumpUntil([&] { return !ways.isLoading.get(); });
    EXPECT_FALSE(home.isShowingDetailView.get());
}

TEST_F(HomeTest, MoreAppsAreForTallScreensAndOldUsers) {
    struct Case {
        std::int64_t saves;
        double height;
        bool shows;
    };
    for (const Case& c : {Case{4, 801, true}, Case{4, 800, false}, Case{3, 801, false}}) {
        userDefaults.integers[std::string(reviewCountKey)] = c.saves;
        EXPECT_EQ(home.showsMoreApps(c.height), c.shows) << c.saves << " " << c.height;
    }
    home.moreAppsRandomIndex.set(3);
    home.moreAppTapped();
    EXPECT_THAT(log.lines(), Contains("event MoreAppAtHome2 AppIndex=3"));
    EXPECT_THAT(application.opened, ElementsAre("https://example.org/maker/lantern-reader"));
}

TEST_F(HomeTest, SharingNeedsAWindow) {
    home.shareToFriendsTapped();
    EXPECT_THAT(activities.presented, IsEmpty());
    FakeViewController root;
    FakeWindow window(true, &root);
    FakeWindowScene scene;
    scene.shown = {&window};
    application.scenes = {&scene};
    home.shareToFriendsTapped();
    ASSERT_THAT(activities.presented, SizeIs(1));
    EXPECT_EQ(std::get<std::string>(activities.presented[0].items.at(0)),
              "AppName https://example.org/quillmere");
    EXPECT_EQ(activities.presented[0].presenter, &root);
    EXPECT_THAT(log.lines(), Contains("event home_shareApp"));
}

TEST(UniformRandomTest, ADrawThatWouldFavourSomeNumbersIsRejected) {
    std::vector<std::uint64_t> draws{0, std::uint64_t{1} << 63};
    std::size_t used = 0;
    // 2^64 is 1 more than a multiple of 3, so that one draw of them is too many.
    EXPECT_EQ(uniformBelow(3, [&] { return draws.at(used++); }), 1u);
    EXPECT_EQ(used, 2u);
}

}  // namespace
}  // namespace quillmere
