// The ad library of an edition without ads.
#pragma once

#include "Desktop/AdLibrary/OfflineAds.h"

namespace quillmere {

/// Has nothing to show: every load fails politely, and a banner stays empty.
class NoAds final : public OfflineAds {
public:
    using OfflineAds::OfflineAds;

    void loadWithAdUnitID(GADFullScreenAdFormat, const std::string&,
                          LoadHandler completionHandler) override {
        mainQueue_.async([handler = std::move(completionHandler)] {
            handler(Error{adErrorDomain, 1, "This edition of Quillmere shows no ads."});
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
};

}  // namespace quillmere
