#include "Quillmere/QuillmereApp.h"

#include "Quillmere/Models/Services/AnalyticsEvents.h"

namespace quillmere {

QuillmereApp::QuillmereApp(const Platform& platform)
    : platform_(platform),
      catalogue_(platform.coreML, platform.bundles),
      warmUp_(catalogue_, platform.coreML, platform.dispatch, platform.console),
      remoteConfigClient_([this] {
          return std::make_shared<RemoteConfigClient>(platform_.remoteConfig, warmUp_,
                                                      platform_.console);
      }),
      appOpenAdManager_([this] {
          return std::make_shared<AppOpenAdManager>(
              AppOpenAdManager::Ports{platform_.mobileAds, platform_.application,
                                      platform_.userDefaults, platform_.console},
              platform_.settings.appOpenAdUnit);
      }),
      interstitialAdManager_([this] {
          return std::make_shared<InterstitialAdManager>(platform_.mobileAds, platform_.console,
                                                         platform_.settings.conversionAdUnit);
      }),
      appDelegate_(platform.services, platform.adPrivacy, remoteConfigClient_),
      contentView_({platform.dispatch, platform.consentInformation, platform.consentForm,
                    platform.mobileAds, platform.application, platform.crashLog, platform.console,
                    appOpenAdManager_, interstitialAdManager_},
                   platform.settings.testDeviceIdentifiers) {}

void QuillmereApp::scenePhaseChanged(ScenePhase phase) {
    switch (phase) {
        case ScenePhase::background:
            notificationCenter_.post(cancelSaveVideo);
            platform_.analytics.logEventWithName(eventName("AppGoBackground"), std::nullopt);
            return;
        case ScenePhase::active:
            platform_.analytics.logEventWithName(eventName("AppBecomeActive"), std::nullopt);
            appOpenAdManager_.get()->showAdIfAvailable();
            return;
        case ScenePhase::inactive:
            return;
    }
}

}  // namespace quillmere
