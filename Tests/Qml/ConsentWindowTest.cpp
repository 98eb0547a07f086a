// The question for consent in the real window, in an edition with an ad network.
#include <fstream>

#include "Tests/Qml/AppUnderTest.h"

namespace quillmere {
namespace {

struct Way {
    const char* name;
    const char* button;  // or Escape
    const char* kept;
};

/// A user is asked once in a process: each way has one of its own.
class ConsentWindowTest : public testing::TestWithParam<Way> {
protected:
    static ProjectSettings withAnAdNetwork() {
        ProjectSettings edition;
        edition.ads = AdSource::house;
        edition.adApplicationIdentifier = "application";
        edition.conversionAdUnit = "conversion";
        return edition;
    }
    bool hasAd() {
        return app.composition().app().interstitialAdManager().get()->interstitial != nullptr;
    }

    AppUnderTest& app = AppUnderTest::shared(withAnAdNetwork());
};

INSTANTIATE_TEST_SUITE_P(Ways, ConsentWindowTest,
                         testing::Values(Way{"Allowed", "ConsentAllow", "ads allowed"},
                                         Way{"Refused", "ConsentRefuse", "ads refused"},
                                         Way{"Escaped", nullptr, "ads refused"}),
                         [](const auto& way) { return way.param.name; });

TEST_P(ConsentWindowTest, NothingIsLoadedButAfterTheUsersYes) {
    const auto question = [&] { return app.find(app.bridge().text("ConsentTitle")); };
    app.composition().app().contentView().setupOnce();
    ASSERT_TRUE(app.waitUntil([&] { return question() != nullptr; }));
    app.takePicture("consent");
    EXPECT_FALSE(hasAd());
    if (GetParam().button) {
        ASSERT_TRUE(app.click(app.bridge().text(GetParam().button)));
    } else {
        app.press(Qt::Key_Escape);
    }
    ASSERT_TRUE(app.waitUntil([&] { return question() == nullptr; }));
    std::string kept;
    std::getline(std::ifstream(testHome() / ".local/share/quillmere/Consent"), kept);
    EXPECT_EQ(kept, GetParam().kept);
    // Behind all that the answer causes on the main queue.
    bool done = false;
    const std::function<void(int)> after = [&](int turns) {
        app.composition().platform().dispatch().mainQueue().async(
            [&, turns] { turns > 0 ? after(turns - 1) : void(done = true); });
    };
    after(5);
    ASSERT_TRUE(app.waitUntil([&] { return done; }));
    EXPECT_EQ(hasAd(), std::string(kept) == "ads allowed");
    const QQuickItem* focused = app.window().activeFocusItem();
    ASSERT_NE(focused, nullptr);
    EXPECT_TRUE(QString(focused->metaObject()->className()).startsWith("HomeScreen"))
        << "the home screen has the keyboard";
}

}  // namespace
}  // namespace quillmere
