#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Services/RemoteConfigClient.h"
#include "Quillmere/Views/Settings/ReportFormView.h"
#include "Quillmere/Views/Settings/SettingsView.h"
#include "Quillmere/Views/Share/Confetti.h"
#include "Quillmere/Views/Share/ShareView.h"
#include "Tests/Fakes/FakeAnalytics.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeCrashLog.h"
#include "Tests/Fakes/FakeFileManager.h"
#include "Tests/Fakes/FakeImageIO.h"
#include "Tests/Fakes/FakeLocalization.h"
#include "Tests/Fakes/FakeRemoteConfig.h"
#include "Tests/Fakes/FakeSharing.h"
#include "Tests/Fakes/FakeUIApplication.h"
#include "Tests/Fakes/FakeURLSession.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/ManualClock.h"

namespace quillmere {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

/// What the screens around a result ask for, over fakes, with one window.
class WaysOutTest : public testing::Test {
protected:
    WaysOutTest() {
        settings.storeLink = "https://example.org/quillmere";
        settings.makerStorePage = "https://example.org/maker/";
        settings.reviewLink = "https://example.org/review";
        settings.supportAddress = "help@example.org";
        settings.inquiryEndpoint = "https://inquiry.example.org";
        settings.inquiryTitle = "問い";
        settings.inquiryKey = "KEY";
        scene.shown = {&window};
        application.scenes = {&scene};
        fileManager.folders.insert(fileManager.temporaryDirectory());
    }

    void pump() {
        for (int round = 0; round < 3; ++round) {
            bool last = false;
            dispatch->mainQueue().async([&] { last = true; });
            dispatch->mainQueue().runUntil([&] { return last; });
        }
    }
    void wait(std::chrono::milliseconds time) {
        clock->advanceBy(time);
        pump();
    }
    std::vector<std::string> events() const {
        std::vector<std::string> found;
        for (const std::string& line : log.lines()) {
            if (line.starts_with("event ")) found.push_back(line.substr(6));
        }
        return found;
    }

    CallLog log;
    ManualClock* clock = new ManualClock;  // the dispatch's
    std::unique_ptr<DesktopDispatch> dispatch =
        std::make_unique<DesktopDispatch>(std::unique_ptr<Clock>(clock));
    FakeUserDefaults userDefaults{log};
    FakeAnalytics analytics{log};
    FakeLocalization localization{log};
    FakeRemoteConfig remote{log, *dispatch};
    FakeFileManager fileManager;
    FakeImageIO imageIO{log};
    FakeViewController root;
    FakeWindow window{true, &root};
    FakeWindowScene scene;
    FakeUIApplication application;
    FakeActivityViewController activities;
    FakeMail mail;
    FakeAlertController alerts;
    FakeUIDevice device;
    FakeCrashLog crashLog;
    FakeConsole console{log};
    ProjectSettings settings;
    SharePorts share{*dispatch,   analytics,   localization, userDefaults, remote,  imageIO,
                     fileManager, application, activities,   crashLog,     console, settings};
    const UIImage picture = FakeImageIO::picture({8, 6});
};

TEST_F(WaysOutTest, TheScreenAndItsImpressionReadTheRemoteValueEachOnItsOwn) {
    const auto set = [this](bool enhanced) {
        remote.propertyLists["p"]["showEnhancedShareView"].boolValue = enhanced;
        remote.setDefaultsFromPlistFileName("p");
    };
    const ShareView view(share);
    set(false);
    EXPECT_FALSE(view.isEnhanced());
    set(true);
    view.appear();
    EXPECT_THAT(events(), ElementsAre("abtest_impression variant=enhanced"));
}

TEST_F(WaysOutTest, EachButtonOfTheOriginalScreenSharesBetweenItsTwoEvents) {
    OriginalShareView view(share, picture);
    view.appear();
    EXPECT_EQ(view.iconScale.get(), 1.2);
    view.shareImageTapped();
    view.shareToFriendsTapped();
    EXPECT_THAT(events(), ElementsAre("share_view_displayed variant=original", "saved_shareImage",
                                      "share_image_tapped variant=original", "saved_shareApp",
                                      "share_app_tapped variant=original"));
    ASSERT_THAT(activities.presented, SizeIs(2));
    EXPECT_TRUE(std::holds_alternative<UIImage>(activities.presented[0].items.at(0)));
    EXPECT_EQ(std::get<std::string>(activities.presented[1].items.at(0)),
              "AppName https://example.org/quillmere");
    application.scenes.clear();
    view.shareImageTapped();
    EXPECT_THAT(activities.presented, SizeIs(2)) << "without a window";
}

TEST_F(WaysOutTest, TheOtherAppsFollowTheCountOfSaves) {
    for (const auto& [saves, original, enhanced] :
         std::vector<std::tuple<int, std::vector<std::size_t>, std::vector<std::size_t>>>{
             {10, {2}, {2}}, {11, {2, 3}, {3}}, {8, {2, 0}, {0}}}) {
        userDefaults.integers[std::string(reviewCountKey)] = saves;
        EXPECT_EQ(OriginalShareView(share, picture).moreApps(), original);
        EXPECT_EQ(EnhancedShareView(share, picture).moreApps(), enhanced);
    }
    OriginalShareView(share, picture).moreAppTapped(2);
    EXPECT_THAT(events(),
                ElementsAre("MoreAppAtShare AppIndex=2 variant=original", "share_more_apps"));
    EXPECT_THAT(application.opened, ElementsAre("https://example.org/maker/palette-pond"));
}

TEST_F(WaysOutTest, TheEnhancedScreenComesInStepsAndCountsOneImpression) {
    const auto view = std::make_shared<EnhancedShareView>(share, picture);
    EXPECT_THAT(view->activityItems(), IsEmpty()) << "before any choice";
    view->appear();
    EXPECT_EQ(view->iconScale.get(), 1);
    EXPECT_THAT(view->options(), SizeIs(2));
    wait(std::chrono::milliseconds(299));
    EXPECT_FALSE(view->animateShareButtons.get());
    wait(std::chrono::milliseconds(1));
    EXPECT_TRUE(view->animateShareButtons.get());
    EXPECT_FALSE(view->showConfetti.get());
    wait(std::chrono::milliseconds(200));
    EXPECT_TRUE(view->showConfetti.get());
    view->appear();
    view->shareImageTapped();
    EXPECT_TRUE(view->isShareSheetPresented.get());
    EXPECT_THAT(view->activityItems(), SizeIs(1));
    view->optionTapped(EnhancedShareView::ShareOption::message);
    view->shareToFriendsTapped();
    EXPECT_EQ(std::get<std::string>(activities.presented.at(0).items.at(0)),
              "\"AppName\" https://example.org/quillmere");
    EXPECT_THAT(events(), ElementsAre("share_view_displayed variant=enhanced",
                                      "share_image_tapped source=main_button variant=enhanced",
                                      "share_sheet_open option=image variant=enhanced",
                                      "share_option_tapped option=message variant=enhanced",
                                      "saved_shareApp", "share_app_tapped variant=enhanced"));
}

TEST_F(WaysOutTest, TheOtherApplicationGetsAFileOfItsOwnEachTime) {
    const auto view = std::make_shared<EnhancedShareView>(share, picture);
    view->appear();
    ASSERT_THAT(view->options(), SizeIs(2));
    application.openable = {"instagram:"};
    application.answered(true);
    ASSERT_THAT(view->options(), SizeIs(3)) << "when the system has told of it";
    const auto open = [&] {
        view->optionTapped(EnhancedShareView::ShareOption::instagram);
        EXPECT_THAT(view->activityItems(), SizeIs(1));
    };
    open();
    open();
    ASSERT_THAT(fileManager.files, SizeIs(2));
    const auto& [file, bytes] = *fileManager.files.begin();
    EXPECT_EQ(file.extension(), ".igo");
    EXPECT_EQ(bytes, FakeImageIO::bytesOf("jpeg 8x6"));
    EXPECT_THAT(log.lines(), Contains("jpeg 1.0"));
    EXPECT_THAT(application.opened, Contains("instagram://library?AssetPath=" + file.string()));
    EXPECT_THAT(activities.presented, IsEmpty());

    application.openable.clear();
    open();
    EXPECT_THAT(activities.presented, SizeIs(1)) << "the way out of a refused address";
    fileManager.refused.insert(fileManager.temporaryDirectory());
    open();
    EXPECT_THAT(activities.presented, SizeIs(1)) << "a failed write ends the step";
    EXPECT_THAT(application.opened, SizeIs(3));
}

TEST_F(WaysOutTest, ConfettiCoverTheWidthInAllColours) {
    std::uint64_t state = 1;
    const auto pieces = makeConfetti(640, [&] { return state = state * 6364136223846793005u + 1; });
    ASSERT_THAT(pieces, SizeIs(100));
    std::set<Confetti::Color> colors;
    for (const Confetti& piece : pieces) {
        colors.insert(piece.color);
        EXPECT_TRUE(piece.position.x >= 0 && piece.position.x < 640);
        EXPECT_TRUE(piece.position.y >= 0 && piece.position.y < 100);
        EXPECT_TRUE(piece.rotation >= 0 && piece.rotation < 360);
        EXPECT_TRUE(piece.scale >= 0.5 && piece.scale < 1.5);
    }
    EXPECT_THAT(colors, SizeIs(6));
}

TEST_F(WaysOutTest, EachRowOfTheSettingsLeadsWhereItSays) {
    SettingsView view(
        {userDefaults, analytics, localization, application, activities, mail, console, settings});
    EXPECT_EQ(view.resolutionLimitIndex.get(), 0);
    view.resolutionLimitIndex.set(1);
    EXPECT_EQ(userDefaults.integers[std::string(resolutionLimitIndexKey)], 1);
    view.shareToFriendsTapped();
    view.moreAppsTapped();
    view.writeReviewTapped();
    view.moreAppTapped(7);
    view.contactTapped();
    EXPECT_TRUE(view.isShowingMailView.get());
    EXPECT_THAT(application.opened,
                ElementsAre("https://example.org/maker/", "https://example.org/review",
                            "https://example.org/maker/cloud-shelf"));
    EXPECT_THAT(events(), ElementsAre("settings_share", "settings_more_apps", "settings_review",
                                      "MoreApp AppIndex=7", "settings_more_apps",
                                      "settings_feedback_success"));
    EXPECT_EQ(activities.presented.at(0).presenter, &root);

    const ProjectSettings none;
    SettingsView bare(
        {userDefaults, analytics, localization, application, activities, mail, console, none});
    bare.moreAppsTapped();
    bare.writeReviewTapped();
    bare.moreAppTapped(0);
    EXPECT_THAT(application.opened, SizeIs(3)) << "an edition without pages";
}

TEST_F(WaysOutTest, WithoutAMailProgramTheUserIsTold) {
    mail.hasAccount = false;
    SettingsView view(
        {userDefaults, analytics, localization, application, activities, mail, console, settings});
    view.contactTapped();
    EXPECT_FALSE(view.isShowingMailView.get());
    EXPECT_EQ(view.alert.get()->message(), "FailedToOpenMail");
    EXPECT_THAT(events(), ElementsAre("settings_feedback_failed"));
}

TEST_F(WaysOutTest, AMailLeavesRoomForWordsAndItsEndIsKept) {
    mail.ends = {MFMailComposeResult::cancelled, Error{"mail", 1, "no"}};
    Published<bool> showing{true};
    Published<MailView::End> end;
    MailView view({mail, device, localization, settings}, showing, end);
    view.present();
    EXPECT_EQ(mail.drafts.at(0).recipient, "help@example.org");
    EXPECT_EQ(mail.drafts.at(0).subject, "Inquiry About AppName");
    EXPECT_EQ(mail.drafts.at(0).body, "\n\nDesk\n12");
    EXPECT_FALSE(showing.get());
    EXPECT_EQ(**end.get(), MFMailComposeResult::cancelled);
    view.present();
    EXPECT_FALSE(*end.get());
}

TEST_F(WaysOutTest, EachAnswerToAnInquiryHasItsEnd) {
    FakeURLSession session(*dispatch);
    const std::string url =
        "https://inquiry.example.org/prod/appinquiry?title=%E5%95%8F%E3%81%84&desc=a%20b&c=%25";
    struct Case {
        Result<URLAnswer> answer;
        std::optional<std::string> alert;
        bool isSent;
    };
    const auto status = [](int code) { return URLAnswer{{}, HTTPURLResponse{code, {}}}; };
    for (const Case& c : {
             Case{status(200), {}, true},
             Case{status(201), "error code: 201", false},
             Case{status(500), "error code: 500", false},
             Case{URLAnswer{{}, std::nullopt}, {}, false},
             Case{FakeURLSession::failure(URLErrorCode::timedOut), "The request failed.", false},
         }) {
        alerts.presented.clear();
        session.answers.insert_or_assign(url, c.answer);
        const auto view = std::make_shared<ReportFormView>(ReportFormView::Ports{
            *dispatch, session, localization, application, alerts, crashLog, settings});
        EXPECT_FALSE(view->canSend());
        view->text.set("a b&c=%");
        EXPECT_TRUE(view->canSend());
        view->promptFieldIsFocused.set(true);
        std::vector<bool> loading;
        const auto heard = view->isLoading.subscribe([&](bool is) { loading.push_back(is); });
        // Comes on the session's thread, after the block that ends the loading.
        const auto told = view->alert.subscribe([&](const auto&) { dispatch->mainQueue().wake(); });
        view->sendTapped();
        EXPECT_FALSE(view->promptFieldIsFocused.get());
        wait(std::chrono::milliseconds(499));
        EXPECT_THAT(loading, IsEmpty());
        wait(std::chrono::milliseconds(1));
        dispatch->mainQueue().runUntil([&] { return loading.size() == 2; });
        dispatch->mainQueue().runUntil(
            [&] { return view->alert.get().has_value() == c.alert.has_value(); });
        dispatch->mainQueue().runUntil([&] { return alerts.presented.size() == c.isSent; });
        EXPECT_THAT(loading, ElementsAre(true, false));
        EXPECT_EQ(view->alert.get() ? view->alert.get()->message() : std::nullopt, c.alert);
        EXPECT_EQ(view->text.get(), "a b&c=%");
        EXPECT_FALSE(view->dismissed.get());
        if (c.isSent) alerts.presented[0].confirmed();
        EXPECT_EQ(view->dismissed.get(), c.isSent);
    }
    const URLRequest request = session.requests().at(0);
    EXPECT_EQ(request.httpMethod, "POST");
    EXPECT_EQ(request.timeoutInterval, std::chrono::seconds(60));
    EXPECT_EQ(request.allHTTPHeaderFields.at("x-api-key"), "KEY");
    EXPECT_THAT(request.httpBody, IsEmpty());
}

}  // namespace
}  // namespace quillmere
