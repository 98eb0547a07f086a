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
#include "Quillmere/Models/Services/LocalizedReason.h"

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

Result<std::filesystem::path> ShareSheet::file() {
    if (const auto* path = std::get_if<std::filesystem::path>(&*item_)) return linkTo(*path);
    return fileOf(std::get<UIImage>(*item_));
}

Result<std::filesystem::path> ShareSheet::makeFolder() {
    auto folder = handedOut_.path() / QUuid::createUuid().toString(QUuid::Id128).toStdString();
    if (const auto made = fileManager_.createDirectory(folder); !made) return made.error();
    return folder;
}

Result<std::filesystem::path> ShareSheet::linkTo(const std::filesystem::path& workFile) {
    const auto folder = makeFolder();
    if (!folder) return folder.error();
    const auto link = *folder / workFile.filename();
    std::error_code failed;
    std::filesystem::create_hard_link(workFile, link, failed);
    if (!failed) return link;
    if (const auto copied = fileManager_.copyItem(workFile, link); !copied) return copied.error();
    return link;
}

Result<std::filesystem::path> ShareSheet::fileOf(const UIImage& picture) {
    if (!madeFile_.empty() && madeOf_.sameAs({picture})) return madeFile_;
    const auto png = imageIO_.pngRepresentation(picture);
    if (!png) return png.error();
    const auto folder = makeFolder();
    if (!folder) return folder.error();
    const auto path = *folder / pictureName;
    if (const auto written = fileManager_.writeFile(path, *png, WriteExisting::refuse); !written) {
        return written.error();
    }
    madeOf_ = {picture};
    return madeFile_ = path;
}

std::unique_ptr<QMimeData> ShareSheet::dataOf(const UIImage& picture) {
    auto data = std::make_unique<QMimeData>();
    const Pyramid pyramid = Pyramid::of(picture);
    if (!pyramid.levels.empty()) data->setImageData(pyramid.levels.front());
    if (const auto path = fileOf(picture)) data->setUrls({QUrl::fromLocalFile(qtPath(*path))});
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
        const auto copied = file();
        if (!copied) return end(copied.error());
        data->setUrls({QUrl::fromLocalFile(qtPath(*copied))});
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

Result<void> ShareSheet::writeTo(const std::filesystem::path& target) {
    const auto source = file();
    if (!source) return source.error();
    const auto contents = fileManager_.contentsOfFile(*source);
    if (!contents) return contents.error();
    return fileManager_.writeFile(target, *contents, WriteExisting::replace);
}

void ShareSheet::saveAs(const QUrl& target) {
    if (item_) end(writeTo(target.toLocalFile().toStdString()));
}

void ShareSheet::showInFolder() {
    if (!item_) return;
    const auto shown = file();
    if (!shown) return end(shown.error());
    QDesktopServices::openUrl(QUrl::fromLocalFile(qtPath(shown->parent_path())));
    close();
}

void ShareSheet::openWith() {
    if (!item_) return;
    const auto shown = file();
    if (!shown) return end(shown.error());
    QDesktopServices::openUrl(QUrl::fromLocalFile(qtPath(*shown)));
    close();
}

void ShareSheet::mail() {
    if (!item_) return;
    QStringList arguments;
    if (const auto* text = std::get_if<std::string>(&*item_)) {
        arguments << "--body" << QString::fromStdString(*text);
    } else {
        const auto attached = file();
        if (!attached) return end(attached.error());
        arguments << "--attach" << qtPath(*attached);
    }
    QProcess::startDetached("xdg-email", arguments);
    close();
}

void ShareSheet::end(const Result<void>& outcome) {
    if (outcome) return close();
    alert_.alert.set(AlertTypes::defaultButton(localization_.localizedString("Error"),
                                               localizedReason(outcome.error(), localization_)));
}

void ShareSheet::close() {
    item_.reset();
    emit changed();
}

}  // namespace quillmere
