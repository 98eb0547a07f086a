#include "Quillmere/Ads/AdmobBannerView.h"

#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Services/RemoteConfigClient.h"

namespace quillmere {
namespace {

UIViewController* rootOfFirstScene(const UIApplication& application) {
    const auto scenes = application.connectedScenes();
    const auto* scene = scenes.empty() ? nullptr : dynamic_cast<UIWindowScene*>(scenes.front());
    const auto windows = scene ? scene->windows() : std::vector<UIWindow*>();
    return windows.empty() ? nullptr : windows.front()->rootViewController();
}

}  // namespace

std::shared_ptr<GADBannerView> AdmobBannerView::make(const Ports& ports,
                                                     const std::string& adUnitID,
                                                     double screenWidth) {
    const auto banner = ports.bannerViews.anchoredAdaptiveBanner(screenWidth);
    banner->setAdUnitID(adUnitID);
    banner->setRootViewController(rootOfFirstScene(ports.application));
    GADRequest request;
    if (ports.userDefaults.integerForKey(reviewCountKey) >= collapsibleFrom &&
        ports.remoteConfig.objectForKeyedSubscript(RemoteConfigKey::showCollapsibleBanner)
            .boolValue) {
        request.extras = std::map<std::string, std::string>{{"collapsible", "bottom"}};
    }
    banner->loadRequest(request);
    return banner;
}

}  // namespace quillmere
