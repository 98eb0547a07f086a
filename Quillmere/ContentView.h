// The root of what is on the screen, and the sequence that asks for consent and starts the ads.
#pragma once

#include <string>
#include <vector>

#include "Base/Error.h"
#include "Base/Shared.h"
#include "Platform/AdLibrary/AdLibrary.h"
#include "Platform/Application/Console.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/Consent/Consent.h"
#include "Platform/CrashLog/CrashLog.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Quillmere/Ads/AppOpenAdManager.h"
#include "Quillmere/Ads/InterstitialAdManager.h"

namespace quillmere {

/// Shows the home screen, with a progress display over it that any screen may raise. Lives until
/// the end of the process, as the consent and ad libraries call back at any time.
class ContentView {
public:
    /// What the sequence needs of the platform and of the shared managers.
    struct Ports {
        Dispatch& dispatch;
        UMPConsentInformation& consentInformation;
        UMPConsentForm& consentForm;
        GADMobileAds& mobileAds;
        const UIApplication& application;
        CrashLog& crashLog;
        Console& console;
        Shared<AppOpenAdManager>& appOpenAds;
        Shared<InterstitialAdManager>& interstitialAds;
    };

    /// The progress display takes no taps.
    static constexpr bool userInteractionOnHUD = false;

    ContentView(const Ports& ports, std::vector<std::string> testDeviceIdentifiers)
        : ports_(ports), testDeviceIdentifiers_(std::move(testDeviceIdentifiers)) {}
    ContentView(const ContentView&) = delete;
    ContentView& operator=(const ContentView&) = delete;

    /// At each appearance, on the main thread; the first one refreshes the state of consent, asks
    /// the user where that is needed, and starts the ads. They start without consent where it
    /// can't be had, and don't where the user was asked and ads may not be requested.
    void setupOnce();

    /// Starts the ad library, on the main thread and once in a process, however often and from
    /// wherever it is called.
    void startMobileAds();

private:
    void consentUpdated(const std::optional<Error>& error);
    void formEnded(const std::optional<Error>& error);
    void startDespite(const Error& error);

    Ports ports_;
    const std::vector<std::string> testDeviceIdentifiers_;
    bool hasSetup_ = false;                // main thread
    bool isMobileAdsStartCalled_ = false;  // main thread
};

}  // namespace quillmere
