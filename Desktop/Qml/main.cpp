// The application with windows.
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "Desktop/Qml/MainWindow.h"
#include "Desktop/Qml/Platform/DesktopShell.h"
#include "Desktop/Qml/Platform/SessionEvents.h"
#include "Desktop/Qml/Platform/SingleInstance.h"

namespace {

using namespace quillmere;

/// Qt would end the process with a riddle.
bool hasDisplay(int argc, char** argv) {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (qEnvironmentVariableIsSet(variable)) return true;
    }
    return std::any_of(argv, argv + argc,
                       [](const char* argument) { return argument == std::string("-platform"); });
}

/// Ends the process where the arguments ask for no window, or are none of ours.
QList<QUrl> filesOf(const QGuiApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription("Enlarges and sharpens pictures and videos");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument("files", "Pictures, or a video, to open", "[files...]");
    parser.process(application);
    QList<QUrl> files;
    for (const QString& argument : parser.positionalArguments()) {
        files << QUrl::fromUserInput(argument, QDir::currentPath(), QUrl::AssumeLocalFile);
    }
    return files;
}

/// Long work on the detail screen is seen from outside the window as well.
void tellTheDesktop(Composition& composition, QQuickWindow& window, DesktopShell& shell) {
    AppBridge& bridge = composition.bridge();
    QObject::connect(&bridge, &AppBridge::detailChanged, &window, [&bridge, &window, &shell] {
        DetailBridge* detail = bridge.detail();
        if (!detail) return shell.showProgress(-1);
        const auto works = std::make_shared<bool>(false);
        QObject::connect(detail, &DetailBridge::progressChanged, &window, [detail, &shell] {
            if (detail->isConverting()) shell.showProgress(detail->conversionProgress());
            if (detail->isLoading()) shell.showProgress(detail->videoProgress());
        });
        QObject::connect(detail, &DetailBridge::coverChanged, &window,
                         [detail, &bridge, &window, &shell, works] {
                             const bool now = detail->isConverting() || detail->isLoading();
                             const bool ended = *works && !now;
                             *works = now;
                             if (!ended) return;
                             shell.showProgress(-1);
                             if (!window.isActive()) {
                                 shell.notify(bridge.text("AppName"), bridge.text("WorkEnded"));
                             }
                         });
    });
}

int fail(const Error& error) {
    std::fprintf(stderr, "quillmere: %s\n", DesktopPlatform::reasonOf(error).c_str());
    return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    if (!hasDisplay(argc, argv)) {
        return fail({Composition::errorDomain, 1,
                     "There is no display. quillmere-cli does the same work without one."});
    }
    QGuiApplication qt(argc, argv);
    QGuiApplication::setApplicationName("quillmere");
    QGuiApplication::setApplicationDisplayName("Quillmere");
    QGuiApplication::setApplicationVersion(QUILLMERE_VERSION);
    QGuiApplication::setDesktopFileName("quillmere");
    QGuiApplication::setWindowIcon(QIcon(":/qt/qml/Quillmere/Icons/quillmere.svg"));
    const QList<QUrl> files = filesOf(qt);
    if (SingleInstance::handOver(files)) return EXIT_SUCCESS;

    const auto made = Composition::make();
    if (!made) return fail(made.error());
    Composition& composition = **made;
    DesktopPlatform& platform = composition.platform();
    composition.app().appDelegate().applicationDidFinishLaunching();

    QQmlApplicationEngine engine;
    QQuickWindow* const opened = openMainWindow(composition, engine);
    if (!opened) return fail({Composition::errorDomain, 1, "The window could not be opened."});
    QQuickWindow& window = *opened;

    DesktopShell shell;
    tellTheDesktop(composition, window, shell);
    const auto tellPhase = [&] {
        composition.app().scenePhaseChanged(window.isActive() ? ScenePhase::active
                                                              : ScenePhase::inactive);
    };
    // A window that slept as the active one is not told by Qt that it still is.
    SessionEvents session(
        [&composition] { composition.app().scenePhaseChanged(ScenePhase::background); }, tellPhase);
    QObject::connect(&window, &QWindow::activeChanged, &window, tellPhase);
    SingleInstance instance([&](const QList<QUrl>& more) {
        window.show();
        window.raise();
        window.requestActivate();
        if (!more.isEmpty()) composition.bridge().openFiles(more);
    });
    if (!files.isEmpty()) composition.bridge().openFiles(files);
    QTimer::singleShot(0, &window, [&] { composition.app().contentView().setupOnce(); });

    const int code = QGuiApplication::exec();
    composition.app().scenePhaseChanged(ScenePhase::background);
    platform.recordOrderlyEnd();
    // Work that is under way ends with the process, and what it uses is not taken from it before.
    std::fflush(nullptr);
    std::_Exit(code);
}
