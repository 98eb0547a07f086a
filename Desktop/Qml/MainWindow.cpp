#include "Desktop/Qml/MainWindow.h"

#include <QGuiApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QQmlContext>
#include <QTranslator>
#include <QUrl>

#include "Desktop/Qml/Home/ThumbnailProvider.h"
#include "Desktop/Qml/Pictures/PictureItem.h"
#include "Desktop/Qml/Pictures/VideoItem.h"

namespace quillmere {
namespace {

/// Qt's own texts, such as those of its file dialog, and the side that lines begin at.
void speak(std::string_view language) {
    const QLocale locale(QString::fromUtf8(language.data(), qsizetype(language.size())));
    auto* translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(locale, "qt", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(translator);
    }
    QGuiApplication::setLayoutDirection(language == pseudoLanguage ? Qt::RightToLeft
                                                                   : locale.textDirection());
}

}  // namespace

QQuickWindow* openMainWindow(Composition& composition, QQmlApplicationEngine& engine) {
    // The other player of Qt's is not there on every system, and stands still without sound.
    if (!qEnvironmentVariableIsSet("QT_MEDIA_BACKEND")) qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    speak(userLanguage());
    DesktopPlatform& platform = composition.platform();
    qmlRegisterType<PictureItem>("Quillmere", 1, 0, "PictureItem");
    qmlRegisterType<VideoItem>("Quillmere", 1, 0, "VideoItem");
    engine.addImageProvider(
        "thumbnails", new ThumbnailProvider(*platform.photoLibrary(), *platform.avFoundation()));
    engine.rootContext()->setContextProperty("App", &composition.bridge());
    engine.load(QUrl("qrc:/qt/qml/Quillmere/Main.qml"));
    if (engine.rootObjects().isEmpty()) return nullptr;
    auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().front());
    composition.application().setWindow(window);
    return window;
}

}  // namespace quillmere
