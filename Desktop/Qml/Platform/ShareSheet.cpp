#include "Desktop/Qml/Platform/ShareSheet.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QDrag>
#include <QGuiApplication>
#include <QPixmap>
#include <QProcess>
#include <QStandardPaths>
#include <QUuid>

#include "Desktop/Qml/Pictures/Pyramid.h"

namespace quillmere {
namespace {

constexpr const char* pictureName = "Quillmere.png";
constexpr int thumbnailSide = 128;

QString qtPath(const std::filesystem::path& path) { return QString::fromStdString(path.string()); }

}  // namespace

void ShareSheet::present(std::vector<ActivityItem> items, UIViewController&) {
    if (items.empty()) return;
    item_ = std::move(items.front());
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
    return picture ? fileOf(*picture) : std::filesystem::path();
}

std::filesystem::path ShareSheet::fileOf(const UIImage& picture) {
    if (!madeFile_.empty() && madeOf_.sameAs({picture})) return madeFile_;
    madeOf_ = {picture};
    madeFile_.clear();
    const auto png = imageIO_.pngRepresentation(picture);
    const auto folder = fileManager_.temporaryDirectory() /
                        QUuid::createUuid().toString(QUuid::Id128).toStdString();
    if (png && fileManager_.createDirectory(folder) &&
        fileManager_.writeFile(folder / pictureName, *png, WriteExisting::refuse)) {
        madeFile_ = folder / pictureName;
    }
    return madeFile_;
}

std::unique_ptr<QMimeData> ShareSheet::dataOf(const UIImage& picture) {
    auto data = std::make_unique<QMimeData>();
    const Pyramid pyramid = Pyramid::of(picture);
    if (!pyramid.levels.empty()) data->setImageData(pyramid.levels.front());
    if (const auto path = fileOf(picture); !path.empty()) {
        data->setUrls({QUrl::fromLocalFile(qtPath(path))});
    }
    return data;
}

void ShareSheet::copy() {
    if (!item_) return;
    auto data = std::make_unique<QMimeData>();
    if (const auto* text = std::get_if<std::string>(&*item_)) {
        data->setText(QString::fromStdString(*text));
    } else if (const auto* picture = std::get_if<UIImage>(&*item_)) {
        data = dataOf(*picture);
    } else {
        data->setUrls({QUrl::fromLocalFile(qtPath(file()))});
    }
    QGuiApplication::clipboard()->setMimeData(data.release());
    close();
}

void ShareSheet::drag(const Picture& picture) {
    if (!picture.isThere()) return;
    auto* drag = new QDrag(this);  // its own end is Qt's
    auto data = dataOf(*picture.image);
    drag->setPixmap(QPixmap::fromImage(data->imageData().value<QImage>().scaled(
        thumbnailSide, thumbnailSide, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    drag->setMimeData(data.release());
    drag->exec(Qt::CopyAction);
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
