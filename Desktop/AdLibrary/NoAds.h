// The ad library of an edition without ads.
#pragma once

#include "Platform/AdLibrary/AdLibrary.h"
#include "Platform/AdLibrary/GADBannerView.h"
#include "Platform/Dispatch/Dispatch.h"

namespace quillmere {

/// Has no network and nothing to show: it starts at once, every load fails politely, and a banner
/// stays empty.
class NoAds final : public ALPrivacySettings, public GADMobileAds, public GADBannerViews {
public:
    explicit NoAds(Dispatch& dispatch) : dispatch_(dispatch) {}

    void setHasUserConsent(bool) override {}
    void setDoNotSell(bool) override {}

    void setTestDeviceIdentifiers(const std::vector<std::string>&) override {}
    void startWithCompletionHandler(std::function<void()> completionHandler) override {
        dispatch_.mainQueue().async(std::move(completionHandler));
    }
    void loadWithAdUnitID(GADFullScreenAdFormat, const std::string&,
                          LoadHandler completionHandler) override {
        dispatch_.mainQueue().async([handler = std::move(completionHandler)] {
            handler(Error{"quillmere.ads", 1, "This edition of Quillmere shows no ads."});
        });
    }

    std::shared_ptr<GADBannerView> anchoredAdaptiveBanner(double) override {
        return std::make_shared<EmptyBanner>();
    }

private:
    class EmptyBanner final : public GADBannerView {
        void setAdUnitID(const std::string&) override {}
        void setRootViewController(UIViewController*) override {}
        void loadRequest(const GADRequest&) override {}
    };

    Dispatch& dispatch_;
};

}  // namespace quillmere
