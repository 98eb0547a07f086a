#include "Desktop/Qml/Platform/DesktopShell.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

namespace quillmere {
namespace {

constexpr const char* desktopEntry = "quillmere";
constexpr int shownMilliseconds = 8000;

void send(const QDBusMessage& message) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) bus.send(message);
}

}  // namespace

void DesktopShell::showProgress(double fraction) {
    QDBusMessage update =
        QDBusMessage::createSignal("/quillmere", "com.canonical.Unity.LauncherEntry", "Update");
    const QVariantMap properties{{"progress", fraction}, {"progress-visible", fraction >= 0}};
    update << QString("application://%1.desktop").arg(desktopEntry) << properties;
    send(update);
}

void DesktopShell::notify(const QString& title, const QString& text) {
    QDBusMessage call = QDBusMessage::createMethodCall("org.freedesktop.Notifications",
                                                       "/org/freedesktop/Notifications",
                                                       "org.freedesktop.Notifications", "Notify");
    call << title << uint{0} << desktopEntry << title << text << QStringList()
         << QVariantMap{{"desktop-entry", desktopEntry}} << shownMilliseconds;
    send(call);
}

}  // namespace quillmere
