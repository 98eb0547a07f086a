// One process for each user: a second start hands its files to the first.
#pragma once

#include <QList>
#include <QLocalServer>
#include <QUrl>
#include <functional>

namespace quillmere {

/// Main thread.
class SingleInstance {
public:
    /// Whether another process took the files, so that this one has nothing left to do.
    static bool handOver(const QList<QUrl>& files);

    /// Takes them from now on. Where no such address can be had, each start is a process.
    explicit SingleInstance(std::function<void(const QList<QUrl>& files)> started);

private:
    QLocalServer server_;
};

}  // namespace quillmere
