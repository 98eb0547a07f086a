// The ads of one detail screen: that of its saves, which it loads, and that of its conversions.
#pragma once

#include <memory>
#include <string>

#include "Platform/AdLibrary/AdLibrary.h"
#include "Platform/Analytics/Analytics.h"
#include "Platform/Application/Console.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/RemoteConfig/RemoteConfig.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "Quillmere/Ads/InterstitialAdManager.h"

namespace quillmere {

/// Main thread. Nothing that calls these waits for them, and no failure of an ad reaches the user.
class DetailAds : public GADFullScreenContentDelegate,
                  public std::enable_shared_from_this<DetailAds> {
public:
    struct Ports {
        GADMobileAds& mobileAds;
        const UIApplication& application;
        const UserDefaults& userDefaults;
        const RemoteConfig& remoteConfig;
        Analytics& analytics;
        Console& console;
        InterstitialAdManager& conversionAds;
    };

    DetailAds(const Ports& ports, std::string saveAdUnitID)
        : ports_(ports), saveAdUnitID_(std::move(saveAdUnitID)) {}

    /// When the screen takes its input, and after each dismissal of this ad.
    void loadSaveAd();

    /// May show an ad while a conversion is under way: from as many saves on as the remote value
    /// says.
    void showConvertAd();

    /// After a saved picture has been counted. True where this save's turn is the ad's, shown or
    /// not: from the second save on, but for each whose count ends in 1. Those are the review
    /// request's.
    bool showSaveAd();

    void adDidDismissFullScreenContent() override;

private:
    Ports ports_;
    const std::string saveAdUnitID_;
    GADFullScreenAdRef interstitial_;
    bool isPresentingSaveAd_ = false;
};

}  // namespace quillmere
