#include "Desktop/Qml/Bridges/DetailBridge.h"

#include <QVariantMap>
#include <utility>

namespace quillmere {

DetailBridge::DetailBridge(std::unique_ptr<DetailView> view, MakeBanner makeBanner,
                           UserDefaults& userDefaults, QObject* parent)
    : Bridge(parent),
      view_(std::move(view)),
      makeBanner_(std::move(makeBanner)),
      userDefaults_(userDefaults),
      alert_(view_->vm().alert),
      question_(view_->question) {
    DetailViewModel& vm = view_->vm();
    watch(vm.convertedImages, &DetailBridge::resultChanged);
    watch(vm.selectedStyle, &DetailBridge::resultChanged);
    watch(vm.rapidHQExpectedSize, &DetailBridge::resultChanged);
    watch(view_->sizeLimit, &DetailBridge::resultChanged);
    watch(view_->sliderPosition, &DetailBridge::sliderChanged);
    watch(view_->currentImageFormat, &DetailBridge::formatChanged);
    watch(vm.isConverting, &DetailBridge::coverChanged);
    watch(vm.isVideoProcessing, &DetailBridge::coverChanged);
    watch(vm.batchPicture, &DetailBridge::coverChanged);
    watch(view_->isStopping, &DetailBridge::coverChanged);
    watch(vm.imageConversionProgress, &DetailBridge::progressChanged);
    watch(view_->progressDisplay, &DetailBridge::progressChanged);
    watch(view_->showingSettingsView, &DetailBridge::sheetsChanged);
    watch(view_->showingImageFormatSelection, &DetailBridge::updateFormat);
    watch(vm.isShowShare, &DetailBridge::shareChanged);
    watch(vm.isShowingVideoPreview, &DetailBridge::previewChanged);
    watch(view_->showBannerAds, &DetailBridge::updateBanner);
}

QStringList DetailBridge::listOf(const std::vector<std::string>& lines) {
    QStringList list;
    for (const std::string& line : lines) list << qt(line);
    return list;
}

QVariantList DetailBridge::styleRows() const {
    QVariantList rows;
    for (const auto& row : view_->styleButtons()) {
        QVariantList buttons;
        for (const auto& button : row) {
            buttons.push_back(QVariantMap{{"style", rawValue(button.style)},
                                          {"text", qt(button.text)},
                                          {"isSelected", button.isSelected},
                                          {"isGray", button.color == StyleLabelColor::gray}});
        }
        rows.push_back(buttons);
    }
    return rows;
}

void DetailBridge::styleTapped(int style) {
    const auto known = enhanceStyleFromRawValue(style);
    if (known && !isCovered()) view_->styleTapped(*known);
}

void DetailBridge::mainButtonTapped() {
    if (!isCovered()) view_->mainButtonTapped();
}

void DetailBridge::updateFormat() {
    const bool shows = view_->showingImageFormatSelection.get();
    if (shows == (format_ != nullptr)) return;
    letGo(format_);
    if (shows) {
        format_ = std::make_unique<FormatBridge>(userDefaults_, view_->showingImageFormatSelection);
    }
    emit sheetsChanged();
}

void DetailBridge::updateBanner() {
    const bool shows = view_->showBannerAds.get();
    if (shows == (banner_ != nullptr)) return;
    banner_ = shows ? makeBanner_() : nullptr;
    emit bannerChanged();
}

}  // namespace quillmere
