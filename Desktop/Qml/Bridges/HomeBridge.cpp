#include "Desktop/Qml/Bridges/HomeBridge.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QScreen>

#include "Desktop/Qml/Pictures/PastedPicture.h"

namespace quillmere {
namespace {

std::filesystem::path pathOf(const QUrl& file) { return file.toLocalFile().toStdString(); }

}  // namespace

HomeBridge::HomeBridge(const Ports& ports, QObject* parent)
    : Bridge(parent), ports_(ports), alert_(ports.home.alert), library_(ports.photoLibrary) {
    HomeView& home = ports_.home;
    watch(home.vm.showSettings, &HomeBridge::showSettingsChanged);
    watch(home.vm.enableCrop, &HomeBridge::enableCropChanged);
    watch(home.showingImagePicker, &HomeBridge::pickersChanged);
    watch(home.showingVideoPicker, &HomeBridge::pickersChanged);
    watch(home.showingDocumentPicker, &HomeBridge::pickersChanged);
    watch(home.selectMultiple, &HomeBridge::pickersChanged);
    watch(home.showImageCropper, &HomeBridge::updateCropper);
    watch(home.moreAppsRandomIndex, &HomeBridge::moreAppChanged);
    watch(ports_.waysIn.isLoading, &HomeBridge::loadingChanged);
}

void HomeBridge::updateCropper() {
    const bool shows = ports_.home.showImageCropper.get();
    if (shows == (cropper_ != nullptr)) return;
    letGo(cropper_);
    if (shows) {
        cropper_ = std::make_unique<CropBridge>(
            ImageCropper(ports_.home.tmpInputImage, ports_.home.showImageCropper,
                         [this](const UIImage& image) { ports_.home.cropped(image); }),
            ports_.graphics);
    }
    emit cropperChanged();
}

void HomeBridge::picked() {
    if (!showsVideoPicker() && !showsPicturePicker()) return;  // picked already
    std::vector<PHPickerResult> results;
    for (const std::string& identifier : library_.selected()) {
        if (auto result = ports_.photoLibrary.pickerResultForAsset(identifier)) {
            results.push_back(*std::move(result));
        }
    }
    ports_.waysIn.picked(results);
}

void HomeBridge::filePicked(const QUrl& file) {
    ports_.waysIn.filePicked(file.isEmpty() ? std::nullopt : std::optional(pathOf(file)));
}

void HomeBridge::open(const QList<QUrl>& files) {
    std::vector<std::filesystem::path> paths;
    for (const QUrl& file : files) paths.push_back(pathOf(file));
    ports_.waysIn.open(paths);
}

void HomeBridge::paste() {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (!data) return;
    if (data->hasUrls()) return open(data->urls());
    if (auto picture = pictureIn(*data, ports_.imageIO)) ports_.waysIn.paste(*std::move(picture));
}

bool HomeBridge::showsMoreApps() const {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen && ports_.home.showsMoreApps(screen->size().height());
}

}  // namespace quillmere
