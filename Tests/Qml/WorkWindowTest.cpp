// Long work in the real window: what lies over it, and every way out of it.
#include <QDir>
#include <QKeySequence>
#include <QMetaObject>
#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Base/FormatString.h"
#include "Quillmere/Views/Detail/ImageConversionProgressView.h"
#include "Tests/Desktop/ImageIO/ExifTool.h"
#include "Tests/Qml/AppUnderTest.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

class WorkWindowTest : public testing::Test {
protected:
    WorkWindowTest() { fs::create_directories(testHome() / "Pictures"); }

    QString text(const char* key) { return app.bridge().text(key); }
    QString text(const char* key, const char* value) {
        return qt(formatString(text(key).toStdString(), {value}));
    }
    bool shows(const QString& words) {
        return app.waitUntil([&] { return app.find(words) != nullptr; });
    }
    bool shows(const char* key) { return shows(text(key)); }
    bool hides(const char* key) {
        return app.waitUntil([&] { return app.find(text(key)) == nullptr; });
    }
    bool click(const char* key) { return app.click(text(key)); }

    void open(const std::vector<fs::path>& files) {
        QList<QUrl> urls;
        for (const fs::path& file : files) urls << QUrl::fromLocalFile(qt(file.string()));
        app.bridge().home()->open(urls);
        ASSERT_TRUE(shows("original"));
    }
    /// Pictures that take a moment each.
    std::vector<fs::path> writePictures(int count, const char* size = "480x480") {
        std::vector<fs::path> files;
        for (int i = 1; i <= count; ++i) {
            files.push_back(testHome() / ("picture" + std::to_string(i) + ".png"));
            outputOf(std::string("ffmpeg -v error -y -f lavfi -i testsrc=size=") + size +
                     ":rate=1:duration=1 -frames:v 1 " + files.back().string());
        }
        return files;
    }
    /// With more frames than any test waits for.
    fs::path writeVideo() {
        const fs::path file = testHome() / "clip.mp4";
        outputOf("ffmpeg -v error -y -f lavfi -i testsrc=size=240x160:rate=10:duration=200 " +
                 file.string());
        return file;
    }
    void startVideo() {
        open({writeVideo()});
        ASSERT_TRUE(click("speedGeneral"));
        ASSERT_TRUE(hides("ConversionTimeNotice"));
        ASSERT_TRUE(click("Convert"));
        ASSERT_TRUE(shows("Cancel"));
    }
    static std::size_t savedPictures() {
        const fs::path folder = testHome() / "Pictures" / "Quillmere";
        if (!fs::exists(folder)) return 0;
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
    }
    static std::size_t cancelsOnRecord() {
        std::stringstream events;
        events << std::ifstream(testHome() / ".local/state/quillmere/events.jsonl").rdbuf();
        const std::string all = events.str();
        std::size_t count = 0;
        for (auto at = all.find("SaveVideoCanceled"); at != std::string::npos;
             at = all.find("SaveVideoCanceled", at + 1)) {
            ++count;
        }
        return count;
    }
    void goHome() {
        app.press(Qt::Key_Escape);
        ASSERT_TRUE(shows("SelectFromFiles"));
    }
    QImage seen() { return app.window().grabWindow(); }
    /// The one item of a kind of QML's.
    QQuickItem* itemOf(const char* kind) {
        const std::function<QQuickItem*(QQuickItem*)> search = [&](QQuickItem* item) {
            if (QByteArray(item->metaObject()->className()).startsWith(kind)) return item;
            for (QQuickItem* child : item->childItems()) {
                if (QQuickItem* found = search(child)) return found;
            }
            return static_cast<QQuickItem*>(nullptr);
        };
        return search(app.window().contentItem());
    }
    static QRectF placeOf(const QQuickItem& item) {
        return item.mapRectToScene({0, 0, item.width(), item.height()});
    }
    static QColor at(const QImage& image, QPointF point) {
        return image.pixelColor(point.toPoint());
    }
    static int distance(QColor a, QColor b) {
        return std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                         std::abs(a.blue() - b.blue())});
    }
    /// Of the overlay's gradient, at a point of what is drawn in it.
    static QColor gradientAt(QRectF place, QPointF point) {
        const QPointF way = point - place.topLeft();
        const double share = (way.x() * place.width() + way.y() * place.height()) /
                             (place.width() * place.width() + place.height() * place.height());
        const auto mix = [&](double from, double to) {
            return static_cast<int>(std::lround(255 * (from + (to - from) * share)));
        };
        const auto from = ImageConversionProgressView::gradientTopLeft;
        const auto to = ImageConversionProgressView::gradientBottomRight;
        return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue)};
    }

    AppUnderTest& app = AppUnderTest::shared();
};

TEST_F(WorkWindowTest, AVideoIsStoppedByTheButtonAndByEscapeWhenTheUserSaysYes) {
    startVideo();
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"the button", [&] { ASSERT_TRUE(click("Cancel")); }},
        {"Escape", [&] { app.press(Qt::Key_Escape); }},
    };
    const std::size_t before = cancelsOnRecord();
    std::size_t stopped = 0;
    for (const auto& [name, stop] : ways) {
        SCOPED_TRACE(name);
        stop();
        ASSERT_TRUE(shows("StopVideoQuestion"));
        app.takePicture("stop");
        app.press(Qt::Key_Escape);
        ASSERT_TRUE(hides("StopVideoQuestion"));
        EXPECT_TRUE(app.find(text("Processing")) || app.find(text("Cancel"))) << "it goes on";
        stop();
        ASSERT_TRUE(click("Stop"));
        ASSERT_TRUE(shows("CanceledToSaveVideo"));
        ASSERT_TRUE(click("OK"));
        ASSERT_TRUE(hides("Cancel"));
        ++stopped;
        EXPECT_TRUE(app.waitUntil([&] { return cancelsOnRecord() == before + stopped; }));
        EXPECT_EQ(app.bridge().preview(), nullptr);
        ASSERT_TRUE(click("Convert"));
        ASSERT_TRUE(shows("Cancel"));
    }
    app.press(Qt::Key_Escape);
    ASSERT_TRUE(click("Stop"));
    ASSERT_TRUE(click("OK"));
    goHome();
}

TEST_F(WorkWindowTest, EveryWayBackLeavesAVideoAndTheNextOneWorks) {
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"the bar's button", [&] { ASSERT_TRUE(click("Back")); }},
        {"the mouse's button",
         [&] { QTest::mouseClick(&app.window(), Qt::BackButton, {}, QPoint(200, 300)); }},
        {"the key", [&] { QTest::keySequence(&app.window(), QKeySequence::Back); }},
    };
    for (const auto& [name, goBack] : ways) {
        SCOPED_TRACE(name);
        startVideo();
        goBack();
        ASSERT_TRUE(shows("StopVideoQuestion"));
        ASSERT_TRUE(click("KeepGoing"));
        ASSERT_TRUE(hides("StopVideoQuestion"));
        EXPECT_NE(app.bridge().detail(), nullptr);
        goBack();
        ASSERT_TRUE(click("Stop"));
        ASSERT_TRUE(shows("SelectFromFiles"));
        // Where no work is under way, nothing is asked.
        open({writePictures(1)});
        goBack();
        ASSERT_TRUE(shows("SelectFromFiles"));
    }
    const fs::path file = testHome() / "short.mp4";
    outputOf("ffmpeg -v error -y -f lavfi -i testsrc=size=240x160:rate=5:duration=1 " +
             file.string());
    open({file});
    ASSERT_TRUE(click("Convert"));
    ASSERT_TRUE(shows("Loop"));
    app.press(Qt::Key_Escape);
    ASSERT_TRUE(shows("original"));
    goHome();
}

TEST_F(WorkWindowTest, ABatchStopsAfterThePictureInWorkAndKeepsWhatIsFinished) {
    constexpr int count = 8;
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"the button", [&] { ASSERT_TRUE(click("Cancel")); }},
        {"Escape", [&] { app.press(Qt::Key_Escape); }},
    };
    open(writePictures(count));
    ASSERT_TRUE(click("speedGeneral"));
    ASSERT_TRUE(hides("ConversionTimeNotice"));
    for (const auto& [name, stop] : ways) {
        SCOPED_TRACE(name);
        const std::size_t before = savedPictures();
        ASSERT_TRUE(click("Save"));
        ASSERT_TRUE(shows(qt(formatString(text("BatchPicture").toStdString(), {"2", "8"}))));
        EXPECT_TRUE(app.find("picture2.png"));
        app.takePicture("batch");
        stop();
        ASSERT_TRUE(shows("StopBatchQuestion"));
        EXPECT_TRUE(shows("StopBatchNotice"));
        ASSERT_TRUE(click("Stop"));
        ASSERT_TRUE(shows("StoppingBatch"));
        ASSERT_TRUE(hides("StoppingBatch"));
        ASSERT_TRUE(app.waitUntil([&] { return app.find(text("Save"))->isEnabled(); }));
        const std::size_t saved = savedPictures() - before;
        EXPECT_GE(saved, 2u);
        EXPECT_LT(saved, std::size_t{count});
        EXPECT_FALSE(app.find(text("CompletedToSave")));
    }
    goHome();
}

TEST_F(WorkWindowTest, APictureThatHoldsABatchIsNamedAndTheUserGetsOut) {
    auto files = writePictures(3, "64x48");
    const fs::path broken = testHome() / "broken.webp";
    outputOf("ffmpeg -v error -y -i " + files[0].string() + " " + broken.string());
    files[1] = broken;
    open(files);
    fs::resize_file(broken, fs::file_size(broken) / 2);
    const std::size_t before = savedPictures();
    for (int turn = 1; turn <= 2; ++turn) {
        ASSERT_TRUE(click("Save"));
        ASSERT_TRUE(shows(text("BatchIsHeld", "broken.webp")));
        app.takePicture("batch-held");
        turn == 1 ? app.press(Qt::Key_Escape) : static_cast<void>(click("Back"));
        ASSERT_TRUE(shows(text("StopHeldBatchNotice", "broken.webp")));
        ASSERT_TRUE(click("Stop"));
        ASSERT_TRUE(turn == 1 ? hides("Cancel") : shows("SelectFromFiles"));
        EXPECT_EQ(savedPictures() - before, static_cast<std::size_t>(turn));
    }
    open({files[0], files[2]});
    ASSERT_TRUE(click("Save"));
    ASSERT_TRUE(shows("CompletedToSave"));
    ASSERT_TRUE(click("OK"));
    ASSERT_TRUE(hides("CompletedToSave"));
    EXPECT_EQ(savedPictures() - before, 4u);
    goHome();
}

TEST_F(WorkWindowTest, ClosingTheWindowAsksWhereItWouldEndWork) {
    const auto close = [&] { return app.window().close(); };
    const auto quit = [&] {
        QTest::keyClick(&app.window(), Qt::Key_Q, Qt::ControlModifier);
        return !app.window().isVisible();
    };
    const auto open_ = [&] {
        app.window().show();
        app.window().requestActivate();
        ASSERT_TRUE(app.waitUntil([&] { return app.window().isActive(); }));
    };
    EXPECT_TRUE(close()) << "there is nothing to lose";
    open_();
    EXPECT_TRUE(quit());
    open_();

    const std::vector<std::pair<const char*, std::function<void()>>> works{
        {"StopConversionQuestion",
         [&] {
             open(writePictures(1, "1000x1000"));
             ASSERT_TRUE(click("speedGeneral"));
             ASSERT_TRUE(shows("ConversionTimeNotice"));
         }},
        {"StopVideoQuestion", [&] { startVideo(); }},
        {"StopBatchQuestion",
         [&] {
             open(writePictures(8));
             ASSERT_TRUE(click("speedGeneral"));
             ASSERT_TRUE(hides("ConversionTimeNotice"));
             ASSERT_TRUE(click("Save"));
             ASSERT_TRUE(shows("Cancel"));
         }},
    };
    for (const auto& [question, work] : works) {
        SCOPED_TRACE(question);
        work();
        EXPECT_FALSE(close());
        ASSERT_TRUE(shows(question));
        ASSERT_TRUE(click("KeepGoing"));
        ASSERT_TRUE(hides(question));
        EXPECT_FALSE(quit());
        ASSERT_TRUE(shows(question));
        ASSERT_TRUE(click("Stop"));
        EXPECT_TRUE(app.waitUntil([&] { return !app.window().isVisible(); }));
        open_();
        // What the closed window would have left to the end of the process.
        ASSERT_TRUE(hides("ConversionTimeNotice"));
        ASSERT_TRUE(hides("StoppingBatch"));
        ASSERT_TRUE(app.waitUntil([&] {
            if (app.find("OK")) app.click("OK");
            app.press(Qt::Key_Escape);
            return app.find(text("SelectFromFiles")) != nullptr;
        }));
    }
}

TEST_F(WorkWindowTest, TheOverlayOfAConversionIsDrawnAsItIsMeant) {
    using View = ImageConversionProgressView;
    open(writePictures(1, "970x970"));  // 16 tiles
    const QPointF corner(4, 4);
    const QColor clear = at(seen(), corner);
    ASSERT_TRUE(click("speedGeneral"));
    const QColor dimmed(static_cast<int>(clear.red() * (1 - View::dimOpacity)),
                        static_cast<int>(clear.green() * (1 - View::dimOpacity)),
                        static_cast<int>(clear.blue() * (1 - View::dimOpacity)));
    // A quarter of the way along the ring's first eighth, and just before its end.
    const auto onRing = [](QRectF ring, double share) {
        const double angle = 2 * M_PI * (share - 0.25);
        const double radius = (View::ringSize - View::ringWidth) / 2;
        return ring.center() + radius * QPointF(std::cos(angle), std::sin(angle));
    };
    QImage image;
    QRectF ring;
    ASSERT_TRUE(app.waitUntil([&] {
        image = seen();
        const QQuickItem* item = itemOf("ProgressRing");
        if (!item) return false;
        ring = placeOf(*item);
        const QPointF early = onRing(ring, 0.03);
        return distance(at(image, corner), dimmed) <= 2 &&
               distance(at(image, early), gradientAt(ring, early)) <= 6;
    })) << "dimmed, and begun";
    app.takePicture("converting");
    // The spring that brings the card may still move it by a fraction of a pixel.
    constexpr double still = 0.5;
    EXPECT_NEAR(ring.width(), View::ringSize, still);
    EXPECT_NEAR(ring.height(), View::ringSize, still);
    const QPointF late = onRing(ring, 0.95);
    const auto inwards = [&](QPointF point) { return point + (ring.center() - point) * 0.25; };
    EXPECT_GT(qGray(at(image, late).rgb()), qGray(at(image, inwards(late)).rgb())) << "the track";

    const QQuickItem* card = itemOf("Material");
    const QQuickItem* title = app.find(text("Processing"));
    const QQuickItem* notice = app.find(text("ConversionTimeNotice"));
    ASSERT_TRUE(card && title && notice);
    const QRectF cardPlace = placeOf(*card);
    const QRectF titlePlace = placeOf(*title);
    EXPECT_NEAR(cardPlace.center().x(), app.window().width() / 2.0, still);
    EXPECT_NEAR(ring.top() - cardPlace.top(), View::cardVerticalPadding, still);
    EXPECT_NEAR(titlePlace.top() - ring.bottom(), View::cardSpacing, still);
    EXPECT_NEAR(placeOf(*notice).top() - titlePlace.bottom(), View::cardSpacing, still);
    EXPECT_EQ(notice->property("leftPadding").toDouble(), View::noticePadding);
    int inGradient = 0;
    for (double y = titlePlace.top(); y < titlePlace.bottom(); ++y) {
        for (double x = titlePlace.left(); x < titlePlace.right(); ++x) {
            inGradient += distance(at(image, {x, y}), gradientAt(titlePlace, {x, y})) <= 6;
        }
    }
    EXPECT_GT(inGradient, 100) << "pixels of the title";

    const QPointF inside(cardPlace.left() + 10, cardPlace.center().y());
    EXPECT_GT(qGray(at(image, {cardPlace.left(), inside.y()}).rgb()),
              qGray(at(image, inside).rgb()))
        << "the outline";
    const QPointF beneath(cardPlace.center().x(), cardPlace.bottom() + 6);
    const QPointF beside(cardPlace.left() - 60, beneath.y());
    EXPECT_LT(qGray(at(image, beneath).rgb()), qGray(at(image, beside).rgb()) - 12) << "the shadow";
    ASSERT_TRUE(app.waitUntil([&] { return distance(at(seen(), corner), clear) == 0; }))
        << "and gone afterwards";
    goHome();
}

TEST_F(WorkWindowTest, TheOverlayOfABatchCoversTheContentAndLeavesTheWayBack) {
    open(writePictures(4));
    const QPointF bar(200, 20);
    const QPointF content(app.window().width() - 6.0, app.window().height() - 6.0);
    const QImage clear = seen();
    ASSERT_TRUE(click("speedGeneral"));
    ASSERT_TRUE(shows("ConversionTimeNotice"));
    ASSERT_TRUE(app.waitUntil([&] { return at(seen(), bar) == at(clear, bar); }));
    ASSERT_TRUE(click("Save"));
    QImage image;
    ASSERT_TRUE(app.waitUntil([&] {
        image = seen();
        const QColor was = at(clear, content);
        return std::abs(at(image, content).red() - was.red() * 0.55) <= 2;
    })) << "dimmed";
    EXPECT_EQ(at(image, bar), at(clear, bar)) << "the way back is free";
    // The pie is full to the right of its top before it is to the left.
    ASSERT_TRUE(app.waitUntil([&] {
        const QQuickItem* pie = itemOf("ProgressPie");
        if (!pie) return false;
        const QRectF place = placeOf(*pie);
        const QImage now = seen();
        const QColor ink = at(now, {place.left() + 1, place.center().y()});
        return distance(at(now, place.center() + QPointF(4, -12)), ink) <= 4 &&
               distance(at(now, place.center() + QPointF(-6, -12)), ink) > 60;
    }));
    app.press(Qt::Key_Escape);
    ASSERT_TRUE(click("Stop"));
    ASSERT_TRUE(hides("StoppingBatch"));
    goHome();
}

}  // namespace
}  // namespace quillmere
