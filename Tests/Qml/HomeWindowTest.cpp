// The ways into the real window, by mouse and key: the file picker, a slow disk, the clipboard. And
// what is seen of the user's screen and language.
#include <fcntl.h>
#include <unistd.h>

#include <QClipboard>
#include <QDir>
#include <QMimeData>
#include <QScreen>
#include <algorithm>
#include <csignal>
#include <fstream>
#include <map>
#include <memory>

#include "Base/FormatString.h"
#include "Desktop/Localization/UserLanguage.h"
#include "Desktop/Qml/Platform/QtCharacters.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Tests/Desktop/ImageIO/ExifTool.h"
#include "Tests/Qml/AppUnderTest.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

/// A file on a disk that gives nothing to anybody until it is let go.
class SlowFile {
public:
    explicit SlowFile(const fs::path& file) : descriptor_(open(file.c_str(), O_RDWR | O_CLOEXEC)) {
        std::signal(SIGIO, SIG_IGN);  // the system's word that somebody waits
        EXPECT_EQ(fcntl(descriptor_, F_SETLEASE, F_WRLCK), 0) << file << " can't be leased";
    }
    ~SlowFile() { letGo(); }
    void letGo() {
        if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
    }

private:
    int descriptor_;
};

class HomeWindowTest : public testing::Test {
protected:
    /// Of a maker that has other applications.
    static ProjectSettings edition() {
        ProjectSettings edition;
        edition.makerStorePage = "https://store.example/maker/";
        return edition;
    }
    fs::path write(const std::string& name, const std::string& size) {
        const auto file = testHome() / "camera" / name;
        fs::create_directories(file.parent_path());
        outputOf("ffmpeg -v error -y -f lavfi -i testsrc=size=" + size +
                 ":rate=1:duration=1 -frames:v 1 -f image2 -c:v png " + file.string());
        return file;
    }
    /// Copies it elsewhere, and pastes it here.
    void paste(std::unique_ptr<QMimeData> data) {
        QGuiApplication::clipboard()->setMimeData(data.release());
        QTest::keySequence(&app.window(), QKeySequence::Paste);
    }
    void pasteFile(const fs::path& file) {
        auto data = std::make_unique<QMimeData>();
        data->setUrls({QUrl::fromLocalFile(qt(file.string()))});
        paste(std::move(data));
    }
    QString text(const char* key) { return app.bridge().text(key); }
    bool sees(const QString& text) {
        return app.waitUntil([&] { return app.find(text) != nullptr; });
    }
    bool goesBack() {
        return app.waitUntil([&] {
            app.press(Qt::Key_Escape);
            return app.find(text("TrySample")) != nullptr;
        });
    }
    static QQuickItem* firstOf(QQuickItem* item, const char* type) {
        if (item->inherits(type) && item->isVisible()) return item;
        for (QQuickItem* child : item->childItems()) {
            if (QQuickItem* found = firstOf(child, type)) return found;
        }
        return nullptr;
    }

    /// What the sheet around it says.
    static QStringList textsBeside(const QQuickItem* item) {
        QStringList texts;
        for (const QQuickItem* beside : item->parentItem()->childItems()) {
            texts << beside->property("text").toString();
        }
        return texts;
    }

    AppUnderTest& app = AppUnderTest::shared(edition());
};

TEST_F(HomeWindowTest, TheFilePickerShowsPicturesOfAnyCaseAndAllFilesOnDemand) {
    const auto picture = write("IMG_0001.JPG", "64x48");
    write("Mixed.Png", "8x8");
    std::ofstream(testHome() / "camera" / "notes.txt") << "text";
    QDir::setCurrent(qt(picture.parent_path().string()));
    ASSERT_TRUE(app.waitUntil([&] { return app.window().isExposed(); }));
    ASSERT_TRUE(app.click(text("SelectFromFiles")));
    ASSERT_TRUE(sees("IMG_0001.JPG"));
    EXPECT_TRUE(sees("Mixed.Png"));
    EXPECT_EQ(app.find("notes.txt"), nullptr);

    QQuickItem* filters = firstOf(app.window().contentItem(), "QQuickComboBox");
    ASSERT_NE(filters, nullptr);
    app.takePicture("file-picker");
    QTest::mouseClick(&app.window(), Qt::LeftButton, {},
                      AppUnderTest::middleOf(*filters).toPoint());
    ASSERT_TRUE(app.click(text("AllFiles") + " (*)"));
    EXPECT_TRUE(sees("notes.txt"));

    SlowFile slow(picture);
    ASSERT_TRUE(app.click("IMG_0001.JPG"));
    ASSERT_TRUE(app.click("Open"));
    EXPECT_TRUE(sees(text("Loading"))) << "while the disk is slow";
    slow.letGo();
    ASSERT_TRUE(sees(text("original")));
    EXPECT_EQ(app.bridge().detail()->sourceSize(), "64 x 48");
    EXPECT_TRUE(goesBack());
}

TEST_F(HomeWindowTest, ASlowFileCanBeGivenUpAndGivesPlaceToAnother) {
    const auto file = write("slow.png", "120x80");
    const auto other = write("other.png", "60x40");
    SlowFile slow(file);
    ASSERT_TRUE(app.waitUntil([&] { return app.window().isExposed(); }));
    for (const bool byMouse : {true, false}) {
        pasteFile(file);
        ASSERT_TRUE(sees(text("Loading")));
        app.takePicture("loading");
        byMouse ? void(app.click(text("Cancel"))) : app.press(Qt::Key_Escape);
        ASSERT_TRUE(app.waitUntil([&] { return app.find(text("Loading")) == nullptr; }));
        EXPECT_TRUE(sees(text("SelectFromFiles"))) << "the home screen is there again";
    }
    pasteFile(file);
    ASSERT_TRUE(sees(text("Loading")));
    pasteFile(other);
    ASSERT_TRUE(sees(text("original")));
    slow.letGo();
    EXPECT_TRUE(goesBack());
    pasteFile(file);
    ASSERT_TRUE(sees(text("original")));
    EXPECT_EQ(app.bridge().detail()->sourceSize(), "120 x 80");
    EXPECT_TRUE(goesBack());
}

TEST_F(HomeWindowTest, BytesOfAPictureOnTheClipboardOpenAndDamagedOnesAreTold) {
    std::ifstream file(write("pasted.png", "50x30"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const auto offer = [&](const std::string& contents) {
        auto data = std::make_unique<QMimeData>();
        data->setData("image/png", QByteArray::fromStdString(contents));
        paste(std::move(data));
    };
    ASSERT_TRUE(app.waitUntil([&] { return app.window().isExposed(); }));
    offer(bytes.substr(0, bytes.size() / 2));
    ASSERT_TRUE(app.click("OK"));
    offer(bytes);
    ASSERT_TRUE(sees(text("original")));
    EXPECT_EQ(app.bridge().detail()->sourceSize(), "50 x 30");
    EXPECT_TRUE(goesBack());
}

// Runs on a low screen, and on a high one as well.
TEST_F(HomeWindowTest, TheMakersApplicationsAreSeenOnAHighScreenByWhoHasSaved) {
    const bool high = QGuiApplication::primaryScreen()->size().height() > 800;
    auto& settings = app.composition().platform().userDefaults();
    for (const int height : {640, 1000}) {
        app.window().resize(700, height);
        settings.setInteger(3, reviewCountKey);
        ASSERT_TRUE(app.click(text("SamplePhoto")));
        ASSERT_TRUE(sees(text("original")));
        ASSERT_TRUE(goesBack());
        QTest::qWait(0);  // a turn for what follows from it
        EXPECT_EQ(app.find(text("MoreApps")), nullptr) << height;
        ASSERT_TRUE(app.click(text("SamplePhoto")));
        ASSERT_TRUE(sees(text("original")));
        settings.setInteger(4, reviewCountKey);
        ASSERT_TRUE(goesBack());
        EXPECT_TRUE(app.waitUntil([&] { return (app.find(text("MoreApps")) != nullptr) == high; }))
            << height;
    }
}

// Runs in English, and in Japanese and German as well.
TEST_F(HomeWindowTest, AnErrorOfTheLibraryIsToldInTheUsersLanguage) {
    const std::map<std::string_view, const char*> beginnings{
        {"en", "Nothing can be saved in %@: "},
        {"de", "In %@ kann nichts gesichert werden: "},
        {"ja", "%@ に保存できません（"}};
    fs::remove_all(testHome() / "Pictures");
    std::ofstream(testHome() / "Pictures") << "what has taken the folder's name";
    ASSERT_TRUE(app.click(text("SamplePhoto")));
    ASSERT_TRUE(app.click(text("Save")));
    QQuickItem* ok = nullptr;
    ASSERT_TRUE(app.waitUntil([&] { return (ok = app.find(text("OK"))) != nullptr; }));
    app.takePicture("error");
    const std::string told =
        formatString(beginnings.at(userLanguage()), {(testHome() / "Pictures/Quillmere").string()});
    EXPECT_TRUE(textsBeside(ok).join("\n").contains(qt(told)))
        << textsBeside(ok).join("\n").toStdString();
    ASSERT_TRUE(app.click(text("OK")));
    EXPECT_TRUE(goesBack());
    fs::remove(testHome() / "Pictures");
}

TEST_F(HomeWindowTest, TheLabelsOfAVideosPreviewShrinkToHalfTheirSize) {
    const auto clip = testHome() / "clip.mp4";
    outputOf("ffmpeg -v error -y -f lavfi -i testsrc=size=64x48:rate=5:duration=1 " +
             clip.string());
    ASSERT_TRUE(app.waitUntil([&] { return app.window().isExposed(); }));
    pasteFile(clip);
    ASSERT_TRUE(app.click(text("Convert")));
    ASSERT_TRUE(sees(text("Share")));
    QQuickItem* label = firstOf(app.find(text("Save")), "QQuickText");
    ASSERT_NE(label, nullptr);
    const double natural = label->property("contentHeight").toDouble();
    app.find(text("Save"))->setProperty("text", QString(200, 'm'));
    EXPECT_TRUE(
        app.waitUntil([&] { return label->property("contentHeight").toDouble() < 0.6 * natural; }));
    for (int screen = 0; screen < 2; ++screen) ASSERT_TRUE(app.click(text("Back")));
    EXPECT_TRUE(sees(text("TrySample")));
}

TEST(FirstCharactersTest, ACharacterIsNeverCutInTwo) {
    const std::string family = "👨‍👩‍👧‍👦";
    const std::pair<std::string, std::string> cases[] = {
        {"abc", "ab"},
        {"a", "a"},
        {"", ""},
        {"動画動画", "動画"},
        {"e\u0301o\u0308u", "e\u0301o\u0308"},
        {"👍🏽👍🏽👍", "👍🏽👍🏽"},
        {family + family + family, family + family},
        {"🇯🇵🇩🇪🇫🇷", "🇯🇵🇩🇪"},
        {"❤️❤️❤", "❤️❤️"},
        {"\u1112\u1161\u11ab\u1100\u1173\u11af!", "\u1112\u1161\u11ab\u1100\u1173\u11af"},
    };
    for (const auto& [name, kept] : cases) EXPECT_EQ(firstCharacters(name, 2), kept) << name;
    EXPECT_EQ(firstCharacters("abc", 0), "");
}

}  // namespace
}  // namespace quillmere
