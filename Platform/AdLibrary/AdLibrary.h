// The library that finds ads, and the start of its work.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quillmere {

/// What the mediation between the ad networks may assume. Set before any other work of the
/// library. Main thread.
class ALPrivacySettings {
public:
    virtual ~ALPrivacySettings() = default;

    virtual void setHasUserConsent(bool hasUserConsent) = 0;
    virtual void setDoNotSell(bool doNotSell) = 0;
};

/// Main thread.
class GADMobileAds {
public:
    virtual ~GADMobileAds() = default;

    /// Devices of developers, 32 hexadecimal digits each; they get test ads only.
    virtual void setTestDeviceIdentifiers(const std::vector<std::string>& identifiers) = 0;

    /// Returns at once. The handler runs once, on the main thread and never inside this call, when
    /// the library is ready; it may never be.
    virtual void startWithCompletionHandler(std::function<void()> completionHandler) = 0;
};

}  // namespace quillmere
