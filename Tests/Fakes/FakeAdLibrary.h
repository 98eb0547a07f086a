#pragma once

#include <memory>
#include <utility>

#include "Platform/AdLibrary/AdLibrary.h"
#include "Platform/AdLibrary/GADBannerView.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// An ad that logs its showing; a test tells its delegate what became of it.
class FakeAd final : public GADFullScreenAd {
public:
    FakeAd(CallLog& log, std::string unit) : log_(log), unit_(std::move(unit)) {}

    std::weak_ptr<GADFullScreenContentDelegate> delegate;
    UIViewController* shownOver = nullptr;

    void setFullScreenContentDelegate(
        std::weak_ptr<GADFullScreenContentDelegate> newDelegate) override {
        delegate = std::move(newDelegate);
    }
    void presentFromRootViewController(UIViewController& controller) override {
        log_.record("present " + unit_);
        shownOver = &controller;
    }

private:
    CallLog& log_;
    std::string unit_;
};

class FakeBanner final : public GADBannerView {
public:
    std::string adUnitID;
    UIViewController* root = nullptr;
    std::vector<GADRequest> requests;

    void setAdUnitID(const std::string& unit) override { adUnitID = unit; }
    void setRootViewController(UIViewController* controller) override { root = controller; }
    void loadRequest(const GADRequest& request) override { requests.push_back(request); }
};

/// Starts and loads when the test says so: it may be slow, fail, answer twice, or never.
class FakeAdLibrary final : public ALPrivacySettings, public GADMobileAds, public GADBannerViews {
public:
    explicit FakeAdLibrary(CallLog& log) : log_(log) {}

    struct Load {
        std::string unit;
        LoadHandler handler;
    };

    std::function<void()> startHandler;
    std::vector<Load> loads;
    double bannerWidth = 0;

    /// Answers the last load with an ad.
    std::shared_ptr<FakeAd> fill() {
        const Load load = loads.back();
        auto ad = std::make_shared<FakeAd>(log_, load.unit);
        load.handler(GADFullScreenAdRef(ad));
        return ad;
    }
    void refuse(const std::string& reason) {
        const Load load = loads.back();
        load.handler(Error{"ads", 3, reason});
    }

    void setHasUserConsent(bool has) override {
        log_.record(has ? "setHasUserConsent true" : "setHasUserConsent false");
    }
    void setDoNotSell(bool doNot) override {
        log_.record(doNot ? "setDoNotSell true" : "setDoNotSell false");
    }
    void setTestDeviceIdentifiers(const std::vector<std::string>& identifiers) override {
        std::string line = "setTestDeviceIdentifiers";
        for (const std::string& identifier : identifiers) line += " " + identifier;
        log_.record(line);
    }
    void startWithCompletionHandler(std::function<void()> completionHandler) override {
        log_.record("start ads");
        startHandler = std::move(completionHandler);
    }
    void loadWithAdUnitID(GADFullScreenAdFormat format, const std::string& adUnitID,
                          LoadHandler completionHandler) override {
        const bool appOpen = format == GADFullScreenAdFormat::appOpen;
        log_.record(std::string("load ") + (appOpen ? "app open " : "interstitial ") + adUnitID);
        loads.push_back({adUnitID, std::move(completionHandler)});
    }
    std::shared_ptr<GADBannerView> anchoredAdaptiveBanner(double width) override {
        bannerWidth = width;
        return std::make_shared<FakeBanner>();
    }

private:
    CallLog& log_;
};

}  // namespace quillmere
