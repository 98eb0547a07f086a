#include "Quillmere/Views/Detail/DetailView.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Base/FormatString.h"
#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Models/Services/ResolutionLimit.h"
#include "Quillmere/Views/Detail/ImageFormatSelectionView.h"

namespace quillmere {
namespace {

std::string wholeNumber(double value) {
    return std::to_string(static_cast<long long>(std::trunc(value)));
}

std::string textOf(Size size) { return wholeNumber(size.width) + " x " + wholeNumber(size.height); }

}  // namespace

DetailView::DetailView(const DetailPorts& ports, const VideoToolbox& videoToolbox,
                       DetailInput input)
    : sizeLimit(resolutionLimit(ports.userDefaults)),
      currentImageFormat(UserDefaultsHelper::imageFormat(ports.userDefaults)),
      ports_(ports),
      videoToolbox_(videoToolbox),
      input_(std::move(input)),
      vm_(std::make_shared<DetailViewModel>(ports)) {
    reactions_.push_back(showingSettingsView.subscribe([this](bool) { limitMayHaveChanged(); }));
    reactions_.push_back(showingImageFormatSelection.subscribe([this](bool showing) {
        if (!showing) currentImageFormat.set(UserDefaultsHelper::imageFormat(ports_.userDefaults));
    }));
    reactions_.push_back(
        vm_->videoProgress.subscribe([this](float progress) { showProgress(progress); }));
    reactions_.push_back(vm_->isConverting.subscribe([this](bool converting) {
        if (converting) return;
        question.set(std::nullopt);
        isStopping.set(false);
    }));
}

void DetailView::appear() {
    if (!vm_->originalImage) vm_->prepare(input_.image, input_.videoUrl, input_.pickerResults);
    currentImageFormat.set(UserDefaultsHelper::imageFormat(ports_.userDefaults));
    showBannerAds.set(true);
}

bool DetailView::showsVideoPreview() const {
    return vm_->isShowingVideoPreview.get() && vm_->outputVideoUrl;
}

DetailView::Cover DetailView::cover() const {
    if (!vm_->isConverting.get()) return Cover::none;
    return vm_->isVideoProcessing.get() ? Cover::loading : Cover::conversion;
}

std::string DetailView::loadingTitle() const {
    return vm_->isVideoProcessing.get() ? std::string() : text("Converting");
}

std::vector<std::string> DetailView::progressLines() const {
    if (isStopping.get()) return {text(isVideo() ? "StoppingVideo" : "StoppingBatch")};
    const auto picture = vm_->batchPicture.get();
    if (!picture) return {};
    if (picture->isHeld) return {formatString(text("BatchIsHeld"), {nameOf(*picture)})};
    std::vector<std::string> lines{placeOf(*picture)};
    if (!picture->name.empty()) lines.push_back(picture->name);
    return lines;
}

std::string DetailView::placeOf(const DetailViewModel::BatchPicture& picture) const {
    return formatString(text("BatchPicture"),
                        {std::to_string(picture.number), std::to_string(picture.count)});
}

std::string DetailView::nameOf(const DetailViewModel::BatchPicture& picture) const {
    return picture.name.empty() ? placeOf(picture) : picture.name;
}

void DetailView::stopTapped() {
    asksFirst([] {});
}

bool DetailView::asksFirst(std::function<void()> goOn) {
    const Cover now = cover();
    if (now == Cover::none || isStopping.get()) return false;
    const char* what = "StopConversionQuestion";
    std::string notice = text("StopNotice");
    if (now == Cover::loading) what = isVideo() ? "StopVideoQuestion" : "StopBatchQuestion";
    if (now == Cover::loading && !isVideo()) {
        const auto picture = vm_->batchPicture.get();
        notice = picture && picture->isHeld
                     ? formatString(text("StopHeldBatchNotice"), {nameOf(*picture)})
                     : text("StopBatchNotice");
    }
    const auto stop = [this, goOn = std::move(goOn)] {
        isStopping.set(true);
        vm_->stopWork();
        goOn();
    };
    question.set(AlertTypes::twoButton(text(what), std::move(notice),
                                       {text("Stop"), AlertButton::Role::destructive, stop},
                                       {text("KeepGoing"), AlertButton::Role::cancel, {}}));
    return true;
}

void DetailView::showProgress(float progress) {
    progressDisplay.set(vm_->isVideoProcessing.get() ? std::optional(progress) : std::nullopt);
}

std::optional<UIImage> DetailView::result() const {
    return vm_->convertedImages.get()[static_cast<std::size_t>(rawValue(vm_->selectedStyle.get()))];
}

std::vector<std::string> DetailView::linesWithoutResult() const {
    if (vm_->selectedStyle.get() != EnhanceStyle::rapidHQ) return {text("Unconverted")};
    std::vector<std::string> lines{text("VideoSuperResolutionNoPreviewTitle")};
    if (const auto expected = vm_->rapidHQExpectedSize.get()) {
        lines.push_back(
            formatString(text("VideoSuperResolutionResolutionFormat"),
                         {wholeNumber(expected->width), wholeNumber(expected->height)}));
        lines.push_back(text("VideoSuperResolutionWillApplyOnSave"));
    } else if (const auto limits = vm_->rapidHQSizeLimits()) {
        lines.push_back(
            formatString(text("VideoSuperResolutionUnsupportedResolution"),
                         {wholeNumber(limits->sourceWidth), wholeNumber(limits->sourceHeight),
                          wholeNumber(limits->limitWidth), wholeNumber(limits->limitHeight)}));
        lines.push_back(text("VideoSuperResolutionUnsupportedHint"));
    } else {
        lines.push_back(text("VideoSuperResolutionUnsupportedResolutionGeneric"));
    }
    return lines;
}

std::optional<std::string> DetailView::tooBigNotice() const {
    const double limit = sizeLimit.get();
    const Size size = input_.image.size();
    if (limit >= size.width && limit >= size.height) return std::nullopt;
    return formatString(text("TooBigImageNotice"), {wholeNumber(limit)});
}

std::string DetailView::sourceSize() const { return textOf(input_.image.size()); }

std::string DetailView::resultSize() const {
    const auto image = result();
    return image ? textOf(image->size()) : std::string();
}

void DetailView::dragDivider(double x, double width, bool rightToLeft) {
    if (!(width > 0)) return;
    const double fromLeft = std::clamp(x, 0.0, width) / width;
    sliderPosition.set(rightToLeft ? 1 - fromLeft : fromLeft);
}

std::vector<std::vector<DetailView::StyleButton>> DetailView::styleButtons() const {
    const EnhanceStyle selected = vm_->selectedStyle.get();
    std::vector<std::vector<StyleButton>> rows;
    for (const auto& row : styleRows(isVideo(), ports_.device, videoToolbox_)) {
        rows.emplace_back();
        for (const EnhanceStyle style : row) {
            rows.back().push_back({style, ports_.localization.localizedString(displayKey(style)),
                                   styleLabelColor(style, selected, isVideo()), style == selected});
        }
    }
    return rows;
}

void DetailView::styleTapped(EnhanceStyle style) {
    vm_->selectedStyle.set(style);
    vm_->convert();
}

const char* DetailView::formatName() const {
    const auto format = currentImageFormat.get();
    const auto& rows = ImageFormatSelectionView::formatRows;
    return std::find_if(rows.begin(), rows.end(),
                        [&](const auto& row) { return row.format == format; })
        ->name;
}

void DetailView::mainButtonTapped() {
    if (isVideo()) return vm_->startVideoSave();
    const auto& results = vm_->pickerResults;
    results && results->size() > 1 ? vm_->saveImages() : vm_->saveImage();
}

void DetailView::limitMayHaveChanged() {
    const double limit = resolutionLimit(ports_.userDefaults);
    if (limit == sizeLimit.get()) return;
    sizeLimit.set(limit);
    vm_->resetConvertedImages();
}

void DetailView::screenshotTaken() {
    ports_.analytics.logEventWithName(eventName("ScreenshotTaken"), std::nullopt);
    ports_.ads->showConvertAd();
}

}  // namespace quillmere
