#include "Desktop/AdLibrary/HouseAds.h"

#include <utility>

namespace quillmere {

class HouseAds::FullScreenAd final : public GADFullScreenAd,
                                     public std::enable_shared_from_this<FullScreenAd> {
public:
    FullScreenAd(HouseAds& library, const MoreApp& shownApp) : app(shownApp), library_(library) {}

    void setFullScreenContentDelegate(
        std::weak_ptr<GADFullScreenContentDelegate> newDelegate) override {
        delegate = std::move(newDelegate);
    }
    void presentFromRootViewController(UIViewController&) override {
        library_.mainQueue_.async([self = shared_from_this()] { self->library_.present(*self); });
    }

    const MoreApp& app;
    std::weak_ptr<GADFullScreenContentDelegate> delegate;
    bool wasShown = false;

private:
    HouseAds& library_;
};

class HouseAds::Banner final : public GADBannerView, public std::enable_shared_from_this<Banner> {
public:
    explicit Banner(HouseAds& library) : library_(library) {}
    ~Banner() override {
        if (library_.filledBanner_ != this) return;
        library_.filledBanner_ = nullptr;
        library_.stage_.banner.set(nullptr);
    }

    void setAdUnitID(const std::string& adUnitID) override { adUnitID_ = adUnitID; }
    void setRootViewController(UIViewController*) override {}
    void loadRequest(const GADRequest&) override {
        if (adUnitID_.empty()) return;
        library_.mainQueue_.async([weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->fill();
        });
    }

private:
    void fill() {
        library_.filledBanner_ = this;
        library_.stage_.banner.set(&library_.nextApp());
    }

    HouseAds& library_;
    std::string adUnitID_;
};

HouseAds::HouseAds(Dispatch& dispatch, AdStage& stage)
    : OfflineAds(dispatch), stage_(stage), closing_(stage.fullScreen.subscribe([this](auto* app) {
          if (!app) closed();
      })) {}

const MoreApp& HouseAds::nextApp() { return allMoreApps[shown_++ % allMoreApps.size()]; }

void HouseAds::loadWithAdUnitID(GADFullScreenAdFormat, const std::string& adUnitID,
                                LoadHandler completionHandler) {
    mainQueue_.async([this, hasPlace = !adUnitID.empty(), handler = std::move(completionHandler)] {
        if (!hasPlace) {
            return handler(Error{adErrorDomain, 2, "This edition of Quillmere shows no ad here."});
        }
        handler(GADFullScreenAdRef(std::make_shared<FullScreenAd>(*this, nextApp())));
    });
}

std::shared_ptr<GADBannerView> HouseAds::anchoredAdaptiveBanner(double) {
    return std::make_shared<Banner>(*this);
}

void HouseAds::present(FullScreenAd& ad) {
    const auto delegate = ad.delegate.lock();
    const char* const hindrance = ad.wasShown               ? "This ad has been shown before."
                                  : stage_.fullScreen.get() ? "Another ad is being shown."
                                                            : nullptr;
    if (hindrance) {
        if (delegate) {
            delegate->didFailToPresentFullScreenContentWithError(
                Error{adErrorDomain, 3, hindrance});
        }
        return;
    }
    ad.wasShown = true;
    delegateOfShownAd_ = ad.delegate;
    if (delegate) delegate->adWillPresentFullScreenContent();
    stage_.fullScreen.set(&ad.app);
}

void HouseAds::closed() {
    mainQueue_.async([weak = std::exchange(delegateOfShownAd_, {})] {
        if (const auto delegate = weak.lock()) delegate->adDidDismissFullScreenContent();
    });
}

}  // namespace quillmere
