// What the ad libraries of the desktop have in common: none of them has a network.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/AdLibrary/AdLibrary.h"
#include "Platform/AdLibrary/GADBannerView.h"
#include "Platform/Dispatch/Dispatch.h"

namespace quillmere {

/// Starts at once. Tells nobody of the user, so that flags of privacy and devices of developers
/// mean nothing to it.
class OfflineAds : public ALPrivacySettings, public GADMobileAds, public GADBannerViews {
public:
    explicit OfflineAds(Dispatch& dispatch) : mainQueue_(dispatch.mainQueue()) {}

    void setHasUserConsent(bool) override {}
    void setDoNotSell(bool) override {}
    void setTestDeviceIdentifiers(const std::vector<std::string>&) override {}
    void startWithCompletionHandler(std::function<void()> completionHandler) override {
        mainQueue_.async(std::move(completionHandler));
    }

protected:
    /// Where each answer is given.
    DispatchQueue& mainQueue_;
};

inline constexpr const char* adErrorDomain = "quillmere.ads";

}  // namespace quillmere
