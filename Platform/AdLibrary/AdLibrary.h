// The library that finds ads and shows them.
//
// All of this belongs to the main thread: operations are called there, and handlers and delegates
// are called there, never inside the operation that they belong to.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Result.h"
#include "Platform/Application/UIApplication.h"

namespace quillmere {

/// What the mediation between the ad networks may assume. Set before any other work of the
/// library.
class ALPrivacySettings {
public:
    virtual ~ALPrivacySettings() = default;

    virtual void setHasUserConsent(bool hasUserConsent) = 0;
    virtual void setDoNotSell(bool doNotSell) = 0;
};

/// Hears of one ad's showing.
class GADFullScreenContentDelegate {
public:
    virtual ~GADFullScreenContentDelegate() = default;

    virtual void adWillPresentFullScreenContent() {}
    virtual void adDidDismissFullScreenContent() {}
    virtual void didFailToPresentFullScreenContentWithError(const Error&) {}
};

/// An ad that fills the window. It can be shown once.
class GADFullScreenAd {
public:
    virtual ~GADFullScreenAd() = default;

    /// Nothing for no delegate. A delegate that has gone hears nothing.
    virtual void setFullScreenContentDelegate(
        std::weak_ptr<GADFullScreenContentDelegate> delegate) = 0;
    virtual void presentFromRootViewController(UIViewController& controller) = 0;
};

using GADFullScreenAdRef = std::shared_ptr<GADFullScreenAd>;

enum class GADFullScreenAdFormat { appOpen, interstitial };

class GADMobileAds {
public:
    using LoadHandler = std::function<void(const Result<GADFullScreenAdRef>& ad)>;

    virtual ~GADMobileAds() = default;

    /// Devices of developers, 32 hexadecimal digits each; they get test ads only.
    virtual void setTestDeviceIdentifiers(const std::vector<std::string>& identifiers) = 0;

    /// Returns at once. The handler runs once, when the library is ready; it may never be.
    virtual void startWithCompletionHandler(std::function<void()> completionHandler) = 0;

    /// Loads an ad by a fresh request without settings. Returns at once; the handler runs once, or
    /// never.
    virtual void loadWithAdUnitID(GADFullScreenAdFormat format, const std::string& adUnitID,
                                  LoadHandler completionHandler) = 0;
};

}  // namespace quillmere
