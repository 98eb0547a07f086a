#include "Desktop/Qml/Composition.h"

#include <malloc.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMetaObject>
#include <QScreen>
#include <utility>

#include "Desktop/Qml/Platform/QtCharacters.h"
#include "Quillmere/Ads/AdmobBannerView.h"
#include "Quillmere/Models/Video/SuperResolutionFactor.h"

namespace quillmere {
namespace {

/// Whole pictures go back to the system when they are freed. By itself, the allocator would learn
/// from the first of them to keep such blocks, and end with far more memory than is in use. Tiles
/// and video frames are smaller, and keep their blocks.
void returnLargeBlocks() {
    constexpr int large = 8 << 20;
    mallopt(M_MMAP_THRESHOLD, large);
    mallopt(M_TRIM_THRESHOLD, large);
}

}  // namespace

Result<Composition*> Composition::make(const std::optional<ProjectSettings>& edition) {
    returnLargeBlocks();
    auto platform = DesktopPlatform::make(userLanguage(), edition);
    if (!platform) return platform.error();
    if (!(*platform)->photoLibrary()) {
        return Error{errorDomain, 1,
                     "Quillmere needs a home folder to keep pictures in, and this user has none."};
    }
    if (!(*platform)->avFoundation() || !(*platform)->audioToolbox()) {
        return Error{errorDomain, 1,
                     "The part of Quillmere that reads videos is missing. Install it again."};
    }
    return new Composition(*std::move(platform));
}

Composition::Composition(std::unique_ptr<DesktopPlatform> platform)
    : platform_(std::move(platform)),
      shareSheet_(platform_->fileManager(), platform_->imageIO(), platform_->localization(),
                  alert_) {
    pumpMainQueue();
    DesktopPlatform& p = *platform_;
    app_ = std::make_unique<QuillmereApp>(QuillmereApp::Platform{
        p.dispatch(), p.services(), p.ads(), p.ads(), p.consent(), p.consent(), application_,
        p.userDefaults(), p.remoteConfig(), p.coreML(), p.bundles(), p.analytics(), p.crashLog(),
        p.console(), p.projectSettings()});
    catalogue_ = std::make_unique<ModelCatalogue>(p.coreML(), p.bundles());
    engine_ = std::make_unique<TileEngine>(
        TileEngine::Ports{p.userDefaults(), p.graphics(), p.coreImage(), p.vision(), *catalogue_,
                          p.dispatch(), p.analytics(), p.localization(), p.console()});
    videoFiles_ = std::make_unique<VideoFileManager>(
        VideoFileManager::Ports{p.fileManager(), p.dateFormatter(), p.console(), firstCharacters});
    home_ = std::make_unique<HomeView>(HomeView::Ports{
        p.dispatch(), p.userDefaults(), p.analytics(), p.localization(), p.bundles(),
        p.fileManager(), p.imageIO(), *p.avFoundation(), application_, shareSheet_,
        app_->notificationCenter(), *videoFiles_, p.console(), p.projectSettings()});
    waysIn_ = std::make_unique<WaysIn>(WaysIn::Ports{
        *home_, p.dispatch(), p.fileManager(), *videoFiles_, p.imageIO(), p.localization(),
        [&library = *p.photoLibrary()](const std::filesystem::path& file) {
            return library.pickerResultForAsset(DesktopPhotoLibrary::identifierForFile(file));
        }});
    bridge_ = std::make_unique<AppBridge>(
        HomeBridge::Ports{*home_, *waysIn_, *p.photoLibrary(), p.imageIO(), p.graphics()},
        screens(), p.userDefaults(), p.localization(), p.bundles(), shareSheet_, alert_);
    p.consent().setAskUser([this](UIViewController&, const std::function<void(bool)>& answered) {
        const Localization& texts = platform_->localization();
        alert_.alert.set(AlertTypes::twoButton(
            texts.localizedString("ConsentTitle"), texts.localizedString("ConsentMessage"),
            {texts.localizedString("ConsentAllow"), AlertButton::Role::standard,
             [answered] { answered(true); }},
            {texts.localizedString("ConsentRefuse"), AlertButton::Role::cancel,
             [answered] { answered(false); }}));
    });
}

void Composition::pumpMainQueue() {
    MainQueue& queue = platform_->dispatch().mainQueue();
    queue.whenPosted([&queue] {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [&queue] { queue.runPending(); }, Qt::QueuedConnection);
    });
}

DetailPorts Composition::detailPorts() {
    DesktopPlatform& p = *platform_;
    const auto ads = std::make_shared<DetailAds>(
        DetailAds::Ports{p.ads(), application_, p.userDefaults(), p.remoteConfig(), p.analytics(),
                         p.console(), *app_->interstitialAdManager().get()},
        p.projectSettings().saveAdUnit);
    return {p.dispatch(),
            p.analytics(),
            p.localization(),
            p.userDefaults(),
            p.graphics(),
            p.imageIO(),
            {p.imageMetadata(), p.dateFormatter()},
            *p.photoLibrary(),
            *p.avFoundation(),
            p.device(),
            application_,
            review_,
            ads,
            [this](EnhanceStyle style, const UIImage& image, const TileEngine::Progress& progress,
                   const TileEngine::Completion& completion) {
                engine_->enhanceImage(style, image, progress, completion);
            },
            [&p](double width, double height) {
                return resolveSuperResolutionFactor(p.videoToolbox(), p.console(), width, height);
            },
            DetailPorts::Video{*p.audioToolbox(), p.videoToolbox(), p.coreImage(), p.fileManager(),
                               p.crashLog(), p.console(), app_->notificationCenter(),
                               [this]() -> CIContext& { return engine_->sharedCIContext(); },
                               *videoFiles_}};
}

AppBridge::Screens Composition::screens() {
    DesktopPlatform& p = *platform_;
    return {
        [this](DetailInput input) {
            return std::make_unique<DetailView>(detailPorts(), platform_->videoToolbox(),
                                                std::move(input));
        },
        [this] {
            DesktopPlatform& platform = *platform_;
            const QScreen* screen = QGuiApplication::primaryScreen();
            return AdmobBannerView::make(
                {platform.ads(), application_, platform.userDefaults(), platform.remoteConfig()},
                platform.projectSettings().bannerAdUnit, screen ? screen->size().width() : 0);
        },
        [this](std::filesystem::path video) {
            DesktopPlatform& platform = *platform_;
            return std::make_shared<VideoPreviewViewModel>(
                VideoPreviewViewModel::Ports{platform.dispatch(), platform.analytics(),
                                             platform.localization(), platform.userDefaults(),
                                             *platform.avFoundation(), *platform.photoLibrary(),
                                             application_, shareSheet_, platform.crashLog()},
                std::move(video));
        },
        SharePorts{p.dispatch(), p.analytics(), p.localization(), p.userDefaults(),
                   p.remoteConfig(), p.imageIO(), p.fileManager(), application_, shareSheet_,
                   p.crashLog(), p.console(), p.projectSettings()},
        SettingsView::Ports{p.userDefaults(), p.analytics(), p.localization(), application_,
                            shareSheet_, mail_, p.console(), p.projectSettings()},
        MailView::Ports{mail_, host_, p.localization(), p.projectSettings()},
        ReportFormView::Ports{p.dispatch(), p.urlSession(), p.localization(), application_, alert_,
                              p.crashLog(), p.projectSettings()},
        AdBridge::Ports{p.adStage(), application_, p.projectSettings()},
    };
}

}  // namespace quillmere
