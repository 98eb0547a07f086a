// The home screen, its pickers and its cropper.
#pragma once

#include <QUrl>
#include <QVariantMap>
#include <memory>

#include "Desktop/Photos/DesktopPhotoLibrary.h"
#include "Desktop/Qml/Bridges/AlertBridge.h"
#include "Desktop/Qml/Bridges/CropBridge.h"
#include "Desktop/Qml/Home/LibraryModel.h"
#include "Quillmere/Views/Home/HomeView.h"
#include "Quillmere/Views/Home/WaysIn.h"

namespace quillmere {

class HomeBridge final : public Bridge {
    Q_OBJECT
    Q_PROPERTY(bool showSettings READ showSettings WRITE setShowSettings NOTIFY showSettingsChanged)
    Q_PROPERTY(bool enableCrop READ enableCrop NOTIFY enableCropChanged)
    Q_PROPERTY(bool showsPicturePicker READ showsPicturePicker NOTIFY pickersChanged)
    Q_PROPERTY(bool showsVideoPicker READ showsVideoPicker NOTIFY pickersChanged)
    Q_PROPERTY(bool showsFilePicker READ showsFilePicker NOTIFY pickersChanged)
    Q_PROPERTY(bool selectsMultiple READ selectsMultiple NOTIFY pickersChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY loadingChanged)
    Q_PROPERTY(quillmere::CropBridge* cropper READ cropper NOTIFY cropperChanged)
    /// Worked out at each appearance, as is the next.
    Q_PROPERTY(bool showsMoreApps READ showsMoreApps NOTIFY moreAppChanged)
    Q_PROPERTY(int moreApp READ moreApp NOTIFY moreAppChanged)
    Q_PROPERTY(quillmere::AlertBridge* alert READ alert CONSTANT)
    Q_PROPERTY(quillmere::LibraryModel* library READ library CONSTANT)

public:
    struct Ports {
        HomeView& home;
        WaysIn& waysIn;
        DesktopPhotoLibrary& photoLibrary;
        ImageIO& imageIO;
        Graphics& graphics;
    };
    explicit HomeBridge(const Ports& ports, QObject* parent = nullptr);

    bool showSettings() const { return ports_.home.vm.showSettings.get(); }
    void setShowSettings(bool shows) { ports_.home.vm.showSettings.set(shows); }
    bool enableCrop() const { return ports_.home.vm.enableCrop.get(); }
    bool showsPicturePicker() const { return ports_.home.showingImagePicker.get(); }
    bool showsVideoPicker() const { return ports_.home.showingVideoPicker.get(); }
    bool showsFilePicker() const { return ports_.home.showingDocumentPicker.get(); }
    bool selectsMultiple() const { return ports_.home.selectMultiple.get(); }
    CropBridge* cropper() const { return cropper_.get(); }
    bool isLoading() const { return ports_.waysIn.isLoading.get(); }
    bool showsMoreApps() const;
    int moreApp() const { return static_cast<int>(ports_.home.moreAppsRandomIndex.get()); }
    AlertBridge* alert() { return &alert_; }
    LibraryModel* library() { return &library_; }

    Q_INVOKABLE void appear() { ports_.home.appear(); }
    Q_INVOKABLE void moreAppTapped() { ports_.home.moreAppTapped(); }
    Q_INVOKABLE void illustrationTapped() { ports_.home.sampleTapped(HomeView::illustration); }
    Q_INVOKABLE void photoTapped() { ports_.home.sampleTapped(HomeView::photo); }
    Q_INVOKABLE void selectFromLibraryTapped() { ports_.home.selectFromLibraryTapped(); }
    Q_INVOKABLE void selectMultipleTapped() { ports_.home.selectMultipleFromLibraryTapped(); }
    Q_INVOKABLE void selectFromFilesTapped() { ports_.home.selectFromFilesTapped(); }
    Q_INVOKABLE void selectVideoTapped() { ports_.home.selectVideoTapped(); }
    Q_INVOKABLE void cropRowTapped() { ports_.home.cropRowTapped(); }
    Q_INVOKABLE void shareToFriendsTapped() { ports_.home.shareToFriendsTapped(); }

    /// The end of the library's picker, with its selection or without.
    Q_INVOKABLE void picked();
    Q_INVOKABLE void pickCancelled() { ports_.waysIn.picked({}); }
    /// The end of the file picker; an empty address for a cancel.
    Q_INVOKABLE void filePicked(const QUrl& file);
    /// Files that came by dropping, pasting or another program: the way of the library's picker.
    Q_INVOKABLE void open(const QList<QUrl>& files);
    /// What lies on the clipboard: files, or a picture.
    Q_INVOKABLE void paste();
    Q_INVOKABLE void cancelLoading() { ports_.waysIn.cancel(); }

signals:
    void showSettingsChanged();
    void enableCropChanged();
    void pickersChanged();
    void cropperChanged();
    void moreAppChanged();
    void loadingChanged();

private:
    void updateCropper();

    Ports ports_;
    AlertBridge alert_;
    LibraryModel library_;
    std::unique_ptr<CropBridge> cropper_;
};

}  // namespace quillmere
