#include "Desktop/Qml/Platform/QtApplication.h"

#include <QDesktopServices>
#include <QProcess>
#include <QUrl>

namespace quillmere {
namespace {

constexpr int answerMilliseconds = 2000;

QUrl urlOf(std::string_view text) {
    return QUrl(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

}  // namespace

std::vector<UIScene*> QtApplication::connectedScenes() const { return {&scene_}; }

bool QtApplication::canOpenURL(std::string_view url) const {
    const QString scheme = urlOf(url).scheme();
    if (scheme.isEmpty()) return false;
    QProcess query;
    query.start("xdg-mime", {"query", "default", "x-scheme-handler/" + scheme});
    return query.waitForFinished(answerMilliseconds) && query.exitCode() == 0 &&
           !query.readAllStandardOutput().trimmed().isEmpty();
}

void QtApplication::openURL(std::string url, std::function<void(bool)> completionHandler) {
    const bool opened = canOpenURL(url) && QDesktopServices::openUrl(urlOf(url));
    if (completionHandler) completionHandler(opened);
}

}  // namespace quillmere
