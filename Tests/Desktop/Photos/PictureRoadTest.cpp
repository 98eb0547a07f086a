// From the library through a conversion back into the library, as the detail screen does it, over
// everything real but the network.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdlib>
#include <fstream>

#include "Desktop/Application/HeadlessApplication.h"
#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/Graphics/DesktopGraphics.h"
#include "Desktop/ImageIO/DesktopImageIO.h"
#include "Desktop/ImageIO/DesktopImageMetadata.h"
#include "Desktop/Localization/SystemDateFormatter.h"
#include "Desktop/Photos/DesktopPhotoLibrary.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Tests/Desktop/ImageIO/ExifTool.h"
#include "Tests/Quillmere/Views/DetailViewModelFixture.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

struct NoReview final : SKStoreReviewController {
    void requestReviewInScene(UIWindowScene&) override {}
};

class PictureRoad : public testing::Test {
protected:
    PictureRoad() {
        std::filesystem::create_directories(folder / "Pictures");
        model = std::make_shared<DetailViewModel>(DetailPorts{
            *dispatch,
            analytics,
            localization,
            userDefaults,
            graphics,
            imageIO,
            {imageMetadata, dateFormatter},
            library,
            avFoundation,
            device,
            application,
            review,
            std::make_shared<DetailAds>(DetailAds::Ports{ads, application, userDefaults, remote,
                                                         analytics, console, *conversionAds},
                                        "save"),
            [](EnhanceStyle, const UIImage& image, const TileEngine::Progress&,
               const TileEngine::Completion& completion) { completion(image, std::nullopt); },
            [](double, double) { return std::nullopt; }});
        userDefaults.integers[std::string(preserveCreationDateKey)] = 1;
        userDefaults.integers[std::string(preserveLocationKey)] = 1;
    }

    /// 40 by 20, to be turned by a quarter, with a date and a place below the sea.
    std::filesystem::path phonePicture() const {
        const auto file = folder / "Pictures" / "phone.jpg";
        outputOf("ffmpeg -v error -f lavfi -i testsrc=size=40x20:rate=1:duration=1 -frames:v 1 " +
                 file.string());
        outputOf(
            "exiftool -q -overwrite_original -DateTimeOriginal='2020:01:02 12:04:05' "
            "-Orientation#=6 -GPSLatitude=33.86 -GPSLatitudeRef=S -GPSLongitude=151.2 "
            "-GPSLongitudeRef=E -GPSAltitude=12 -GPSAltitudeRef='Below Sea Level' "
            "-GPSDateStamp=2020:01:01 -GPSTimeStamp=01:02:03 " +
            file.string());
        return file;
    }

    std::vector<PHPickerResult> picked() {
        EXPECT_TRUE(library.scan());
        std::vector<PHPickerResult> results;
        const auto assets = library.assets(std::nullopt, 0, 1000);
        for (const auto& asset : *assets) {
            results.push_back(*library.pickerResultForAsset(asset.asset.localIdentifier));
        }
        return results;
    }

    /// The fractions told, the end included.
    std::vector<float> runBatch(std::vector<PHPickerResult> results) {
        std::vector<float> fractions;
        const auto observed =
            model->videoProgress.subscribe([&](float fraction) { fractions.push_back(fraction); });
        model->prepare(FakeImageIO::picture({10, 10}), std::nullopt, std::move(results));
        model->selectedStyle.set(EnhanceStyle::high);
        model->saveImages();
        dispatch->mainQueue().runUntil([&] { return model->videoProgress.get() == -1.0F; });
        return fractions;
    }

    struct FakeDevice final : Device {
        SystemVersion systemVersion() const override { return {26, 0}; }
    };

    TemporaryFolder folder;
    CallLog log;
    WorkerPool pool{1};
    std::unique_ptr<DesktopDispatch> dispatch = std::make_unique<DesktopDispatch>();
    DesktopFileManager fileManager;
    DesktopImageIO imageIO{pool};
    DesktopImageMetadata imageMetadata;
    DesktopGraphics graphics;
    SystemDateFormatter dateFormatter;
    FakeConsole console{log};
    DesktopPhotoLibrary library{{*dispatch, fileManager, imageIO, console},
                                {folder / "Pictures", folder / "Videos"},
                                folder / "data"};
    FakeAnalytics analytics{log};
    FakeLocalization localization{log};
    FakeUserDefaults userDefaults{log};
    FakeAVFoundation avFoundation{log, *dispatch};
    FakeDevice device;
    HeadlessApplication application;
    NoReview review;
    FakeAdLibrary ads{log};
    FakeRemoteConfig remote{log, *dispatch};
    std::shared_ptr<InterstitialAdManager> conversionAds =
        std::make_shared<InterstitialAdManager>(ads, console, "conversion");
    std::shared_ptr<DetailViewModel> model;
};

TEST_F(PictureRoad, DateAndPlaceComeFromTheLibraryAndGoBackToIt) {
    phonePicture();
    for (const auto format : UserDefaultsHelper::allImageFormats) {
        const auto results = picked();
        const PHAsset source =
            library.fetchAssetsWithLocalIdentifiers({*results.back().assetIdentifier}).front();
        ASSERT_TRUE(source.creationDate && source.location);
        EXPECT_EQ(source.location->altitude, -12);
        EXPECT_EQ(source.pixelSize, (PixelSize{20, 40}));

        userDefaults.integers[std::string(imageFormatKey)] = static_cast<std::int64_t>(format);
        model->prepare(
            *imageIO.imageWithData(*fileManager.contentsOfFile(folder / "Pictures" / "phone.jpg")),
            std::nullopt, results);
        model->isShowShare.set(false);
        model->saveImage();
        dispatch->mainQueue().runUntil(
            [&] { return model->isShowShare.get() || model->alert.get().has_value(); });
        ASSERT_FALSE(model->alert.get());

        const auto newest = library.assets(PHAssetMediaType::image, 0, 10);
        ASSERT_TRUE(newest);
        for (const auto& asset : *newest) {
            EXPECT_EQ(asset.asset.creationDate, source.creationDate) << asset.path;
            EXPECT_EQ(asset.asset.location, source.location) << asset.path;
            EXPECT_EQ(asset.asset.pixelSize, (PixelSize{20, 40})) << asset.path;
        }
        EXPECT_EQ(newest->size(), 2 + static_cast<std::size_t>(format));
    }
}

TEST_F(PictureRoad, ABatchPassesOverWhatCantBeReadAndSavesTheOthers) {
    phonePicture();
    std::filesystem::copy(folder / "Pictures" / "phone.jpg", folder / "Pictures" / "b.jpg");
    std::filesystem::copy(folder / "Pictures" / "phone.jpg", folder / "Pictures" / "c.jpg");
    auto results = picked();
    ASSERT_EQ(results.size(), 3u);
    const auto middle = library.assetWithIdentifier(*results[1].assetIdentifier);
    std::filesystem::resize_file((**middle).path, 200);
    const auto fractions = runBatch(results);
    EXPECT_EQ(fractions, (std::vector<float>{1 / 3.0F, 2 / 3.0F, -1}));
    EXPECT_FALSE(model->alert.get());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder / "Pictures/Quillmere"), {}),
              2);
}

TEST_F(PictureRoad, ABatchKeepsOnePictureInMemoryAndNotAllOfThem) {
    const auto first = folder / "Pictures" / "0.jpg";
    outputOf("ffmpeg -v error -f lavfi -i testsrc=size=1500x1000:rate=1:duration=1 -frames:v 1 " +
             first.string());
    for (int i = 1; i < 200; ++i) {
        std::filesystem::copy(first, folder / "Pictures" / (std::to_string(i) + ".jpg"));
    }
    const auto results = picked();
    const auto peak = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss / 1024;  // MiB
    };
    const long before = peak();
    runBatch(results);
    EXPECT_EQ(*library.count(PHAssetMediaType::image), 400u);
    // All of them would be 1144 MiB; a sanitizer keeps 256 of what was freed.
    EXPECT_LT(peak() - before, 400) << "of " << before;
    RecordProperty("grown", std::to_string(peak() - before));
}

}  // namespace
}  // namespace quillmere
