#include "Quillmere/QuillmereApp.h"

#include "Quillmere/Models/Services/AnalyticsEvents.h"

namespace quillmere {

QuillmereApp::QuillmereApp(const Platform& platform)
    : platform_(platform),
      catalogue_(platform.coreML, platform.bundles),
      warmUp_(catalogue_, platform.coreML, platform.content.dispatch, platform.content.console),
      remoteConfigClient_([this] {
          return std::make_shared<RemoteConfigClient>(platform_.remoteConfig, warmUp_,
                                                      platform_.content.console);
      }),
      appDelegate_(platform.services, platform.adPrivacy, remoteConfigClient_),
      contentView_(platform.content, platform.settings.testDeviceIdentifiers) {}

void QuillmereApp::scenePhaseChanged(ScenePhase phase) {
    switch (phase) {
        case ScenePhase::background:
            notificationCenter_.post(cancelSaveVideo);
            platform_.analytics.logEventWithName(eventName("AppGoBackground"), std::nullopt);
            return;
        case ScenePhase::active:
            platform_.analytics.logEventWithName(eventName("AppBecomeActive"), std::nullopt);
            platform_.content.appOpenAds.showAdIfAvailable();
            return;
        case ScenePhase::inactive:
            return;
    }
}

}  // namespace quillmere
