#include "Quillmere/Ads/AppOpenAdManager.h"

#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Services/Windows.h"

namespace quillmere {

bool AppOpenAdManager::isUsable() const {
    return appOpenAd_ && loadTime_ && ports_.now() - *loadTime_ < timeoutInterval;
}

void AppOpenAdManager::loadAd() {
    if (!hasStartCompleted_ || isLoadingAd_ || isUsable()) return;
    isLoadingAd_ = true;
    ports_.console.print("Start loading app open ad.");
    ports_.mobileAds.loadWithAdUnitID(
        GADFullScreenAdFormat::appOpen, adUnitID_,
        [weak = weak_from_this()](const Result<GADFullScreenAdRef>& ad) {
            if (const auto self = weak.lock()) self->loaded(ad);
        });
}

void AppOpenAdManager::loaded(const Result<GADFullScreenAdRef>& ad) {
    isLoadingAd_ = false;
    if (!ad) {
        appOpenAd_ = nullptr;
        loadTime_.reset();
        ports_.console.print(
            "App open ad failed to load with error: " + ad.error().localizedDescription + ".");
        return;
    }
    appOpenAd_ = *ad;
    appOpenAd_->setFullScreenContentDelegate(weak_from_this());
    loadTime_ = ports_.now();
    ports_.console.print("App open ad loaded successfully.");
}

void AppOpenAdManager::showAdIfAvailable() {
    if (ports_.userDefaults.integerForKey(reviewCountKey) < 1) return;
    if (isShowingAd_) return ports_.console.print("App open ad is already showing.");
    if (isUsable()) {
        ports_.console.print("App open ad will be displayed.");
        isShowingAd_ = true;
        UIViewController* root = rootOfKeyWindow(ports_.application);
        if (root) appOpenAd_->presentFromRootViewController(*root);
        return;
    }
    ports_.console.print("App open ad is not ready yet.");
    tellDelegate();
    loadAd();
}

void AppOpenAdManager::adWillPresentFullScreenContent() {
    ports_.console.print("App open ad is will be presented.");
}

void AppOpenAdManager::adDidDismissFullScreenContent() { endShowing("App open ad was dismissed."); }

void AppOpenAdManager::didFailToPresentFullScreenContentWithError(const Error& error) {
    endShowing("App open ad failed to present with error: " + error.localizedDescription + ".");
}

void AppOpenAdManager::endShowing(const std::string& line) {
    appOpenAd_ = nullptr;
    isShowingAd_ = false;
    ports_.console.print(line);
    tellDelegate();
    loadAd();
}

void AppOpenAdManager::tellDelegate() {
    if (const auto delegate = appOpenAdManagerDelegate.lock()) delegate->appOpenAdEnded(*this);
}

}  // namespace quillmere
