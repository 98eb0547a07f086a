#include "Desktop/Qml/Platform/SessionEvents.h"

#include <QDBusConnection>
#include <QGuiApplication>
#include <QSessionManager>
#include <utility>

namespace quillmere {

SessionEvents::SessionEvents(std::function<void()> goesToBackground, std::function<void()> wakesUp)
    : goesToBackground_(std::move(goesToBackground)), wakesUp_(std::move(wakesUp)) {
    QDBusConnection::systemBus().connect("org.freedesktop.login1", "/org/freedesktop/login1",
                                         "org.freedesktop.login1.Manager", "PrepareForSleep", this,
                                         SLOT(prepareForSleep(bool)));
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this,
            [this](QSessionManager&) { goesToBackground_(); });
}

void SessionEvents::prepareForSleep(bool begins) { begins ? goesToBackground_() : wakesUp_(); }

}  // namespace quillmere
