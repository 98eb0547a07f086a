// The four places of ads in the real window, in an edition with house ads.
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Tests/Qml/AppUnderTest.h"

namespace quillmere {
namespace {

class AdWindowTest : public testing::TestWithParam<QSize> {
protected:
    AdWindowTest() {
        app.window().resize(GetParam());
        app.composition().app().contentView().setupOnce();
        EXPECT_TRUE(app.waitUntil([&] { return conversionAd() != nullptr; }));
    }

    void saves(int count) {
        app.composition().platform().userDefaults().setInteger(count, reviewCountKey);
    }
    GADFullScreenAdRef conversionAd() {
        return app.composition().app().interstitialAdManager().get()->interstitial;
    }
    QString shown() { return app.bridge().ads()->fullScreen(); }
    DetailBridge& detail() { return *app.bridge().detail(); }

    /// Waits for an ad that has the keyboard, and closes it. Its name; empty where none comes.
    QString seeAndClose(const std::string& picture = {}) {
        if (!app.waitUntil([&] { return !shown().isEmpty() && app.find(shown()); })) return {};
        const QString name = shown();
        if (picture.empty()) {
            EXPECT_TRUE(app.click("Close"));
        } else {
            app.takePicture(picture);
            app.press(Qt::Key_Escape);
        }
        EXPECT_TRUE(app.waitUntil([&] { return shown().isEmpty() && !app.find("Ad"); }));
        return name;
    }
    void openSample() {
        app.bridge().home()->photoTapped();
        ASSERT_TRUE(app.waitUntil([&] { return app.find("Fast Drawing") != nullptr; }));
    }
    void convert(EnhanceStyle style) {
        detail().styleTapped(rawValue(style));
        ASSERT_TRUE(app.waitUntil([&] { return !detail().isConverting(); }));
    }

    static ProjectSettings withHouseAds() {
        ProjectSettings edition;
        edition.makerStorePage = "https://store.example/maker";
        edition.ads = AdSource::house;
        edition.appOpenAdUnit = "open";
        edition.conversionAdUnit = "conversion";
        edition.saveAdUnit = "save";
        edition.bannerAdUnit = "banner";
        return edition;
    }

    AppUnderTest& app = AppUnderTest::shared(withHouseAds());
};

INSTANTIATE_TEST_SUITE_P(Sizes, AdWindowTest, testing::Values(QSize(360, 640), QSize(1120, 780)),
                         [](const auto& size) { return "W" + std::to_string(size.param.width()); });

TEST_P(AdWindowTest, TheAppOpenAdComesEachTimeTheWindowIsActive) {
    app.window().requestActivate();
    ASSERT_TRUE(app.waitUntil([&] { return app.window().isActive(); }));
    const auto activate = [&] { app.composition().app().scenePhaseChanged(ScenePhase::active); };
    saves(0);
    activate();
    saves(1);
    activate();
    const QString first = seeAndClose("ad-app-open");
    ASSERT_NE(first, "");
    // The next one is loaded on the main queue.
    QTest::qWait(0);
    activate();
    EXPECT_NE(seeAndClose(), first);
}

TEST_P(AdWindowTest, AConversionsAdLeavesTheConversionAndTheKeyboardAsTheyWere) {
    saves(5);
    openSample();
    for (const char* picture : {"ad-conversion", ""}) {
        const GADFullScreenAdRef before = conversionAd();
        detail().styleTapped(rawValue(EnhanceStyle::speedGeneral));
        EXPECT_NE(seeAndClose(picture), "");
        ASSERT_TRUE(app.waitUntil([&] { return conversionAd() != before; })) << "loaded again";
        ASSERT_TRUE(app.waitUntil([&] { return detail().result().isThere(); }));
        ASSERT_TRUE(app.waitUntil([&] { return !detail().isConverting(); }));
        detail().view().vm().resetConvertedImages();
    }
    detail().view().screenshotTaken();
    EXPECT_NE(seeAndClose(), "") << "after a screenshot";
    app.press(Qt::Key_Escape);
    EXPECT_TRUE(app.waitUntil([&] { return app.bridge().detail() == nullptr; }));
}

TEST_P(AdWindowTest, ASavesAdComesOnTheTurnsThatTheReviewLeaves) {
    saves(0);
    openSample();
    convert(EnhanceStyle::speedGeneral);
    QString last;
    for (const auto& [count, picture] : {std::pair{1, ""}, {2, "ad-save"}, {3, ""}}) {
        detail().mainButtonTapped();
        ASSERT_TRUE(app.waitUntil([&] { return app.bridge().share() != nullptr; }));
        if (count > 1) {
            const QString name = seeAndClose(picture);
            EXPECT_NE(name, last);
            last = name;
        }
        EXPECT_EQ(shown(), "") << count;
        app.press(Qt::Key_Escape);
        ASSERT_TRUE(app.waitUntil([&] { return app.bridge().share() == nullptr; }))
            << "the screen beneath has the keyboard again";
    }
    EXPECT_TRUE(app.click("Back"));
    EXPECT_TRUE(app.waitUntil([&] { return app.bridge().detail() == nullptr; }));
}

TEST_P(AdWindowTest, TheBannerStandsBeneathTheDetailScreenAndNowhereElse) {
    QString last;
    for (int visit = 0; visit < 2; ++visit) {
        EXPECT_EQ(app.bridge().ads()->banner(), "");
        openSample();
        ASSERT_TRUE(app.waitUntil([&] { return !app.bridge().ads()->banner().isEmpty(); }));
        const QString name = app.bridge().ads()->banner();
        EXPECT_NE(name, last) << "loaded again";
        last = name;
        ASSERT_TRUE(app.waitUntil([&] { return app.find(name) != nullptr; }));
        const QPointF save = AppUnderTest::middleOf(*app.find("Save"));
        EXPECT_LT(save.y(), AppUnderTest::middleOf(*app.find(name)).y() - 40);
        app.takePicture("ad-banner");
        ASSERT_TRUE(app.click("Back"));
        ASSERT_TRUE(app.waitUntil([&] { return app.bridge().ads()->banner().isEmpty(); }));
    }
}

}  // namespace
}  // namespace quillmere
