#include "Quillmere/Ads/InterstitialAdManager.h"

namespace quillmere {

void InterstitialAdManager::loadAd() {
    mobileAds_.loadWithAdUnitID(
        GADFullScreenAdFormat::interstitial, adUnitID_,
        [weak = weak_from_this()](const Result<GADFullScreenAdRef>& ad) {
            const auto self = weak.lock();
            if (!self) return;
            if (!ad) return self->console_.print(ad.error().localizedDescription);
            self->interstitial = *ad;
            self->interstitial->setFullScreenContentDelegate(weak);
        });
}

}  // namespace quillmere
