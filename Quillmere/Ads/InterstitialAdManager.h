// The ad of a conversion: when it is loaded.
#pragma once

#include <memory>
#include <string>

#include "Platform/AdLibrary/AdLibrary.h"
#include "Platform/Application/Console.h"

namespace quillmere {

/// Holds one ad at most. A used one stays until the next has come, so a reload that fails leaves a
/// used one behind. One instance for the process. Main thread.
class InterstitialAdManager : public GADFullScreenContentDelegate,
                              public std::enable_shared_from_this<InterstitialAdManager> {
public:
    InterstitialAdManager(GADMobileAds& mobileAds, Console& console, std::string adUnitID)
        : mobileAds_(mobileAds), console_(console), adUnitID_(std::move(adUnitID)) {}

    /// Null until the first one is loaded.
    GADFullScreenAdRef interstitial;

    void loadAd();
    void adDidDismissFullScreenContent() override { loadAd(); }

private:
    GADMobileAds& mobileAds_;
    Console& console_;
    const std::string adUnitID_;
};

}  // namespace quillmere
