// One run of the window, without a screen: what WindowSection.cpp starts again and again.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "Benchmarks/Photo.h"
#include "Benchmarks/Timing.h"
#include "Desktop/Qml/Composition.h"
#include "Desktop/Qml/MainWindow.h"

namespace quillmere::benchmark {
namespace {

namespace fs = std::filesystem;

constexpr QSize kWindow{1280, 800};
constexpr int kRestMilliseconds = 2000;
constexpr int kDragSteps = 60;
constexpr int kScrollSteps = 300;
constexpr int kPatienceMilliseconds = 300'000;

double residentMiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) return std::stod(line.substr(6)) / 1024;
    }
    return 0;
}

/// The application as its main() makes it, in a window of the size that is measured.
class Run {
public:
    Run() {
        const auto made = Composition::make();
        if (!made) throw std::runtime_error(made.error().localizedDescription);
        composition_ = *made;
        composition_->app().appDelegate().applicationDidFinishLaunching();
        window_ = openMainWindow(*composition_, engine_);
        if (!window_) throw std::runtime_error("The window could not be opened.");
        window_->resize(kWindow);
        composition_->app().contentView().setupOnce();
    }

    Composition& composition() { return *composition_; }
    AppBridge& bridge() { return composition_->bridge(); }
    QQuickWindow& window() { return *window_; }

    void until(const std::function<bool()>& predicate) {
        if (!QTest::qWaitFor(predicate, kPatienceMilliseconds)) {
            throw std::runtime_error("The window did not answer in time.");
        }
    }
    /// From the call until what it changed is on the screen.
    double secondsToShow(const std::function<void()>& change) {
        bool shown = false;
        const auto connection = QObject::connect(window_, &QQuickWindow::frameSwapped, window_,
                                                 [&shown] { shown = true; });
        const double seconds = secondsOf([&] {
            change();
            window_->update();
            while (!shown) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        });
        QObject::disconnect(connection);
        // As the application's event loop does between two events.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return seconds;
    }

private:
    Composition* composition_ = nullptr;
    QQmlApplicationEngine engine_;
    QQuickWindow* window_ = nullptr;
};

void print(std::initializer_list<double> figures) {
    for (const double value : figures) std::printf("%.6f ", value);
    std::printf("\n");
}

void measureStart(double startedAt) {
    Run run;
    run.secondsToShow([] {});
    const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
    QTest::qWait(kRestMilliseconds);
    print({now.count() - startedAt, residentMiB()});
}

void measureDrag(const fs::path& home) {
    auto bundle = ResourceBundle::besideTheProgram();
    if (!bundle) throw std::runtime_error(bundle.error().localizedDescription);
    const fs::path photo = home / "photo.jpg";
    const auto written = writePhoto(*bundle, {2048, 1536}, photo);
    if (!written) throw std::runtime_error(written.error().localizedDescription);
    Run run;
    run.composition().platform().userDefaults().setInteger(1, "resolutionLimitIndexKey");
    run.bridge().home()->open({QUrl::fromLocalFile(qt(photo.string()))});
    run.until([&] { return run.bridge().detail() != nullptr; });
    DetailBridge& detail = *run.bridge().detail();
    detail.styleTapped(rawValue(EnhanceStyle::superSpeed));
    run.until([&] { return detail.result().isThere() && !detail.isConverting(); });
    if (detail.resultSize() != "8192 x 6144") throw std::runtime_error("An unexpected size.");
    QTest::qWait(kRestMilliseconds);

    const int middle = (kWindow.width() - 340 - 32) / 2;
    QPoint at(middle, kWindow.height() / 2);
    QTest::mousePress(&run.window(), Qt::LeftButton, {}, at);
    std::vector<double> frames;
    for (int step = 0; step < kDragSteps; ++step) {
        at.rx() += step < kDragSteps / 2 ? -10 : 10;
        const double before = detail.slider();
        const double seconds = run.secondsToShow([&] { QTest::mouseMove(&run.window(), at); });
        if (detail.slider() != before) frames.push_back(seconds);
    }
    if (frames.size() < kDragSteps / 2) throw std::runtime_error("The divider did not follow.");
    print({quantileOf(frames, 0.5), quantileOf(frames, 1)});
}

void measureScroll(const fs::path& home, int count) {
    auto bundle = ResourceBundle::besideTheProgram();
    if (!bundle) throw std::runtime_error(bundle.error().localizedDescription);
    const fs::path folder = home / "Pictures";
    fs::create_directories(folder);
    if (!fs::exists(folder / "0.jpg")) {
        const auto written = writePhoto(*bundle, {640, 480}, folder / "0.jpg");
        if (!written) throw std::runtime_error(written.error().localizedDescription);
        for (int i = 1; i < count; ++i) {
            fs::copy_file(folder / "0.jpg", folder / (std::to_string(i) + ".jpg"));
        }
    }
    Run run;
    DesktopPhotoLibrary& photos = *run.composition().platform().photoLibrary();
    if (!photos.scan()) throw std::runtime_error("The library can't be read.");
    HomeBridge& home_ = *run.bridge().home();
    home_.selectFromLibraryTapped();
    run.until([&] { return home_.library()->count() == count; });
    QTest::qWait(kRestMilliseconds);
    QQuickItem* grid = nullptr;
    const std::function<void(QQuickItem*)> look = [&](QQuickItem* item) {
        if (item->inherits("QQuickGridView")) grid = item;
        for (QQuickItem* child : item->childItems()) look(child);
    };
    look(run.window().contentItem());
    if (!grid) throw std::runtime_error("There is no grid.");
    const double way = grid->property("contentHeight").toDouble() - grid->height();
    std::vector<double> frames;
    for (int step = 1; step <= kScrollSteps; ++step) {
        frames.push_back(
            run.secondsToShow([&] { grid->setProperty("contentY", way * step / kScrollSteps); }));
    }
    print({quantileOf(frames, 0.5), quantileOf(frames, 1), residentMiB()});
}

}  // namespace
}  // namespace quillmere::benchmark

/// `quillmere-window-run HOME start SECONDS | drag | scroll COUNT`; SECONDS is when it was started,
/// of the steady clock. Its last line has the figures, or says why there are none.
int main(int argc, char** argv) try {
    using namespace quillmere::benchmark;
    if (argc < 3) return EXIT_FAILURE;
    const std::filesystem::path home = argv[1];
    for (const char* variable :
         {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "DBUS_SESSION_BUS_ADDRESS"}) {
        unsetenv(variable);
    }
    std::filesystem::create_directories(home);
    setenv("HOME", home.c_str(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_QUICK_BACKEND", "software", 1);
    // What the application says of itself would stand between the tables.
    if (!std::freopen("/dev/null", "w", stderr)) return EXIT_FAILURE;
    QGuiApplication application(argc, argv);
    const std::string what = argv[2];
    if (what == "start" && argc == 4) measureStart(std::stod(argv[3]));
    if (what == "drag") measureDrag(home);
    if (what == "scroll" && argc == 4) measureScroll(home, std::stoi(argv[3]));
    std::fflush(stdout);
    std::_Exit(EXIT_SUCCESS);  // as the application ends
} catch (const std::exception& error) {
    std::printf("%s\n", error.what());
    std::fflush(stdout);
    std::_Exit(EXIT_FAILURE);
}
