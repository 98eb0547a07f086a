#include "Desktop/Qml/Platform/SingleInstance.h"

#include <QDataStream>
#include <QLocalSocket>
#include <QStandardPaths>
#include <utility>

namespace quillmere {
namespace {

constexpr int waitMilliseconds = 1000;

/// In a folder that only the user may enter.
QString address() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return folder.isEmpty() ? QString() : folder + "/quillmere.socket";
}

}  // namespace

bool SingleInstance::handOver(const QList<QUrl>& files) {
    if (address().isEmpty()) return false;
    QLocalSocket socket;
    socket.connectToServer(address());
    if (!socket.waitForConnected(waitMilliseconds)) return false;
    QDataStream stream(&socket);
    stream << files;
    socket.flush();
    socket.disconnectFromServer();
    return socket.state() == QLocalSocket::UnconnectedState ||
           socket.waitForDisconnected(waitMilliseconds);
}

SingleInstance::SingleInstance(std::function<void(const QList<QUrl>& files)> started) {
    QObject::connect(
        &server_, &QLocalServer::newConnection, &server_, [this, started = std::move(started)] {
            QLocalSocket* socket = server_.nextPendingConnection();
            QObject::connect(socket, &QLocalSocket::disconnected, socket, [socket, started] {
                QDataStream stream(socket);
                QList<QUrl> files;
                stream >> files;
                started(files);
                socket->deleteLater();
            });
        });
    if (address().isEmpty()) return;
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    // One that nobody answered on is a dead process's.
    QLocalServer::removeServer(address());
    server_.listen(address());
}

}  // namespace quillmere
