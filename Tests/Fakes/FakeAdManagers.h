#pragma once

#include "Quillmere/Ads/AppOpenAdManager.h"
#include "Quillmere/Ads/InterstitialAdManager.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

class FakeAppOpenAdManager final : public AppOpenAdManager {
public:
    explicit FakeAppOpenAdManager(CallLog& log) : log_(log) {}

    void setHasStartCompleted(bool has) override {
        log_.record(has ? "app open: started" : "app open: not started");
    }
    void loadAd() override { log_.record("app open: load"); }
    void showAdIfAvailable() override { log_.record("app open: show"); }

private:
    CallLog& log_;
};

class FakeInterstitialAdManager final : public InterstitialAdManager {
public:
    explicit FakeInterstitialAdManager(CallLog& log) : log_(log) {}

    void loadAd() override { log_.record("interstitial: load"); }

private:
    CallLog& log_;
};

}  // namespace quillmere
