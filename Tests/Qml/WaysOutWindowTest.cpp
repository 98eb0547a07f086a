// The ways out of the window: to other programs, and to a server. Scripts and a server of the test
// stand there, in an edition that has them all.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QClipboard>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMimeData>
#include <QUrlQuery>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <utility>
#include <vector>

#include "Quillmere/Models/Services/MoreApp.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Tests/Desktop/ImageIO/ExifTool.h"
#include "Tests/EventLines.h"
#include "Tests/LoopbackServer.h"
#include "Tests/Qml/AppUnderTest.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

/// Takes the addresses that the application opens.
class Opened : public QObject {
    Q_OBJECT
public:
    Opened() {
        for (const char* scheme : {"https", "file", "instagram"}) {
            QDesktopServices::setUrlHandler(scheme, this, "open");
        }
    }
    std::vector<QUrl> urls;
public slots:
    void open(const QUrl& url) { urls.push_back(url); }
};

class WaysOutWindowTest : public testing::Test {
protected:
    WaysOutWindowTest() {
        writeProgram("xdg-mime", "echo browser.desktop");
        writeProgram("xdg-email", "printf '%s\\n' \"$@\" >'" + mail.string() + "'");
        const std::string path = std::getenv("PATH");
        setenv("PATH", (testHome().string() + ":" + path).c_str(), 1);
        countSaves(0);
        log("AppBecomeActive");
    }

    static ProjectSettings edition() {
        ProjectSettings edition;
        edition.storeLink = "https://store.example/quillmere";
        edition.makerStorePage = "https://store.example/maker/";
        edition.reviewLink = "https://store.example/review";
        edition.supportAddress = "help@store.example";
        edition.inquiryEndpoint = server().url("");
        edition.inquiryTitle = "Q";
        edition.inquiryKey = "KEY";
        return edition;
    }
    static LoopbackServer& server() {
        static auto* server = new LoopbackServer;
        return *server;
    }
    void writeProgram(const char* name, const std::string& command) {
        const auto file = testHome() / name;
        std::ofstream(file) << "#!/bin/sh\n" << command << "\n";
        fs::permissions(file, fs::perms::owner_all);
    }
    void countSaves(int saves) {
        app.composition().platform().userDefaults().setInteger(saves, reviewCountKey);
    }
    void log(const char* event) {
        app.composition().platform().analytics().logEventWithName(event, std::nullopt);
    }
    /// Those of this test: it lies between two that nothing else here causes.
    void expectEvents(const std::vector<std::string>& expected) {
        log("AppGoBackground");
        std::vector<std::string> told;
        EXPECT_TRUE(app.waitUntil([&] {
            told.clear();
            for (const std::string& event : AppUnderTest::events()) {
                event == "AppBecomeActive" ? told.clear() : told.push_back(event);
            }
            return !told.empty() && told.back() == "AppGoBackground";
        }));
        told.pop_back();
        EXPECT_EQ(told, expected);
    }
    QString text(const char* key) { return app.bridge().text(key); }
    ShareSheet& sheet() { return *app.bridge().shareSheet(); }
    /// What the mail program was told, once it was.
    std::string mailTold() {
        EXPECT_TRUE(app.waitUntil([&] { return fs::exists(mail) && fs::file_size(mail) > 0; }));
        std::stringstream told;
        told << std::ifstream(mail).rdbuf();
        fs::remove(mail);
        return told.str();
    }
    /// Goes to a button by the keyboard alone, which shows where it is, and presses it.
    void pressByKey(const QString& name) {
        const auto focused = [&] { return app.window().activeFocusItem(); };
        for (int stop = 0; stop < 60; ++stop) {
            app.press(Qt::Key_Tab);
            if (!focused() || focused()->property("text").toString() != name) continue;
            EXPECT_TRUE(focused()->property("visualFocus").toBool()) << name.toStdString();
            EXPECT_TRUE(app.waitUntil([&] {
                const QPoint at = AppUnderTest::middleOf(*focused()).toPoint();
                return QRect({}, app.window().size()).contains(at);
            })) << name.toStdString()
                << " is out of sight";
            return app.press(Qt::Key_Return);
        }
        ADD_FAILURE() << "no key leads to " << name.toStdString();
    }

    const fs::path mail = testHome() / "mail.txt";
    Opened opened;
    AppUnderTest& app = AppUnderTest::shared(edition());
};

TEST_F(WaysOutWindowTest, EachShareOptionLeadsToTheSheetAndEachOfItsLinesOut) {
    app.bridge().home()->photoTapped();
    ASSERT_TRUE(app.click(text("speedAnime")));
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().detail()->result().isThere(); }));
    ASSERT_TRUE(app.waitUntil([&] { return !app.bridge().detail()->isConverting(); }));
    ASSERT_TRUE(app.click(text("Save")));
    const auto go = [&](const char* option, const char* line) {
        ASSERT_TRUE(app.click(text(option)));
        ASSERT_TRUE(app.waitUntil([&] { return sheet().isShown(); })) << option;
        if (!line) return;
        ASSERT_TRUE(app.click(text(line)));
        ASSERT_TRUE(app.waitUntil([&] { return !sheet().isShown(); })) << line;
    };
    const auto pasted = [] { return QGuiApplication::clipboard()->mimeData(); };

    go("ShareImage", "ShareCopy");
    EXPECT_EQ(pasted()->imageData().value<QImage>().size(), QSize(1804, 1200));
    ASSERT_EQ(pasted()->urls().size(), 1);
    const QString file = pasted()->urls()[0].toLocalFile();
    EXPECT_EQ(QImage(file).size(), QSize(1804, 1200));

    go("SendMessage", "ShareMail");
    EXPECT_EQ(mailTold(), "--attach\n" + file.toStdString() + "\n");

    go("ShareOther", "ShareOpenWith");
    ASSERT_EQ(opened.urls.size(), 1u);
    EXPECT_EQ(opened.urls[0], QUrl::fromLocalFile(file));

    go("ShareOther", nullptr);
    sheet().saveAs(QUrl::fromLocalFile("/missing/a.png"));
    ASSERT_TRUE(app.waitUntil([&] { return app.find("There is no folder /missing."); }));
    ASSERT_TRUE(app.click("OK"));
    EXPECT_TRUE(sheet().isShown()) << "for another try";
    const QString target = QString::fromStdString((testHome() / "a.png").string());
    sheet().saveAs(QUrl::fromLocalFile(target));
    EXPECT_FALSE(sheet().isShown());
    EXPECT_EQ(QImage(target).size(), QSize(1804, 1200));

    go("ShareToFriends", "ShareCopy");
    EXPECT_EQ(pasted()->text(), "\"" + text("AppName") + "\" https://store.example/quillmere");
}

TEST_F(WaysOutWindowTest, ASaveIsCountedBeforeItsScreenAndATapIsToldBeforeItsSheet) {
    app.saveSample();
    EXPECT_NE(app.find(allMoreApps[1].title), nullptr) << "the one whose turn it is by this save";
    for (const char* button : {"ShareImage", "SendMessage"}) {
        ASSERT_TRUE(app.click(text(button)));
        ASSERT_TRUE(app.click(text("Cancel")));
        ASSERT_TRUE(app.waitUntil([&] { return app.find(text("Cancel")) == nullptr; }));
    }
    expectEvents({"ShowDetail", "TryConvert Style=8", "ConvertSuccess Style=8", "TrySave Style=8",
                  "Save Style=8", "share_view_displayed variant=enhanced",
                  "abtest_impression variant=enhanced",
                  "share_image_tapped source=main_button variant=enhanced",
                  "share_sheet_open option=image variant=enhanced",
                  "share_option_tapped option=message variant=enhanced",
                  "share_sheet_open option=message variant=enhanced"});
}

TEST_F(WaysOutWindowTest, FourEscapesCloseTheShareScreenOnceAndGiveTheKeyboardBack) {
    const auto shows = [&](const char* key) {
        return app.waitUntil([&] { return app.find(text(key)) != nullptr; });
    };
    app.saveSample();
    // All of them before the window has drawn anything.
    for (int i = 0; i < 4; ++i) {
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QCoreApplication::sendEvent(&app.window(), &escape);
    }
    ASSERT_TRUE(app.waitUntil([&] { return app.find(text("ShareImage")) == nullptr; }));
    const QQuickItem* focused = app.window().activeFocusItem();
    EXPECT_EQ(focused ? focused->property("text").toString() : "", text("Save"));
    countSaves(0);
    app.press(Qt::Key_Return);
    ASSERT_TRUE(shows("ShareImage"));
    // One after the other: the second one leads home.
    for (int i = 0; i < 4; ++i) app.press(Qt::Key_Escape);
    ASSERT_TRUE(shows("TrySample"));
    expectEvents({"ShowDetail", "TryConvert Style=8", "ConvertSuccess Style=8", "TrySave Style=8",
                  "Save Style=8", "share_view_displayed variant=enhanced",
                  "abtest_impression variant=enhanced", "TrySave Style=8", "Save Style=8",
                  "share_view_displayed variant=enhanced", "abtest_impression variant=enhanced"});
}

TEST_F(WaysOutWindowTest, WhatWasHandedOutIsThereAfterTheWayHome) {
    const auto copied = [&](const char* button) {
        EXPECT_TRUE(app.click(text(button)));
        EXPECT_TRUE(app.click(text("ShareCopy")));
        EXPECT_TRUE(app.waitUntil([&] { return !sheet().isShown(); }));
        const auto urls = QGuiApplication::clipboard()->mimeData()->urls();
        return urls.isEmpty() ? QString() : urls[0].toLocalFile();
    };
    const auto goHome = [&] {
        ASSERT_TRUE(app.waitUntil([&] {
            app.press(Qt::Key_Escape);
            return app.find(text("TrySample")) != nullptr;
        }));
    };
    app.saveSample();
    const QString picture = copied("ShareImage");
    goHome();
    EXPECT_EQ(QImage(picture).size(), QSize(1804, 1200));

    const auto clip = testHome() / "clip.mp4";
    outputOf("ffmpeg -v error -f lavfi -i testsrc=size=64x48:rate=5:duration=1 " + clip.string());
    app.bridge().home()->open({QUrl::fromLocalFile(QString::fromStdString(clip.string()))});
    ASSERT_TRUE(app.click(text("Convert")));
    const QString video = copied("Share");
    goHome();
    EXPECT_GT(QFileInfo(video).size(), 1000);
}

TEST_F(WaysOutWindowTest, TheOtherApplicationIsOfferedWhenTheSystemHasToldOfIt) {
    const fs::path asked = testHome() / "asked", answer = testHome() / "answer";
    ASSERT_EQ(mkfifo(answer.c_str(), 0600), 0);
    writeProgram("xdg-mime", "echo \"$3\" >>'" + asked.string() + "'\nread told <'" +
                                 answer.string() + "'\necho \"$told\"");
    app.saveSample();
    ASSERT_TRUE(app.waitUntil([&] { return app.find(text("SendMessage")) != nullptr; }));
    EXPECT_EQ(app.find("Instagram"), nullptr);
    int pipe = -1;
    ASSERT_TRUE(app.waitUntil([&] {
        pipe = open(answer.c_str(), O_WRONLY | O_NONBLOCK);  // once the program reads
        return pipe >= 0;
    }));
    EXPECT_EQ(write(pipe, "other.desktop\n", 14), 14);
    close(pipe);
    ASSERT_TRUE(app.click("Instagram"));
    ASSERT_TRUE(app.waitUntil([&] { return !opened.urls.empty() && sheet().isShown(); }));
    const QString file = QUrlQuery(opened.urls[0]).queryItemValue("AssetPath");
    EXPECT_TRUE(file.endsWith(".igo") && QFileInfo::exists(file)) << file.toStdString();
    ASSERT_TRUE(app.click(text("Cancel")));
    ASSERT_TRUE(app.waitUntil([&] { return app.find(text("Cancel")) == nullptr; }));
    app.press(Qt::Key_Escape);
    ASSERT_TRUE(app.waitUntil([&] { return app.find("Instagram") == nullptr; }));
    ASSERT_TRUE(app.click(text("Save")));
    ASSERT_TRUE(app.waitUntil([&] { return app.find("Instagram") != nullptr; }));
    EXPECT_EQ(linesOf(asked), std::vector<std::string>{"x-scheme-handler/instagram"});
}

TEST_F(WaysOutWindowTest, TheKeyboardAloneLeadsToEachRowOfTheSettingsAndOut) {
    pressByKey(text("Settings"));
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().settings() != nullptr; }));
    pressByKey("2048px");
    EXPECT_EQ(app.bridge().settings()->limitIndex(), 1);
    pressByKey(text("ShareToFriends"));
    ASSERT_TRUE(app.waitUntil([&] { return sheet().isShown(); }));
    sheet().close();
    pressByKey(text("Contact"));
    EXPECT_TRUE(mailTold().ends_with("help@store.example\n"));

    std::vector<std::pair<QString, QUrl>> rows{
        {text("MoreApps"), QUrl("https://store.example/maker/")},
        {text("WriteReview"), QUrl("https://store.example/review")}};
    for (const MoreApp& other : allMoreApps) {
        rows.emplace_back(other.title,
                          QUrl(QString::fromStdString(*storePageOf(other, edition()))));
    }
    for (const auto& [row, page] : rows) {
        opened.urls.clear();
        pressByKey(row);
        ASSERT_TRUE(app.waitUntil([&] { return opened.urls.size() == 1; })) << row.toStdString();
        EXPECT_EQ(opened.urls[0], page);
    }
    app.press(Qt::Key_Escape);
    EXPECT_TRUE(app.waitUntil([&] { return app.bridge().settings() == nullptr; }));
}

TEST_F(WaysOutWindowTest, AnInquiryIsSentAndOneThatFailsIsKept) {
    app.bridge().home()->setShowSettings(true);
    ASSERT_TRUE(app.click(text("BugReport")));
    ASSERT_TRUE(app.waitUntil([&] { return app.bridge().report() != nullptr; }));
    EXPECT_FALSE(app.bridge().report()->canSend());
    ASSERT_TRUE(app.waitUntil([&] {
        return app.window().activeFocusItem() &&
               app.window().activeFocusItem()->inherits("QQuickTextArea");
    }));
    for (const char letter : std::string("why&")) QTest::keyClick(&app.window(), letter);
    const auto send = [&](const QString& told) {
        ASSERT_TRUE(app.click(text("Send")));
        ASSERT_TRUE(app.waitUntil([&] { return app.find(told) != nullptr; })) << told.toStdString();
        ASSERT_TRUE(app.click("OK"));
        ASSERT_TRUE(app.waitUntil([&] { return app.find(told) == nullptr; }));
    };
    const std::string path = "/prod/appinquiry";
    for (const int status : {500, 201}) {
        server().answer(path, status, {}, "");
        send("error code: " + QString::number(status));
    }
    server().answer(path, 302, {{"Location", "http://store.example/"}}, "");
    send(text("Error"));
    for (const char* cutOff : {"", "SSH-2.0-OpenSSH\r\n"}) {
        server().answerRaw(path, cutOff);
        send(text("Error"));
    }
    ASSERT_NE(app.bridge().report(), nullptr);
    EXPECT_EQ(app.bridge().report()->text(), "why&");

    server().answer(path, 200, {}, "");
    send(text("SuccessToInquiry"));
    EXPECT_TRUE(app.waitUntil([&] { return app.bridge().report() == nullptr; }));
    ASSERT_EQ(server().requests().size(), 6u);
    for (const auto& request : server().requests()) {
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.target, path + "?title=Q&desc=why&");
        EXPECT_EQ(request.fields.at("x-api-key"), "KEY");
    }
}

}  // namespace
}  // namespace quillmere

#include "WaysOutWindowTest.moc"
