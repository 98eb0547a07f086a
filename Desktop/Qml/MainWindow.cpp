#include "Desktop/Qml/MainWindow.h"

#include <QQmlContext>
#include <QUrl>

#include "Desktop/Qml/Home/ThumbnailProvider.h"
#include "Desktop/Qml/Pictures/PictureItem.h"
#include "Desktop/Qml/Pictures/VideoItem.h"

namespace quillmere {

QQuickWindow* openMainWindow(Composition& composition, QQmlApplicationEngine& engine) {
    // The other player of Qt's is not there on every system, and stands still without sound.
    if (!qEnvironmentVariableIsSet("QT_MEDIA_BACKEND")) qputenv("QT_MEDIA_BACKEND", "ffmpeg");
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
