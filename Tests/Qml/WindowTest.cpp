// The roads of a picture and a video through the real window, over everything real.
#include <QClipboard>
#include <QFile>
#include <QMimeData>
#include <QStyleHints>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <utility>

#include "Quillmere/Models/Services/MoreApp.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Tests/Desktop/ImageIO/ExifTool.h"
#include "Tests/Qml/AppUnderTest.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

/// Pictures that are the same to a user: a repainted part may differ in a column of pixels.
bool alike(const QImage& one, const QImage& other) {
    const auto small = [](const QImage& image) {
        return image.scaled(80, 80, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            .convertToFormat(QImage::Format_Grayscale8);
    };
    const QImage a = small(one);
    const QImage b = small(other);
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (std::abs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y))) > 12) return false;
        }
    }
    return true;
}

class WindowTest : public testing::Test {
protected:
    WindowTest() { fs::create_directories(testHome() / "Pictures"); }

    DetailBridge& detail() { return *app.bridge().detail(); }
    void openSample() {
        ASSERT_TRUE(app.click("Photo"));
        ASSERT_TRUE(app.waitUntil([&] { return app.bridge().detail() != nullptr; }));
        ASSERT_TRUE(app.waitUntil([&] { return app.find("Fast Drawing") != nullptr; }));
    }
    std::vector<LibraryAsset> saved() {
        auto& library = *app.composition().platform().photoLibrary();
        EXPECT_TRUE(library.scan());
        std::vector<LibraryAsset> found;
        const auto all = library.assets(std::nullopt, 0, 100);
        for (const LibraryAsset& asset : *all) {
            if (asset.path.parent_path().filename() == "Quillmere") found.push_back(asset);
        }
        return found;
    }
    /// What it shows when nothing moves any more.
    QImage stillWindow() {
        QImage now;
        EXPECT_TRUE(app.waitUntil([&] {
            const QImage before = std::exchange(now, app.window().grabWindow());
            QTest::qWait(200);
            return now == before;
        }));
        return now;
    }
    fs::path writePicture(const std::string& name, const std::string& size = "64x48") {
        const auto file = testHome() / "Pictures" / name;
        outputOf("ffmpeg -v error -y -f lavfi -i testsrc=size=" + size +
                 ":rate=1:duration=1 -frames:v 1 " + file.string());
        return file;
    }

    AppUnderTest& app = AppUnderTest::shared();
};

TEST_F(WindowTest, ASampleIsConvertedComparedAndSavedInEachFormat) {
    openSample();
    ASSERT_TRUE(app.click("Fast Drawing"));
    EXPECT_TRUE(detail().isConverting());
    ASSERT_TRUE(app.waitUntil([&] { return detail().resultSize() == "1804 x 1200"; }));
    ASSERT_TRUE(app.waitUntil([&] { return !detail().isConverting(); }));

    const double width = app.window().width();
    const QPointF knob{(width - 340 - 32) / 2, app.window().height() / 2.0};
    ASSERT_TRUE(app.waitUntil([&] {
        app.drag(knob, knob - QPointF(100, 0));
        return detail().slider() < 0.45;
    }));
    // A double click shows every pixel; another one, all of the picture again, where it was.
    const QImage whole = stillWindow();
    const auto doubleClick = [&] {
        // Else it would be a click more of the one before.
        QTest::qWait(QGuiApplication::styleHints()->mouseDoubleClickInterval() + 100);
        QTest::mouseDClick(&app.window(), Qt::LeftButton, {}, (knob / 2).toPoint());
    };
    doubleClick();
    ASSERT_TRUE(app.waitUntil([&] { return !alike(app.window().grabWindow(), whole); }));
    doubleClick();
    EXPECT_TRUE(app.waitUntil([&] { return alike(app.window().grabWindow(), whole); }));
    for (const char* format : {"JPG", "HEIC", "PNG"}) {
        ASSERT_TRUE(app.click(detail().formatName()));
        ASSERT_TRUE(app.waitUntil([&] { return app.find("Done") != nullptr; }));
        ASSERT_TRUE(app.click(format));
        ASSERT_TRUE(app.click("Done"));
        ASSERT_TRUE(app.waitUntil([&] { return detail().formatName() == format; }));
        ASSERT_TRUE(app.waitUntil([&] { return detail().format() == nullptr; }));
        ASSERT_TRUE(app.click("Save"));
        ASSERT_TRUE(app.waitUntil([&] { return app.bridge().share() != nullptr; }));
        app.press(Qt::Key_Escape);
        ASSERT_TRUE(app.waitUntil([&] { return app.bridge().share() == nullptr; }));
    }
    const auto assets = saved();
    ASSERT_EQ(assets.size(), 3u);
    for (const LibraryAsset& asset : assets) {
        EXPECT_EQ(asset.asset.pixelSize, (PixelSize{1804, 1200})) << asset.path;
    }
}

TEST_F(WindowTest, SeveralPicturesAreConvertedAndSavedOneAfterTheOther) {
    for (const char* name : {"a.png", "b.png", "c.png"}) writePicture(name);
    EXPECT_TRUE(app.composition().platform().photoLibrary()->scan());
    ASSERT_TRUE(app.click("Choose Several"));
    LibraryModel& library = *app.bridge().home()->library();
    ASSERT_TRUE(app.waitUntil([&] { return library.count() == 3; }));
    library.toggle(0);
    library.toggle(2);
    ASSERT_TRUE(app.click("Add (2)"));
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().detail() != nullptr; }));
    ASSERT_TRUE(app.click("Save"));
    ASSERT_TRUE(app.click("OK"));
    EXPECT_EQ(saved().size(), 2u);
}

TEST_F(WindowTest, ACroppedPictureGoesOnAndACancelledOneDoesNot) {
    const auto file = writePicture("a.png", "400x300");
    ASSERT_TRUE(app.click("Crop First"));
    const auto openFile = [&] {
        app.bridge().home()->filePicked(QUrl::fromLocalFile(qt(file.string())));
    };
    openFile();
    ASSERT_TRUE(app.click("Cancel"));
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().home()->cropper() == nullptr; }));
    EXPECT_EQ(app.bridge().detail(), nullptr);
    openFile();
    ASSERT_TRUE(app.click("1:1"));
    ASSERT_TRUE(app.click("Done"));
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().detail() != nullptr; }));
    EXPECT_EQ(detail().sourceSize(), "300 x 300");
}

TEST_F(WindowTest, APictureOpensHoweverItIsBrought) {
    const QUrl url = QUrl::fromLocalFile(qt(writePicture("a.png", "120x80").string()));
    const auto urls = [&] {
        auto data = std::make_unique<QMimeData>();
        data->setUrls({url});
        return data;
    };
    const auto paste = [&] { QTest::keySequence(&app.window(), QKeySequence::Paste); };
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"dropped on the window",
         [&] {
             const auto data = urls();
             QDragEnterEvent enter({90, 90}, Qt::CopyAction, data.get(), Qt::LeftButton, {});
             QCoreApplication::sendEvent(&app.window(), &enter);
             QDropEvent drop({90, 90}, Qt::CopyAction, data.get(), Qt::LeftButton, {});
             QCoreApplication::sendEvent(&app.window(), &drop);
         }},
        {"copied as a file",
         [&] {
             QGuiApplication::clipboard()->setMimeData(urls().release());
             paste();
         }},
        {"copied as pixels",
         [&] {
             QGuiApplication::clipboard()->setImage(QImage(120, 80, QImage::Format_RGB32));
             paste();
         }},
        {"opened with the application", [&] { app.bridge().openFiles({url}); }},
    };
    ASSERT_TRUE(app.waitUntil([&] { return app.window().isExposed(); }));
    for (const auto& [name, bring] : ways) {
        bring();
        ASSERT_TRUE(app.waitUntil([&] { return app.bridge().detail() != nullptr; })) << name;
        ASSERT_TRUE(app.waitUntil([&] { return app.find("Fast Drawing") != nullptr; })) << name;
        EXPECT_EQ(detail().sourceSize(), "120 x 80") << name;
        ASSERT_TRUE(app.waitUntil([&] {
            app.press(Qt::Key_Escape);
            return app.bridge().detail() == nullptr;
        })) << name;
    }
}

TEST_F(WindowTest, WhatTheEditionHasNothingForIsNotOffered) {
    const auto offersNone = [&](const char* screen) {
        std::vector<QString> ways;
        for (const char* key :
             {"ShareToFriends", "MoreApps", "BugReport", "Contact", "WriteReview"}) {
            ways.push_back(app.bridge().text(key));
        }
        for (const MoreApp& other : allMoreApps) ways.push_back(other.title);
        for (const QString& way : ways) {
            EXPECT_EQ(app.find(way), nullptr) << screen << ": " << way.toStdString();
        }
    };
    app.composition().platform().userDefaults().setInteger(4, reviewCountKey);
    app.window().resize(1120, 900);  // where the home screen has room for other applications
    ASSERT_TRUE(app.waitUntil([&] { return app.find("Settings") != nullptr; }));
    offersNone("home");
    ASSERT_TRUE(app.click("Settings"));
    ASSERT_TRUE(app.waitUntil([&] { return app.find("2048px") != nullptr; }));
    offersNone("settings");
    app.press(Qt::Key_Escape);
    app.saveSample();
    ASSERT_TRUE(app.waitUntil([&] { return app.find("Message") != nullptr; }));
    offersNone("share");
}

TEST_F(WindowTest, EachOtherApplicationHasASignOfItsOwn) {
    QFile symbols(":/qt/qml/Quillmere/Common/Symbol.qml");
    ASSERT_TRUE(symbols.open(QIODevice::ReadOnly));
    const QByteArray paths = symbols.readAll();
    for (const MoreApp& other : allMoreApps) {
        EXPECT_EQ(paths.count('"' + QByteArray(other.icon) + "\": "), 1) << other.title;
    }
}

TEST_F(WindowTest, WhatIsNoPictureIsToldAndOpensNothing) {
    const auto file = testHome() / "text.png";
    std::ofstream(file) << "text";
    app.bridge().home()->filePicked(QUrl::fromLocalFile(qt(file.string())));
    ASSERT_TRUE(app.click("OK"));
    app.bridge().home()->open({QUrl::fromLocalFile("/missing.jpg")});
    ASSERT_TRUE(app.click("OK"));
    EXPECT_EQ(app.bridge().detail(), nullptr);
}

TEST_F(WindowTest, AVideoIsConvertedAndSavedAndSuspendCancelsAnother) {
    const auto file = testHome() / "clip.mp4";
    const auto stored = testHome() / "stored.mp4";
    outputOf(
        "ffmpeg -v error -f lavfi -i color=0x40a060:size=320x240:rate=10:duration=3 "
        "-vf format=gbrp,scale=out_color_matrix=bt709,format=yuv420p -colorspace bt709 " +
        stored.string());
    outputOf("ffmpeg -v error -i " + stored.string() + " -c copy -metadata:s:v rotate=90 " +
             file.string());
    // In the place of a picture, with whose end the home screen clears what was before.
    openSample();
    app.bridge().openFiles({QUrl::fromLocalFile(qt(file.string()))});
    ASSERT_TRUE(app.click("Convert"));
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().preview() != nullptr; }));
    const auto shows = [&](QColor colour, int fromTheMiddle) {
        return app.waitUntil([&] {
            const QPoint at(app.window().width() / 2 + fromTheMiddle, app.window().height() / 2);
            const QColor seen = app.window().grabWindow().pixelColor(at);
            return std::abs(seen.red() - colour.red()) < 6 &&
                   std::abs(seen.green() - colour.green()) < 6 &&
                   std::abs(seen.blue() - colour.blue()) < 6;
        });
    };
    EXPECT_TRUE(shows(QColor(0x40, 0xa0, 0x60), 0));
    EXPECT_TRUE(shows(Qt::black, -300)) << "it lies on its side";
    ASSERT_TRUE(app.click("Save"));
    ASSERT_TRUE(app.waitUntil([&] { return saved().size() == 1; }));
    EXPECT_EQ(saved()[0].asset.mediaType, PHAssetMediaType::video);
    ASSERT_TRUE(app.waitUntil([&] { return app.find("Back") != nullptr; }));
    app.press(Qt::Key_Escape);
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().preview() == nullptr; }));

    ASSERT_TRUE(app.click("Fast Photo"));
    ASSERT_TRUE(app.waitUntil([&] { return detail().result().isThere(); }));
    ASSERT_TRUE(app.waitUntil([&] { return !detail().isConverting(); }));
    ASSERT_TRUE(app.click("Convert"));
    ASSERT_TRUE(app.waitUntil([&] { return detail().isLoading(); }));
    app.composition().app().scenePhaseChanged(ScenePhase::background);
    ASSERT_TRUE(app.click("OK"));
    EXPECT_FALSE(detail().isLoading());
    EXPECT_EQ(app.bridge().preview(), nullptr);
}

TEST_F(WindowTest, TheLimitThatTheSettingsChangeDropsWhatWasMadeUnderTheOld) {
    app.bridge().home()->open(
        {QUrl::fromLocalFile(qt(writePicture("big.png", "1400x300").string()))});
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().detail() != nullptr; }));
    EXPECT_TRUE(detail().tooBigNotice().contains("1024"));
    ASSERT_TRUE(app.click("Fast Drawing"));
    ASSERT_TRUE(app.waitUntil([&] { return !detail().isConverting(); }));
    EXPECT_TRUE(detail().result().isThere());
    ASSERT_TRUE(app.click("Size Limit of the Source"));
    ASSERT_TRUE(app.click("2048px"));
    app.press(Qt::Key_Escape);
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().settings() == nullptr; }));
    EXPECT_EQ(detail().tooBigNotice(), "");
    EXPECT_FALSE(detail().result().isThere());
}

}  // namespace
}  // namespace quillmere
