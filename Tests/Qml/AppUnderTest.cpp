#include "Tests/Qml/AppUnderTest.h"

#include <QAccessible>
#include <QElapsedTimer>
#include <cstdlib>
#include <fstream>

#include "Tests/EventLines.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

constexpr int patience = 60'000;  // milliseconds: for a machine that does other things as well

const TemporaryFolder* home = nullptr;

/// What QML has to complain of is a fault.
void failOnWarning(QtMsgType type, const QMessageLogContext&, const QString& text) {
    // Sound and other services of the system may be missing.
    if (type == QtDebugMsg || type == QtInfoMsg || !text.contains("qrc:")) return;
    // Qt's own dialog says so of a folder that goes while it lists it, as those below /proc do.
    if (text.contains("QML FilePicker: Cannot set")) return;
    ADD_FAILURE() << text.toStdString();
}

bool isSeen(const QQuickItem* item) {
    for (; item; item = item->parentItem()) {
        if (!item->isVisible() || !item->isEnabled() || item->opacity() < 0.5) return false;
    }
    return true;
}

QQuickItem* findIn(QQuickItem* item, const std::function<bool(const QQuickItem&)>& isIt) {
    // What lies on top comes first.
    const auto children = item->childItems();
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        if (QQuickItem* found = findIn(*child, isIt)) return found;
    }
    return isIt(*item) && isSeen(item) && item->width() > 0 ? item : nullptr;
}

/// Without a display there is a screen of 800 by 800 points, unless another height is asked for.
std::string screen(const std::filesystem::path& file) {
    const char* height = std::getenv("QUILLMERE_TEST_SCREEN_HEIGHT");
    if (!height) return "offscreen";
    std::ofstream(file) << R"({"screens": [{"name": "high", "x": 0, "y": 0, "width": 1920, )"
                        << R"("logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1, "height": )"
                        << height << "}]}";
    return "offscreen:configfile=" + file.string();
}

}  // namespace

std::filesystem::path testHome() { return home->path(); }

AppUnderTest& AppUnderTest::shared(const std::optional<ProjectSettings>& edition) {
    static auto* app = new AppUnderTest(edition);
    return *app;
}

AppUnderTest::AppUnderTest(const std::optional<ProjectSettings>& edition) {
    qInstallMessageHandler(failOnWarning);
    const auto made = Composition::make(edition);
    if (!made) {
        ADD_FAILURE() << made.error().localizedDescription;
        std::abort();
    }
    composition_ = *made;
    composition_->app().appDelegate().applicationDidFinishLaunching();
    window_ = openMainWindow(*composition_, engine_);
    if (!window_) std::abort();
}

bool AppUnderTest::waitUntil(const std::function<bool()>& predicate) {
    QElapsedTimer time;
    time.start();
    while (!predicate()) {
        if (time.elapsed() > patience) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    }
    return true;
}

QQuickItem* AppUnderTest::find(const QString& text) {
    const auto isCalled = [&](const QQuickItem& item) {
        return item.property("text").toString() == text;
    };
    QQuickItem* button = findItem([&](const QQuickItem& item) {
        return item.inherits("QQuickAbstractButton") && isCalled(item);
    });
    return button ? button : findItem(isCalled);
}

QQuickItem* AppUnderTest::findItem(const std::function<bool(const QQuickItem&)>& isIt) {
    return findIn(window_->contentItem(), isIt);
}

QPointF AppUnderTest::middleOf(const QQuickItem& item) {
    return item.mapToScene({item.width() / 2, item.height() / 2});
}

bool AppUnderTest::click(const QString& text) {
    if (!waitUntil([&] { return find(text) != nullptr; })) {
        ADD_FAILURE() << "nothing on the screen is called " << text.toStdString();
        return false;
    }
    // Sheets come and go by moving: the click has to meet what stands.
    QPointF at;
    waitUntil([&] {
        const QQuickItem* item = find(text);
        const QPointF now = item ? middleOf(*item) : QPointF();
        const bool stands = item && now == at;
        at = now;
        if (!stands) QTest::qWait(50);
        return stands;
    });
    QTest::mouseClick(window_, Qt::LeftButton, {}, at.toPoint());
    return true;
}

void AppUnderTest::drag(QPointF from, QPointF to) {
    QTest::mousePress(window_, Qt::LeftButton, {}, from.toPoint());
    for (int step = 1; step <= 10; ++step) {
        QTest::mouseMove(window_, (from + (to - from) * step / 10).toPoint());
        QTest::qWait(5);
    }
    QTest::mouseRelease(window_, Qt::LeftButton, {}, to.toPoint());
}

void AppUnderTest::takePicture(const std::string& name) {
    const char* folder = std::getenv("QUILLMERE_SCREENSHOTS");
    QTest::qWait(folder ? 700 : 50);  // for what moves to stand
    const QImage image = window_->grabWindow();
    EXPECT_FALSE(image.isNull());
    if (!folder) return;
    std::string file = name + "-" + std::to_string(window_->width()) +
                       (bridge().appearance() == "dark" ? "-dark" : "");
    if (userLanguage() != languages.front()) file += "-" + std::string(userLanguage());
    EXPECT_TRUE(image.save(qt((std::filesystem::path(folder) / (file + ".png")).string())));
}

void AppUnderTest::press(Qt::Key key) { QTest::keyClick(window_, key); }

std::vector<std::string> AppUnderTest::events() {
    std::vector<std::string> lines;
    const auto record = testHome() / ".local/state/quillmere" / EventFile::name;
    for (const nlohmann::json& event : eventsIn(record)) {
        std::string line = event.at("event");
        for (const auto& [key, value] : event.at("parameters").items()) {
            line += " " + key + "=" + value.get<std::string>();
        }
        lines.push_back(line);
    }
    return lines;
}

void AppUnderTest::saveSample() {
    ASSERT_TRUE(click(bridge().text("SamplePhoto")));
    ASSERT_TRUE(click(bridge().text("superSpeed")));
    ASSERT_TRUE(waitUntil([&] {
        const DetailBridge* detail = bridge().detail();
        return detail && !detail->isConverting() && detail->resultSize() == "1804 x 1200";
    }));
    ASSERT_TRUE(click(bridge().text("Save")));
    ASSERT_TRUE(waitUntil([&] { return find(bridge().text("CompletedToSave")) != nullptr; }));
}

}  // namespace quillmere

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
    const quillmere::TemporaryFolder folder;
    quillmere::home = &folder;
    std::filesystem::create_directories(folder / "run");
    std::filesystem::permissions(folder / "run", std::filesystem::perms::owner_all);
    for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME",
                                 "XDG_STATE_HOME", "DBUS_SESSION_BUS_ADDRESS"}) {
        unsetenv(variable);
    }
    setenv("QUILLMERE_LANGUAGE", "en", 0);
    setenv("HOME", folder.path().c_str(), 1);
    setenv("XDG_RUNTIME_DIR", (folder / "run").c_str(), 1);
    setenv("QT_QPA_PLATFORM", quillmere::screen(folder / "screen.json").c_str(), 1);
    setenv("QT_QUICK_BACKEND", "software", 1);
    QGuiApplication application(argc, argv);
    const int code = RUN_ALL_TESTS();
    // As the application does: what is under way ends with the process.
    std::error_code ignored;  // something may still write there
    std::filesystem::remove_all(folder.path(), ignored);
    std::fflush(nullptr);
    std::_Exit(code);
}
