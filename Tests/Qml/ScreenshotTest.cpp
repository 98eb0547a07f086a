// Pictures of every screen, for whoever looks after the application's looks; see
// scripts/screenshots. Without a folder to put them into, each screen is only shown: a text that is
// missing or cut off, or a warning of QML's, fails.
#include "Tests/Desktop/ImageIO/ExifTool.h"
#include "Tests/Qml/AppUnderTest.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

class Screenshots : public testing::TestWithParam<QSize> {
protected:
    Screenshots() {
        app.window().resize(GetParam());
        fs::create_directories(testHome() / "Pictures");
    }

    void take(const std::string& name) {
        app.takePicture(name);
        expectWholeTexts(app.window().contentItem(), name);
    }
    static void expectWholeTexts(const QQuickItem* item, const std::string& screen) {
        if (!item->isVisible()) return;
        const QString text = item->property("text").toString();
        if (item->inherits("QQuickText") && item->width() > 0) {
            const bool isWhole = !item->property("truncated").toBool() &&
                                 item->property("contentWidth").toDouble() < item->width() + 1;
            EXPECT_TRUE(isWhole) << screen << ": " << text.toStdString();
        }
        for (const QQuickItem* child : item->childItems()) expectWholeTexts(child, screen);
    }
    /// A text by its key, or as it stands.
    bool shows(const char* key) {
        return app.waitUntil([&] { return app.find(app.bridge().text(key)) != nullptr; });
    }

    AppUnderTest& app = AppUnderTest::shared();
};

INSTANTIATE_TEST_SUITE_P(Sizes, Screenshots,
                         testing::Values(QSize(360, 640), QSize(1120, 780), QSize(1920, 1080)),
                         [](const auto& size) { return "W" + std::to_string(size.param.width()); });

TEST_P(Screenshots, EveryScreenShowsWhatItMust) {
    HomeBridge& home = *app.bridge().home();
    const auto& samples = app.bridge();
    for (int i = 0; i < 12; ++i) {
        const QUrl sample = i % 2 ? samples.samplePhoto() : samples.sampleIllustration();
        fs::copy_file(sample.toLocalFile().toStdString(),
                      testHome() / "Pictures" / (std::to_string(i) + ".png"));
    }
    ASSERT_TRUE(shows("TrySample"));
    take("home");

    home.selectFromLibraryTapped();
    ASSERT_TRUE(app.composition().platform().photoLibrary()->scan());
    ASSERT_TRUE(app.waitUntil([&] { return home.library()->count() == 12; }));
    take("library");
    home.pickCancelled();

    home.setShowSettings(true);
    ASSERT_TRUE(shows("1024px"));
    take("settings");
    app.bridge().settings()->bugReportTapped();
    ASSERT_TRUE(shows("RequestQuestion"));
    take("inquiry");
    app.bridge().settings()->setShowsReport(false);
    home.setShowSettings(false);

    home.cropRowTapped();
    home.filePicked(samples.samplePhoto());
    ASSERT_TRUE(shows("16:9"));
    take("cropper");
    home.cropper()->cancel();
    home.cropRowTapped();

    home.photoTapped();
    ASSERT_TRUE(shows("original"));
    take("detail");
    DetailBridge& detail = *app.bridge().detail();
    detail.styleTapped(rawValue(EnhanceStyle::high));
    ASSERT_TRUE(app.waitUntil([&] { return detail.conversionProgress() > 0.2; }));
    take("converting");
    ASSERT_TRUE(app.waitUntil([&] { return !detail.isConverting(); }));
    detail.styleTapped(rawValue(EnhanceStyle::speedGeneral));
    ASSERT_TRUE(app.waitUntil([&] { return !detail.isConverting() && detail.result().isThere(); }));
    take("result");
    DetailViewModel& vm = detail.view().vm();
    vm.isVideoProcessing.set(true);
    vm.isConverting.set(true);
    vm.videoProgress.set(0.4F);
    vm.batchPicture.set(DetailViewModel::BatchPicture{"IMG_20240101_120000.webp", 2, 5, true});
    ASSERT_TRUE(shows("Cancel"));
    take("batch-held");
    detail.stopTapped();
    ASSERT_TRUE(shows("StopBatchQuestion"));
    take("stop");
    detail.question()->close(1);
    vm.isConverting.set(false);
    vm.isVideoProcessing.set(false);
    vm.batchPicture.set(std::nullopt);
    detail.formatTapped();
    ASSERT_TRUE(shows("HEIC"));
    take("format");
    detail.closeFormat();
    detail.mainButtonTapped();
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().share() != nullptr; }));
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().share()->showsConfetti(); }));
    QTest::qWait(1600);
    take("saved");
    app.bridge().share()->shareImageTapped();
    ASSERT_TRUE(shows("ShareCopy"));
    take("share");
    app.bridge().shareSheet()->close();
    detail.closeShare();
    app.bridge().back();

    const auto clip = testHome() / "clip.mp4";
    outputOf("ffmpeg -v error -y -loop 1 -i " + samples.samplePhoto().toLocalFile().toStdString() +
             " -t 1 -r 5 -vf scale=400:266 -pix_fmt yuv420p " + clip.string());
    home.open({QUrl::fromLocalFile(qt(clip.string()))});
    ASSERT_TRUE(shows("rapidHQ"));
    take("video");
    app.bridge().detail()->styleTapped(rawValue(EnhanceStyle::rapidHQ));
    ASSERT_TRUE(shows("VideoSuperResolutionNoPreviewTitle"));
    take("video-rapid");
    app.bridge().detail()->mainButtonTapped();
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().preview() != nullptr; }));
    QTest::qWait(300);  // for its first frame
    take("preview");
}

}  // namespace
}  // namespace quillmere
