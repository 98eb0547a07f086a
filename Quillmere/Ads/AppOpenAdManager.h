// The ad that greets a returning user: when it is loaded and shown.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Base/Date.h"
#include "Platform/AdLibrary/AdLibrary.h"
#include "Platform/Application/Console.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/UserDefaults/UserDefaults.h"

namespace quillmere {

class AppOpenAdManager;

/// Told when a showing has ended or could not take place.
class AppOpenAdManagerDelegate {
public:
    virtual ~AppOpenAdManagerDelegate() = default;
    virtual void appOpenAdEnded(AppOpenAdManager& manager) = 0;
};

/// Holds one loaded ad at most; nobody waits for it, and its failures are printed lines. One
/// instance for the process. Main thread.
class AppOpenAdManager : public GADFullScreenContentDelegate,
                         public std::enable_shared_from_this<AppOpenAdManager> {
public:
    struct Ports {
        GADMobileAds& mobileAds;
        const UIApplication& application;
        const UserDefaults& userDefaults;
        Console& console;
        /// Goes on while the machine sleeps, as the clock of the queues does not.
        std::function<Date()> now = [] { return std::chrono::system_clock::now(); };
    };

    /// How long a loaded ad stays usable.
    static constexpr std::chrono::seconds timeoutInterval{14400};

    AppOpenAdManager(Ports ports, std::string adUnitID)
        : ports_(std::move(ports)), adUnitID_(std::move(adUnitID)) {}

    std::weak_ptr<AppOpenAdManagerDelegate> appOpenAdManagerDelegate;

    /// Whether the ad library has started; before that, nothing is loaded.
    void setHasStartCompleted(bool hasStartCompleted) { hasStartCompleted_ = hasStartCompleted; }

    /// Nothing happens while a load is under way or a usable ad is in hand.
    void loadAd();

    /// For the moment in which the scene becomes active. A user who has never saved a picture sees
    /// none. Where no window is key, the showing stays begun for the rest of the process, and no
    /// other one begins: nobody knows whether the ad was seen.
    void showAdIfAvailable();

    void adWillPresentFullScreenContent() override;
    void adDidDismissFullScreenContent() override;
    void didFailToPresentFullScreenContentWithError(const Error& error) override;

private:
    bool isUsable() const;
    void loaded(const Result<GADFullScreenAdRef>& ad);
    void endShowing(const std::string& line);
    void tellDelegate();

    Ports ports_;
    const std::string adUnitID_;
    GADFullScreenAdRef appOpenAd_;
    std::optional<Date> loadTime_;
    bool isLoadingAd_ = false;
    bool isShowingAd_ = false;
    bool hasStartCompleted_ = false;
};

}  // namespace quillmere
