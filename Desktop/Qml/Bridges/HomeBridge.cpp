#include "Desktop/Qml/Bridges/HomeBridge.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>

#include "Quillmere/Views/Home/DocumentPicker.h"
#include "Quillmere/Views/Home/ImagePicker.h"
#include "Quillmere/Views/Home/VideoPicker.h"

namespace quillmere {
namespace {

bool isVideo(const PHPickerResult& result) {
    return !result.itemProvider->canLoadObjectOfClassUIImage();
}

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

void HomeBridge::pickPictures(const std::vector<PHPickerResult>& results) {
    ImagePicker(
        {ports_.home.tmpInputImage, ports_.home.pickerResults, ports_.home.showingImagePicker},
        ports_.home.selectMultiple.get(), ports_.imageIO)
        .didFinishPicking(results);
}

void HomeBridge::pickVideo(const std::vector<PHPickerResult>& results) {
    VideoPicker{ports_.dispatch,
                ports_.fileManager,
                ports_.videoFiles,
                ports_.localization,
                ports_.home.inputVideoUrl,
                ports_.home.alert,
                ports_.home.showingVideoPicker}
        .didFinishPicking(results);
}

void HomeBridge::picked() {
    if (!showsVideoPicker() && !showsPicturePicker()) return;  // picked already
    std::vector<PHPickerResult> results;
    for (const std::string& identifier : library_.selected()) {
        if (auto result = ports_.photoLibrary.pickerResultForAsset(identifier)) {
            results.push_back(*std::move(result));
        }
    }
    showsVideoPicker() ? pickVideo(results) : pickPictures(results);
}

void HomeBridge::pickCancelled() { showsVideoPicker() ? pickVideo({}) : pickPictures({}); }

void HomeBridge::refuse(const QString& file) {
    ports_.home.alert.set(AlertTypes::defaultButton(
        ports_.localization.localizedString("Error"),
        QString(qt(ports_.localization.localizedString("FailedToOpenFile")))
            .replace("%@", file)
            .toStdString()));
}

void HomeBridge::filePicked(const QUrl& file) {
    ports_.home.showingDocumentPicker.set(false);
    if (file.isEmpty()) return;
    const std::filesystem::path path = file.toLocalFile().toStdString();
    // What can't be read never gets as far as the picker, to which that would be a broken promise.
    const auto data = ports_.fileManager.contentsOfFile(path);
    if (!data || !ports_.imageIO.imageWithData(*data)) return refuse(file.fileName());
    DocumentPicker{ports_.home.tmpInputImage, ports_.home.pickerResults, ports_.fileManager,
                   ports_.imageIO}
        .didPickDocumentsAtURLs({path});
}

void HomeBridge::open(const QList<QUrl>& files) {
    std::vector<PHPickerResult> results;
    for (const QUrl& file : files) {
        const auto result = ports_.photoLibrary.pickerResultForAsset(
            DesktopPhotoLibrary::identifierForFile(file.toLocalFile().toStdString()));
        if (!result) return refuse(file.fileName());
        results.push_back(*result);
    }
    if (results.empty()) return;
    if (isVideo(results.front())) return pickVideo({results.front()});
    std::erase_if(results, isVideo);
    ports_.home.selectMultiple.set(results.size() > 1);
    pickPictures(results);
}

void HomeBridge::paste() {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (!data) return;
    if (data->hasUrls()) return open(data->urls());
    if (!data->hasImage()) return;
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!QGuiApplication::clipboard()->image().save(&buffer, "PNG")) return;
    const auto picture =
        ports_.imageIO.imageWithData(std::as_bytes(std::span(png.constData(), png.size())));
    if (!picture) return;
    ports_.home.pickerResults.set(std::nullopt);
    ports_.home.tmpInputImage.set(*picture);
}

}  // namespace quillmere
