#include "Desktop/Qml/Platform/QtApplication.h"

#include <QDesktopServices>
#include <QProcess>
#include <QTimer>
#include <QUrl>
#include <chrono>
#include <utility>

namespace quillmere {
namespace {

/// Of a program that asks others in its turn, none of which may answer.
constexpr std::chrono::seconds answerTime{10};

QUrl urlOf(std::string_view text) {
    return QUrl(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

}  // namespace

std::vector<UIScene*> QtApplication::connectedScenes() const { return {&scene_}; }

bool QtApplication::canOpenURL(std::string_view url, Answered answered) {
    const QString scheme = urlOf(url).scheme();
    if (const auto known = opens_.find(scheme); known != opens_.end()) return known->second;
    askWhoOpens(scheme, std::move(answered));
    return false;
}

void QtApplication::openURL(std::string url, Answered completionHandler) {
    const QUrl address = urlOf(url);
    askWhoOpens(address.scheme(), [address, told = std::move(completionHandler)](bool opens) {
        const bool opened = opens && QDesktopServices::openUrl(address);
        if (told) told(opened);
    });
}

void QtApplication::askWhoOpens(const QString& scheme, Answered answered) {
    if (const auto known = opens_.find(scheme); known != opens_.end()) {
        return answered(known->second);
    }
    auto& waiting = asking_[scheme];
    waiting.push_back(std::move(answered));
    if (waiting.size() > 1) return;

    auto* query = new QProcess(&queries_);
    QObject::connect(query, &QProcess::finished, &queries_,
                     [this, query, scheme](int code, QProcess::ExitStatus status) {
                         query->deleteLater();
                         const bool opens =
                             code == 0 && !query->readAllStandardOutput().trimmed().isEmpty();
                         if (status == QProcess::NormalExit) opens_[scheme] = opens;
                         answer(scheme, status == QProcess::NormalExit && opens);
                     });
    QObject::connect(query, &QProcess::errorOccurred, &queries_,
                     [this, query, scheme](QProcess::ProcessError error) {
                         if (error != QProcess::FailedToStart) return;  // it finishes as well
                         query->deleteLater();
                         answer(scheme, false);
                     });
    QTimer::singleShot(answerTime, query, &QProcess::kill);
    query->start("xdg-mime", {"query", "default", "x-scheme-handler/" + scheme});
}

void QtApplication::answer(const QString& scheme, bool opens) {
    for (const Answered& answered : std::exchange(asking_[scheme], {})) answered(opens);
}

}  // namespace quillmere
