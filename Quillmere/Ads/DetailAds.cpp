#include "Quillmere/Ads/DetailAds.h"

#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Services/RemoteConfigClient.h"
#include "Quillmere/Models/Services/Windows.h"

namespace quillmere {

void DetailAds::loadSaveAd() {
    ports_.mobileAds.loadWithAdUnitID(
        GADFullScreenAdFormat::interstitial, saveAdUnitID_,
        [weak = weak_from_this()](const Result<GADFullScreenAdRef>& ad) {
            const auto self = weak.lock();
            if (!self) return;
            if (!ad) return self->ports_.console.print(ad.error().localizedDescription);
            self->interstitial_ = *ad;
            self->interstitial_->setFullScreenContentDelegate(weak);
        });
}

void DetailAds::showConvertAd() {
    const auto saves = ports_.userDefaults.integerForKey(reviewCountKey);
    const auto threshold =
        ports_.remoteConfig.objectForKeyedSubscript(RemoteConfigKey::convertAdDisplayThreshold)
            .integerValue;
    if (saves < threshold) return;
    const GADFullScreenAdRef ad = ports_.conversionAds.interstitial;
    if (!ad) {
        return ports_.analytics.logEventWithName(eventName("ConvertAdsNotLoaded"), std::nullopt);
    }
    ports_.analytics.logEventWithName(eventName("ConvertAdsLoaded"), std::nullopt);
    UIViewController* root = rootOfFirstWindow(ports_.application);
    if (root) ad->presentFromRootViewController(*root);
}

bool DetailAds::showSaveAd() {
    const auto saves = ports_.userDefaults.integerForKey(reviewCountKey);
    if (saves < 2 || saves % 10 == 1) return false;
    if (!interstitial_) {
        ports_.analytics.logEventWithName(eventName("SaveAdsNotLoaded"), std::nullopt);
        return true;
    }
    ports_.analytics.logEventWithName(eventName("SaveAdsLoaded"), std::nullopt);
    if (UIViewController* root = rootOfFirstWindow(ports_.application)) {
        interstitial_->presentFromRootViewController(*root);
        isPresentingSaveAd_ = true;
    }
    return true;
}

void DetailAds::adDidDismissFullScreenContent() {
    if (!isPresentingSaveAd_) return;
    isPresentingSaveAd_ = false;
    loadSaveAd();
}

}  // namespace quillmere
