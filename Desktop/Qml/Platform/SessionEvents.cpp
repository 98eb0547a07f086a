#include "Desktop/Qml/Platform/SessionEvents.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <QSessionManager>
#include <utility>

namespace quillmere {

SessionEvents::SessionEvents(std::function<void()> goesToBackground)
    : goesToBackground_(std::move(goesToBackground)) {
    QDBusConnection::systemBus().connect("org.freedesktop.login1", "/org/freedesktop/login1",
                                         "org.freedesktop.login1.Manager", "PrepareForSleep", this,
                                         SLOT(prepareForSleep(bool)));
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this,
            [this](QSessionManager&) { goesToBackground_(); });
}

void SessionEvents::prepareForSleep(bool begins) {
    if (begins) goesToBackground_();
}

}  // namespace quillmere
