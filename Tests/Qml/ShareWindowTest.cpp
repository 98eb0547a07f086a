// How the two share screens are drawn. A server of the test says which of them there is.
#include <algorithm>
#include <cmath>

#include "Quillmere/Models/Services/RemoteConfigClient.h"
#include "Tests/LoopbackServer.h"
#include "Tests/Qml/AppUnderTest.h"

namespace quillmere {
namespace {

/// The enhanced one, or the original one. Each in a process of its own.
class ShareWindowTest : public testing::TestWithParam<bool> {
protected:
    ShareWindowTest() {
        EXPECT_TRUE(app.waitUntil([&] {
            return app.composition()
                       .platform()
                       .remoteConfig()
                       .objectForKeyedSubscript(RemoteConfigKey::showEnhancedShareView)
                       .source == RemoteConfigSource::remote;
        }));
        app.saveSample();
    }

    static ProjectSettings edition() {
        static auto* server = new LoopbackServer;
        const std::string value = GetParam() ? "true" : "false";
        server->answer("/values", 200, {}, R"({"showEnhancedShareView": )" + value + "}");
        ProjectSettings edition;
        edition.remoteConfigEndpoint = server->url("/values");
        edition.storeLink = "https://store.example/quillmere";
        edition.makerStorePage = "https://store.example/maker";
        return edition;
    }
    QString text(const char* key) { return app.bridge().text(key); }
    QQuickItem* symbol(const char* name) {
        return app.findItem([&](const QQuickItem& item) {
            return item.property("filled").isValid() && item.property("name") == name;
        });
    }
    double bottomOf(const QQuickItem* item) {
        return item ? item->mapToScene({0, item->height()}).y() : -1;
    }

    AppUnderTest& app = AppUnderTest::shared(edition());
};

INSTANTIATE_TEST_SUITE_P(Variants, ShareWindowTest, testing::Bool(),
                         [](const auto& v) { return v.param ? "Enhanced" : "Original"; });

TEST_P(ShareWindowTest, TheCheckMarkSpringsToItsSize) {
    const double size = GetParam() ? 1 : 1.2;
    const auto scale = [&] {
        const QQuickItem* check = symbol("check");
        return check ? check->parentItem()->scale() : 0;
    };
    bool grows = false;
    const auto stands = [&] {
        grows = grows || (scale() > 0.02 && scale() < 0.8);
        return std::abs(scale() - size) < 0.001;
    };
    ASSERT_TRUE(app.waitUntil(stands));
    // Again, where a machine that does other things has drawn none of it.
    for (int again = 0; again < 20 && !grows; ++again) {
        app.press(Qt::Key_Escape);
        ASSERT_TRUE(app.waitUntil([&] { return scale() == 0; }));
        ASSERT_TRUE(app.click(text("Save")));
        ASSERT_TRUE(app.waitUntil(stands));
    }
    EXPECT_TRUE(grows);
}

TEST_P(ShareWindowTest, ItsPartsStandInTheirOrder) {
    ASSERT_TRUE(
        app.waitUntil([&] { return !GetParam() || app.find(text("SendMessage")) != nullptr; }));
    const QQuickItem* picture = app.findItem(
        [](const QQuickItem& item) { return item.inherits("quillmere::PictureItem"); });
    const QQuickItem* saved = app.find(text("CompletedToSave"));
    const QQuickItem* invitation = app.find(text("ShareToFriends"));
    const QQuickItem* more = app.find(text("MoreApps"));
    const std::vector<const QQuickItem*> parts =
        GetParam()
            ? std::vector<const QQuickItem*>{saved,
                                             picture,
                                             app.find(text("EncourageShareImage")),
                                             app.find(text("ShareImage")),
                                             app.find(text("SendMessage")),
                                             invitation,
                                             more}
            : std::vector<const QQuickItem*>{
                  picture, symbol("check"), saved, app.find(text("Share")), invitation, more};
    double above = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        EXPECT_GT(bottomOf(parts[i]), above) << "part " << i;
        above = bottomOf(parts[i]);
    }
    EXPECT_EQ(app.find(text(GetParam() ? "Share" : "ShareImage")), nullptr);
    if (!GetParam()) return;

    const std::pair<const char*, QColor> signs[] = {{"bubble", QColor(0x34, 0xc7, 0x59)},
                                                    {"people", QColor(0x15, 0x18, 0x1d)}};
    for (const auto& [name, color] : signs) {
        // What falls over the screen hides it for a while.
        EXPECT_TRUE(app.waitUntil([&, sign = name, expected = color] {
            const QQuickItem* item = symbol(sign);
            if (!item) return false;
            const QPointF at = item->mapToScene({item->width() * 0.4, item->height() * 0.4});
            const QColor seen = app.window().grabWindow().pixelColor(at.toPoint());
            return std::abs(seen.red() - expected.red()) < 8 &&
                   std::abs(seen.green() - expected.green()) < 8 &&
                   std::abs(seen.blue() - expected.blue()) < 8;
        })) << name;
    }
}

}  // namespace
}  // namespace quillmere
