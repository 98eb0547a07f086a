#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Desktop/AdLibrary/HouseAds.h"
#include "Desktop/AdLibrary/NoAds.h"
#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Tests/Fakes/FakeUIApplication.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

struct Delegate final : GADFullScreenContentDelegate {
    Lines heard;

    void adWillPresentFullScreenContent() override { heard.push_back("will present"); }
    void adDidDismissFullScreenContent() override { heard.push_back("did dismiss"); }
    void didFailToPresentFullScreenContentWithError(const Error& error) override {
        heard.push_back(error.localizedDescription);
    }
};

class OfflineAdsTest : public testing::Test {
protected:
    void pump() {
        bool last = false;
        dispatch.mainQueue().async([&] { last = true; });
        dispatch.mainQueue().runUntil([&] { return last; });
    }

    /// By the contract, nothing is heard before the main queue runs.
    std::optional<Result<GADFullScreenAdRef>> load(OfflineAds& ads, const std::string& unit) {
        std::optional<Result<GADFullScreenAdRef>> answer;
        ads.loadWithAdUnitID(GADFullScreenAdFormat::interstitial, unit,
                             [&](const Result<GADFullScreenAdRef>& ad) { answer = ad; });
        EXPECT_FALSE(answer) << "inside the operation";
        pump();
        return answer;
    }
    std::pair<GADFullScreenAdRef, std::shared_ptr<Delegate>> loaded() {
        const auto ad = **load(house, "unit");
        const auto delegate = std::make_shared<Delegate>();
        ad->setFullScreenContentDelegate(delegate);
        return {ad, delegate};
    }
    std::string fullScreen() { return stage.fullScreen.get() ? stage.fullScreen.get()->title : ""; }
    std::string banner() { return stage.banner.get() ? stage.banner.get()->title : ""; }

    DesktopDispatch dispatch;
    AdStage stage;
    HouseAds house{dispatch, stage};
    NoAds none{dispatch};
    FakeViewController root;
};

TEST_F(OfflineAdsTest, EveryLoadAndStartIsAnsweredOnTheMainQueue) {
    for (OfflineAds* ads : std::initializer_list<OfflineAds*>{&house, &none}) {
        bool started = false;
        ads->startWithCompletionHandler([&] { started = true; });
        EXPECT_FALSE(started) << "inside the operation";
        pump();
        EXPECT_TRUE(started);
        const auto withoutPlace = load(*ads, "");
        ASSERT_TRUE(withoutPlace);
        EXPECT_NE(withoutPlace->error().localizedDescription, "");
        const auto withPlace = load(*ads, "unit");
        ASSERT_TRUE(withPlace);
        EXPECT_EQ(static_cast<bool>(*withPlace), ads == &house);
    }
}

TEST_F(OfflineAdsTest, AnAdIsShownOnceAndItsDelegateHearsOfEachStep) {
    const auto [ad, delegate] = loaded();
    ad->presentFromRootViewController(root);
    EXPECT_THAT(delegate->heard, IsEmpty()) << "inside the operation";
    pump();
    EXPECT_EQ(fullScreen(), "Fernbook");
    stage.fullScreen.set(nullptr);
    EXPECT_THAT(delegate->heard, ElementsAre("will present")) << "inside the operation";
    pump();
    ad->presentFromRootViewController(root);
    pump();
    EXPECT_EQ(fullScreen(), "");
    EXPECT_THAT(delegate->heard,
                ElementsAre("will present", "did dismiss", "This ad has been shown before."));
}

TEST_F(OfflineAdsTest, AnAdThatMeetsAnotherOneFailsAndCanBeShownLater) {
    const auto [first, firstDelegate] = loaded();
    const auto [second, secondDelegate] = loaded();
    first->presentFromRootViewController(root);
    second->presentFromRootViewController(root);
    pump();
    EXPECT_EQ(fullScreen(), "Fernbook");
    EXPECT_THAT(secondDelegate->heard, ElementsAre("Another ad is being shown."));
    stage.fullScreen.set(nullptr);
    second->presentFromRootViewController(root);
    pump();
    EXPECT_EQ(fullScreen(), "Drift Timer");
    EXPECT_THAT(firstDelegate->heard, ElementsAre("will present", "did dismiss"));
}

TEST_F(OfflineAdsTest, AnAdWhoseOwnersHaveGoneCanStillBeClosed) {
    auto [ad, delegate] = loaded();
    ad->presentFromRootViewController(root);
    ad.reset();
    delegate.reset();
    pump();
    EXPECT_EQ(fullScreen(), "Fernbook");
    stage.fullScreen.set(nullptr);
    pump();
    EXPECT_EQ(fullScreen(), "");
}

TEST_F(OfflineAdsTest, ABannerIsFilledWhileItLivesAndLeavesALaterOneAlone) {
    const auto requested = [this](const std::string& unit) {
        auto view = house.anchoredAdaptiveBanner(800);
        view->setAdUnitID(unit);
        view->loadRequest({});
        EXPECT_EQ(banner(), "") << "inside the operation";
        return view;
    };
    const auto withoutPlace = requested("");
    requested("gone before it is filled");
    pump();
    EXPECT_EQ(banner(), "");
    auto first = requested("unit");
    pump();
    EXPECT_EQ(banner(), "Fernbook");
    stage.banner.set(nullptr);
    auto second = requested("unit");
    pump();
    first.reset();
    EXPECT_EQ(banner(), "Drift Timer");
    second.reset();
    EXPECT_EQ(banner(), "");
}

}  // namespace
}  // namespace quillmere
