#include "Desktop/Qml/Bridges/AppBridge.h"

#include <QColor>
#include <numbers>
#include <utility>

#include "Quillmere/Views/Common/LoadingView.h"
#include "Quillmere/Views/Detail/ImageConversionProgressView.h"

namespace quillmere {
namespace {

QColor qt(const ImageConversionProgressView::Colour& colour) {
    return QColor::fromRgbF(static_cast<float>(colour.red), static_cast<float>(colour.green),
                            static_cast<float>(colour.blue));
}

}  // namespace

AppBridge::AppBridge(const HomeBridge::Ports& home, Screens screens, UserDefaults& userDefaults,
                     const Localization& localization, const Bundles& bundles,
                     ShareSheet& shareSheet, QtAlert& alert)
    : homeView_(home.home),
      screens_(std::move(screens)),
      userDefaults_(userDefaults),
      localization_(localization),
      bundles_(bundles),
      shareSheet_(shareSheet),
      home_(home),
      alert_(alert.alert),
      ads_(screens_.ads) {
    watch(homeView_.isShowingDetailView, &AppBridge::updateDetail);
    watch(homeView_.vm.showSettings, &AppBridge::updateSettings);
}

QVariantList AppBridge::moreApps() const {
    QVariantList list;
    for (const MoreApp& app : allMoreApps) {
        list.push_back(QVariantMap{{"title", app.title}, {"icon", app.icon}});
    }
    return list;
}

QVariantMap AppBridge::conversionMeasures() const {
    using View = ImageConversionProgressView;
    // QML's springs are told what a step of 16 ms adds to the speed, per second and unit.
    constexpr double step = 0.016;
    constexpr double frequency = 2 * std::numbers::pi / View::springResponse;
    return {{"dimOpacity", View::dimOpacity},
            {"cardRadius", View::cardRadius},
            {"cardVerticalPadding", View::cardVerticalPadding},
            {"cardHorizontalPadding", View::cardHorizontalPadding},
            {"cardSpacing", View::cardSpacing},
            {"cardStartScale", View::cardStartScale},
            {"cardShadowOpacity", View::cardShadowOpacity},
            {"cardShadowRadius", View::cardShadowRadius},
            {"cardShadowOffset", View::cardShadowOffset},
            {"cardOutlineOpacity", View::cardOutlineOpacity},
            {"ringSize", View::ringSize},
            {"ringWidth", View::ringWidth},
            {"ringTrackOpacity", View::ringTrackOpacity},
            {"gradientTopLeft", qt(View::gradientTopLeft)},
            {"gradientBottomRight", qt(View::gradientBottomRight)},
            {"percentageSize", View::percentageSize},
            {"titleSize", View::titleSize},
            {"noticeSize", View::noticeSize},
            {"noticeOpacity", View::noticeOpacity},
            {"noticePadding", View::noticePadding},
            {"spring", frequency * frequency * step},
            {"springDamping", 2 * View::springDamping * frequency * step},
            {"progressMilliseconds", View::progressSeconds * 1000}};
}

QVariantMap AppBridge::loadingMeasures() const {
    return {{"boxWidthShare", LoadingView::boxWidthShare},
            {"boxHeightShare", LoadingView::boxHeightShare},
            {"boxCornerRadius", LoadingView::boxCornerRadius},
            {"contentBlurRadius", LoadingView::contentBlurRadius}};
}

QVariantMap AppBridge::offers() const {
    const ProjectSettings& edition = screens_.share.settings;
    return {{"mail", !edition.supportAddress.empty()},
            {"inquiry", !edition.inquiryEndpoint.empty()},
            {"invitation", !edition.storeLink.empty()},
            {"review", !edition.reviewLink.empty()},
            {"moreApps", !edition.makerStorePage.empty()}};
}

QUrl AppBridge::sampleAt(const HomeView::Sample& sample) const {
    const auto file = bundles_.bundleForClass("HomeView").urlForResource(sample.resource, "png");
    return file ? QUrl::fromLocalFile(qt(file->string())) : QUrl();
}

void AppBridge::updateDetail() {
    const bool shows = homeView_.isShowingDetailView.get();
    const auto image = homeView_.inputImage.get();
    if (!shows) {
        letGo(preview_);
        letGo(share_);
        letGo(detail_);
        emit previewChanged();
        emit shareChanged();
        emit detailChanged();
        return;
    }
    if (!image) return;
    letGo(detail_);
    detail_ = std::make_unique<DetailBridge>(
        screens_.detail({*image, homeView_.inputVideoUrl.get(), homeView_.pickerResults.get()}),
        screens_.banner, userDefaults_);
    connect(detail_.get(), &DetailBridge::previewChanged, this, &AppBridge::updatePreview);
    connect(detail_.get(), &DetailBridge::shareChanged, this, &AppBridge::updateShare);
    connect(detail_.get(), &DetailBridge::sheetsChanged, this, &AppBridge::updateSettings);
    detail_->appear();
    emit detailChanged();
}

void AppBridge::back() {
    const auto leave = [this] { homeView_.isShowingDetailView.set(false); };
    if (!detail_ || !detail_->view().asksFirst(leave)) leave();
}

bool AppBridge::mayClose() {
    return !detail_ || !detail_->view().asksFirst([this] { emit closeAgreed(); });
}

void AppBridge::openFiles(const QList<QUrl>& files) {
    // A conversion that is under way is not thrown away for what came in between.
    if (detail_ && (detail_->isConverting() || detail_->isLoading())) return;
    back();
    // The home screen has to be there: its appearance clears the work files of what was before.
    QMetaObject::invokeMethod(
        this, [this, files] { home_.open(files); }, Qt::QueuedConnection);
}

void AppBridge::updatePreview() {
    const bool shows = detail_ && detail_->showsVideoPreview();
    if (shows == (preview_ != nullptr)) return;
    letGo(preview_);
    if (shows) {
        preview_ =
            std::make_unique<PreviewBridge>(screens_.preview(*detail_->view().vm().outputVideoUrl));
    }
    if (detail_) shows ? detail_->disappear() : detail_->appear();
    emit previewChanged();
}

void AppBridge::updateShare() {
    const bool shows = detail_ && detail_->showsShareView();
    if (shows == (share_ != nullptr)) return;
    letGo(share_);
    if (shows) {
        share_ = std::make_unique<ShareBridge>(screens_.share, *detail_->view().result());
    }
    emit shareChanged();
}

void AppBridge::updateSettings() {
    const bool shows = homeView_.vm.showSettings.get() || (detail_ && detail_->showsSettings());
    if (shows == (settings_ != nullptr)) return;
    letGo(report_);
    letGo(settings_);
    if (shows) {
        settings_ = std::make_unique<SettingsBridge>(screens_.settings, screens_.mail);
        connect(settings_.get(), &SettingsBridge::reportChanged, this, &AppBridge::updateReport);
    }
    emit reportChanged();
    emit settingsChanged();
}

void AppBridge::updateReport() {
    const bool shows = settings_ && settings_->showsReport();
    if (shows == (report_ != nullptr)) return;
    letGo(report_);
    if (shows) {
        report_ = std::make_unique<ReportBridge>(screens_.report);
        connect(report_.get(), &ReportBridge::dismissed, settings_.get(),
                [settings = settings_.get()] { settings->setShowsReport(false); });
    }
    emit reportChanged();
}

QString AppBridge::percentage(double fraction) {
    return qt(ImageConversionProgressView::percentage(static_cast<float>(fraction)));
}

}  // namespace quillmere
