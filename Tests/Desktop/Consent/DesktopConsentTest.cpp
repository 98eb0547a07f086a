#include "Desktop/Consent/DesktopConsent.h"

#include <gtest/gtest.h>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/FileManager/DesktopFileManager.h"
#include "Tests/Fakes/FakeUIApplication.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

class DesktopConsentTest : public testing::Test {
protected:
    std::unique_ptr<DesktopConsent> newProcess(bool editionHasAds = true) {
        auto consent =
            std::make_unique<DesktopConsent>(dispatch, files, home / "data", editionHasAds);
        consent->setAskUser([this](UIViewController&, const std::function<void(bool)>& answered) {
            ++asked;
            answered(answer);
        });
        return consent;
    }

    /// Nothing for a good end.
    std::optional<std::string> errorOf(const std::function<void(UMPConsentHandler)>& call) {
        std::optional<std::optional<Error>> end;
        call([&](const std::optional<Error>& error) { end = error; });
        EXPECT_FALSE(end) << "inside the call";
        dispatch.mainQueue().runUntil([&] { return end.has_value(); });
        return *end ? std::optional((*end)->localizedDescription) : std::nullopt;
    }

    std::optional<std::string> update(DesktopConsent& consent) {
        return errorOf([&](UMPConsentHandler handler) {
            consent.requestConsentInfoUpdateWithParameters({}, std::move(handler));
        });
    }

    std::optional<std::string> form(DesktopConsent& consent) {
        return errorOf([&](UMPConsentHandler handler) {
            consent.loadAndPresentIfRequiredFromViewController(root, std::move(handler));
        });
    }

    TemporaryFolder home;
    DesktopDispatch dispatch;
    DesktopFileManager files;
    FakeViewController root;
    bool answer = true;
    int asked = 0;
};

TEST_F(DesktopConsentTest, AnEditionWithoutAdsAsksNobody) {
    const auto consent = newProcess(false);
    EXPECT_TRUE(consent->canRequestAds());
    EXPECT_EQ(update(*consent), std::nullopt);
    EXPECT_EQ(form(*consent), std::nullopt);
    EXPECT_EQ(asked, 0);
    EXPECT_TRUE(home.names().empty());
}

TEST_F(DesktopConsentTest, AnAnswerIsAskedForOnceAndHoldsInLaterProcesses) {
    for (const bool allowed : {true, false}) {
        std::filesystem::remove_all(home / "data");
        asked = 0;
        answer = allowed;
        const auto first = newProcess();
        EXPECT_FALSE(first->canRequestAds());
        EXPECT_EQ(update(*first), std::nullopt);
        EXPECT_EQ(form(*first), std::nullopt);
        EXPECT_EQ(form(*first), std::nullopt);
        EXPECT_EQ(first->canRequestAds(), allowed);
        const auto later = newProcess();
        EXPECT_EQ(later->canRequestAds(), allowed);
        EXPECT_EQ(form(*later), std::nullopt);
        EXPECT_EQ(asked, 1);
    }
}

TEST_F(DesktopConsentTest, AFileThatSaysNothingIsAnErrorAndNoConsent) {
    std::filesystem::create_directory(home / "data");
    home.write("data/Consent", "ads allo");
    const auto consent = newProcess();
    EXPECT_FALSE(consent->canRequestAds());
    EXPECT_EQ(update(*consent), (home / "data/Consent").string() + " is damaged.");
    EXPECT_EQ(form(*consent), std::nullopt);
    EXPECT_TRUE(newProcess()->canRequestAds());
}

TEST_F(DesktopConsentTest, AnAnswerThatCantBeKeptHoldsForTheProcess) {
    home.write("data", "a file in the folder's place");
    const auto consent = newProcess();
    EXPECT_NE(form(*consent), std::nullopt);
    EXPECT_TRUE(consent->canRequestAds());
}

}  // namespace
}  // namespace quillmere
