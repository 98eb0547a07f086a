#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Quillmere/Ads/AdmobBannerView.h"
#include "Quillmere/Ads/AppOpenAdManager.h"
#include "Quillmere/Ads/DetailAds.h"
#include "Tests/Fakes/FakeAdLibrary.h"
#include "Tests/Fakes/FakeAnalytics.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeRemoteConfig.h"
#include "Tests/Fakes/FakeUIApplication.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/ManualClock.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

class AdsTest : public testing::Test {
protected:
    AdsTest() {
        scene.shown = {&other, &key};
        application.scenes = {&scene};
        appOpen->setHasStartCompleted(true);
    }

    /// What the action adds to the log, reads left out.
    Lines linesAfter(const std::function<void()>& action) {
        const std::size_t before = log.lines().size();
        action();
        Lines lines;
        const Lines all = log.lines();
        for (std::size_t i = before; i < all.size(); ++i) {
            const bool read = all[i].starts_with("read ") || all[i].starts_with("integerForKey");
            if (!read) lines.push_back(all[i]);
        }
        return lines;
    }

    void saves(std::int64_t count) { userDefaults.integers["reviewCountKey"] = count; }
    void remoteValue(const char* name, const RemoteConfigValue& value) {
        remote.propertyLists["values"][name] = value;
        remote.setDefaultsFromPlistFileName("values");
    }

    CallLog log;
    Date now;
    DesktopDispatch dispatch{std::make_unique<ManualClock>()};
    FakeAdLibrary library{log};
    FakeConsole console{log};
    FakeAnalytics analytics{log};
    FakeUserDefaults userDefaults{log};
    FakeRemoteConfig remote{log, dispatch};
    FakeViewController firstRoot, keyRoot;
    FakeWindow other{false, &firstRoot};
    FakeWindow key{true, &keyRoot};
    FakeWindowScene scene;
    FakeUIApplication application;
    std::shared_ptr<AppOpenAdManager> appOpen = std::make_shared<AppOpenAdManager>(
        AppOpenAdManager::Ports{library, application, userDefaults, console,
                                [this] { return now; }},
        "A");
    std::shared_ptr<InterstitialAdManager> conversion =
        std::make_shared<InterstitialAdManager>(library, console, "C");
    std::shared_ptr<DetailAds> detail =
        std::make_shared<DetailAds>(DetailAds::Ports{library, application, userDefaults, remote,
                                                     analytics, console, *conversion},
                                    "S");
};

const char* const notReady = "console App open ad is not ready yet.";
const char* const loading = "console Start loading app open ad.";

TEST_F(AdsTest, TheAppOpenAdIsLoadedOnceAtATimeAndNotBeforeTheStart) {
    appOpen->setHasStartCompleted(false);
    EXPECT_THAT(linesAfter([&] { appOpen->loadAd(); }), IsEmpty());
    appOpen->setHasStartCompleted(true);
    EXPECT_THAT(linesAfter([&] { appOpen->loadAd(); }), ElementsAre(loading, "load app open A"));
    EXPECT_THAT(linesAfter([&] { appOpen->loadAd(); }), IsEmpty()) << "a load is under way";
    EXPECT_THAT(linesAfter([&] { library.refuse("no fill"); }),
                ElementsAre("console App open ad failed to load with error: no fill."));
    appOpen->loadAd();
    EXPECT_THAT(linesAfter([&] { library.fill(); }),
                ElementsAre("console App open ad loaded successfully."));
    EXPECT_THAT(linesAfter([&] { appOpen->loadAd(); }), IsEmpty()) << "one is in hand";
}

TEST_F(AdsTest, ANewUserSeesNoAppOpenAdAndNoneIsReadyBeforeTheStart) {
    appOpen->setHasStartCompleted(false);
    EXPECT_THAT(linesAfter([&] { appOpen->showAdIfAvailable(); }), IsEmpty());
    saves(1);
    EXPECT_THAT(linesAfter([&] { appOpen->showAdIfAvailable(); }), ElementsAre(notReady));
    appOpen->setHasStartCompleted(true);
    EXPECT_THAT(linesAfter([&] { appOpen->showAdIfAvailable(); }),
                ElementsAre(notReady, loading, "load app open A"));
    EXPECT_THAT(linesAfter([&] { appOpen->showAdIfAvailable(); }), ElementsAre(notReady))
        << "one load is under way, which may never end";
}

TEST_F(AdsTest, ALoadedAppOpenAdIsUsableForFourHours) {
    saves(1);
    appOpen->loadAd();
    constexpr std::chrono::nanoseconds fourHours = std::chrono::seconds(14400);
    for (const auto age :
         {std::chrono::nanoseconds(0), fourHours, fourHours - 1ns, 2 * fourHours}) {
        SCOPED_TRACE(age.count());
        const auto ad = library.fill();
        now += age;
        if (age >= fourHours) {
            EXPECT_THAT(linesAfter([&] { appOpen->showAdIfAvailable(); }),
                        ElementsAre(notReady, loading, "load app open A"));
            EXPECT_EQ(ad->shownOver, nullptr);
            continue;
        }
        EXPECT_THAT(linesAfter([&] { appOpen->loadAd(); }), IsEmpty()) << "it is still good";
        EXPECT_THAT(linesAfter([&] { appOpen->showAdIfAvailable(); }),
                    ElementsAre("console App open ad will be displayed.", "present A"));
        EXPECT_EQ(ad->shownOver, &keyRoot);
        EXPECT_THAT(linesAfter([&] { appOpen->showAdIfAvailable(); }),
                    ElementsAre("console App open ad is already showing."));
        ad->delegate.lock()->adDidDismissFullScreenContent();
    }
    library.refuse("no fill");
    EXPECT_THAT(linesAfter([&] { appOpen->showAdIfAvailable(); }),
                ElementsAre(notReady, loading, "load app open A"))
        << "the old one has gone with the failure";
}

TEST_F(AdsTest, EachEndOfAnAppOpenAdTellsTheDelegateAndLoadsTheNext) {
    struct Delegate final : AppOpenAdManagerDelegate {
        int ends = 0;
        void appOpenAdEnded(AppOpenAdManager&) override { ++ends; }
    };
    const auto delegate = std::make_shared<Delegate>();
    appOpen->appOpenAdManagerDelegate = delegate;
    saves(1);
    appOpen->loadAd();
    auto ad = library.fill();
    appOpen->showAdIfAvailable();
    EXPECT_THAT(linesAfter([&] { ad->delegate.lock()->adWillPresentFullScreenContent(); }),
                ElementsAre("console App open ad is will be presented."));
    EXPECT_THAT(linesAfter([&] { ad->delegate.lock()->adDidDismissFullScreenContent(); }),
                ElementsAre("console App open ad was dismissed.", loading, "load app open A"));
    ad = library.fill();
    appOpen->showAdIfAvailable();
    EXPECT_THAT(
        linesAfter([&] {
            ad->delegate.lock()->didFailToPresentFullScreenContentWithError(Error{"a", 1, "gone"});
        }),
        ElementsAre("console App open ad failed to present with error: gone.", loading,
                    "load app open A"));
    EXPECT_EQ(delegate->ends, 2);
}

TEST_F(AdsTest, WithoutAKeyWindowTheShowingStaysBegun) {
    saves(1);
    appOpen->loadAd();
    library.fill();
    scene.shown = {&other};
    EXPECT_THAT(linesAfter([&] { appOpen->showAdIfAvailable(); }),
                ElementsAre("console App open ad will be displayed."));
    scene.shown = {&key};
    EXPECT_THAT(linesAfter([&] { appOpen->showAdIfAvailable(); }),
                ElementsAre("console App open ad is already showing."));
}

TEST_F(AdsTest, AConversionsAdComesFromTheRemoteThresholdOn) {
    for (const auto& [threshold, count, reached] :
         {std::tuple{0, 0, true}, {5, 4, false}, {5, 5, true}, {5, 6, true}}) {
        remoteValue("convertAdDisplayThreshold", FakeRemoteConfig::integer(threshold));
        saves(count);
        EXPECT_EQ(linesAfter([&] { detail->showConvertAd(); }),
                  reached ? Lines{"event ConvertAdsNotLoaded"} : Lines{})
            << count << " of " << threshold;
    }
    conversion->loadAd();
    const auto ad = library.fill();
    EXPECT_THAT(linesAfter([&] { detail->showConvertAd(); }),
                ElementsAre("event ConvertAdsLoaded", "present C"));
    EXPECT_EQ(ad->shownOver, &firstRoot);
    EXPECT_THAT(linesAfter([&] { ad->delegate.lock()->adDidDismissFullScreenContent(); }),
                ElementsAre("load interstitial C"));
    EXPECT_THAT(linesAfter([&] { library.refuse("no fill"); }), ElementsAre("console no fill"));
    EXPECT_EQ(conversion->interstitial, ad) << "a used one stays";
    application.scenes = {};
    EXPECT_THAT(linesAfter([&] { detail->showConvertAd(); }),
                ElementsAre("event ConvertAdsLoaded"));
}

TEST_F(AdsTest, EachSaveIsTheAdsTurnOrTheReviews) {
    detail->loadSaveAd();
    for (const auto& [count, isAds] : {std::pair{1, false},
                                       {2, true},
                                       {3, true},
                                       {4, true},
                                       {10, true},
                                       {11, false},
                                       {12, true},
                                       {21, false}}) {
        saves(count);
        const Lines lines =
            linesAfter([&, isAds = isAds] { EXPECT_EQ(detail->showSaveAd(), isAds); });
        EXPECT_EQ(lines, isAds ? Lines{"event SaveAdsNotLoaded"} : Lines{}) << count;
    }
    const auto ad = library.fill();
    EXPECT_THAT(linesAfter([&] { ad->delegate.lock()->adDidDismissFullScreenContent(); }),
                IsEmpty())
        << "it was not shown";
    saves(2);
    application.scenes = {};
    EXPECT_THAT(linesAfter([&] { EXPECT_TRUE(detail->showSaveAd()); }),
                ElementsAre("event SaveAdsLoaded"));
    EXPECT_THAT(linesAfter([&] { ad->delegate.lock()->adDidDismissFullScreenContent(); }),
                IsEmpty())
        << "there was no window to show it in";
    application.scenes = {&scene};
    EXPECT_THAT(linesAfter([&] { EXPECT_TRUE(detail->showSaveAd()); }),
                ElementsAre("event SaveAdsLoaded", "present S"));
    EXPECT_EQ(ad->shownOver, &firstRoot);
    conversion->adDidDismissFullScreenContent();
    EXPECT_THAT(linesAfter([&] { ad->delegate.lock()->adDidDismissFullScreenContent(); }),
                ElementsAre("load interstitial S"))
        << "the end of a conversion's ad is none of this one's";
}

TEST_F(AdsTest, ABannerMayBeFoldedAwayOnlyFromFourSavesOn) {
    const AdmobBannerView::Ports ports{library, application, userDefaults, remote};
    for (const auto& [count, remoteOn, folds] :
         {std::tuple{3, true, false}, {4, true, true}, {4, false, false}}) {
        saves(count);
        remoteValue("showCollapsibleBanner", FakeRemoteConfig::boolean(remoteOn));
        const auto view = AdmobBannerView::make(ports, "B", 800);
        const auto& banner = dynamic_cast<const FakeBanner&>(*view);
        EXPECT_EQ(banner.adUnitID, "B");
        EXPECT_EQ(banner.root, &firstRoot);
        EXPECT_EQ(library.bannerWidth, 800);
        ASSERT_EQ(banner.requests.size(), 1u);
        EXPECT_EQ(banner.requests[0].extras.has_value(), folds) << count;
        if (folds) {
            EXPECT_EQ(banner.requests[0].extras->at("collapsible"), "bottom");
        }
    }
    application.scenes = {};
    EXPECT_EQ(dynamic_cast<FakeBanner&>(*AdmobBannerView::make(ports, "B", 800)).root, nullptr);
}

TEST_F(AdsTest, AnAnswerThatComesTwiceOrAfterItsScreenHarmsNobody) {
    saves(2);
    detail->loadSaveAd();
    const auto first = library.fill();
    const auto second = library.fill();
    EXPECT_THAT(linesAfter([&] { library.refuse("late"); }), ElementsAre("console late"));
    detail->showSaveAd();
    EXPECT_EQ(first->shownOver, nullptr);
    EXPECT_EQ(second->shownOver, &firstRoot);
    detail.reset();
    EXPECT_TRUE(second->delegate.expired());
    EXPECT_THAT(linesAfter([&] {
                    library.fill();
                    library.refuse("late");
                }),
                IsEmpty());
}

}  // namespace
}  // namespace quillmere
