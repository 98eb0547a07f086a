#include "Desktop/Qml/Platform/ShareSheet.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QProcess>
#include <QStandardPaths>
#include <QUuid>

#include "Desktop/Qml/Pictures/Pyramid.h"

namespace quillmere {
namespace {

constexpr const char* pictureName = "Quillmere.png";

QString qtPath(const std::filesystem::path& path) { return QString::fromStdString(path.string()); }

}  // namespace

void ShareSheet::present(std::vector<ActivityItem> items, UIViewController&) {
    if (items.empty()) return;
    item_ = std::move(items.front());
    madeFile_.clear();
    emit changed();
}

QStringList ShareSheet::actions() const {
    if (!item_) return {};
    QStringList actions{"copy"};
    const bool isText = std::holds_alternative<std::string>(*item_);
    if (!isText)
        actions << "saveAs"
                << "openWith";
    if (std::holds_alternative<std::filesystem::path>(*item_)) actions << "showInFolder";
    if (!QStandardPaths::findExecutable("xdg-email").isEmpty()) actions << "mail";
    return actions;
}

QString ShareSheet::suggestedName() const {
    const auto* path = item_ ? std::get_if<std::filesystem::path>(&*item_) : nullptr;
    return path ? qtPath(path->filename()) : pictureName;
}

std::filesystem::path ShareSheet::file() {
    if (const auto* path = std::get_if<std::filesystem::path>(&*item_)) return *path;
    const auto* picture = std::get_if<UIImage>(&*item_);
    if (!picture || !madeFile_.empty()) return madeFile_;
    const auto png = imageIO_.pngRepresentation(*picture);
    const auto folder = fileManager_.temporaryDirectory() /
                        QUuid::createUuid().toString(QUuid::Id128).toStdString();
    if (png && fileManager_.createDirectory(folder) &&
        fileManager_.writeFile(folder / pictureName, *png, WriteExisting::refuse)) {
        madeFile_ = folder / pictureName;
    }
    return madeFile_;
}

void ShareSheet::copy() {
    if (!item_) return;
    auto* data = new QMimeData;
    if (const auto* text = std::get_if<std::string>(&*item_)) {
        data->setText(QString::fromStdString(*text));
    } else {
        if (const auto* picture = std::get_if<UIImage>(&*item_)) {
            const Pyramid pyramid = Pyramid::of(*picture);
            if (!pyramid.levels.empty()) data->setImageData(pyramid.levels.front());
        }
        if (const auto path = file(); !path.empty()) {
            data->setUrls({QUrl::fromLocalFile(qtPath(path))});
        }
    }
    QGuiApplication::clipboard()->setMimeData(data);
    close();
}

bool ShareSheet::saveAs(const QUrl& target) {
    if (!item_) return false;
    const auto contents = fileManager_.contentsOfFile(file());
    const bool saved = contents && fileManager_.writeFile(target.toLocalFile().toStdString(),
                                                          *contents, WriteExisting::replace);
    if (saved) close();
    return saved;
}

void ShareSheet::showInFolder() {
    if (!item_) return;
    QDesktopServices::openUrl(QUrl::fromLocalFile(qtPath(file().parent_path())));
    close();
}

void ShareSheet::openWith() {
    if (!item_) return;
    QDesktopServices::openUrl(QUrl::fromLocalFile(qtPath(file())));
    close();
}

void ShareSheet::mail() {
    if (!item_) return;
    QStringList arguments;
    if (const auto* text = std::get_if<std::string>(&*item_)) {
        arguments << "--body" << QString::fromStdString(*text);
    } else {
        arguments << "--attach" << qtPath(file());
    }
    QProcess::startDetached("xdg-email", arguments);
    close();
}

void ShareSheet::close() {
    item_.reset();
    emit changed();
}

}  // namespace quillmere
