#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Quillmere/QuillmereApp.h"
#include "Tests/Fakes/FakeAdLibrary.h"
#include "Tests/Fakes/FakeAnalytics.h"
#include "Tests/Fakes/FakeBundles.h"
#include "Tests/Fakes/FakeConsent.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeCoreML.h"
#include "Tests/Fakes/FakeCrashLog.h"
#include "Tests/Fakes/FakeRemoteConfig.h"
#include "Tests/Fakes/FakeUIApplication.h"
#include "Tests/Fakes/FakeUserDefaults.h"

namespace quillmere {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

using Lines = std::vector<std::string>;

class FakeServices final : public FIRApp {
public:
    explicit FakeServices(CallLog& log) : log_(log) {}
    void configure() override { log_.record("configure"); }

private:
    CallLog& log_;
};

class StartUpTest : public testing::Test {
protected:
    StartUpTest() {
        scene.shown = {&window};
        application.scenes = {&scene};
    }

    /// What the action leaves in the log, once the main queue has nothing left to run.
    Lines linesAfter(const std::function<void()>& action) {
        const std::size_t before = log.lines().size();
        action();
        bool last = false;
        dispatch.mainQueue().async([&] { last = true; });
        dispatch.mainQueue().runUntil([&] { return last; });
        Lines lines = log.lines();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
        return lines;
    }

    CallLog log;
    FakeServices services{log};
    FakeAdLibrary ads{log};
    FakeConsent consent{log};
    FakeAnalytics analytics{log};
    FakeConsole console{log};
    FakeCrashLog crashLog;
    FakeBundles bundles{log};
    FakeCoreML coreML{log};
    FakeViewController root;
    FakeWindow window{true, &root};
    FakeWindowScene scene;
    FakeUIApplication application;
    ProjectSettings settings = [] {
        ProjectSettings made;
        made.testDeviceIdentifiers = {"A", "B", "C"};
        made.appOpenAdUnit = "open";
        made.conversionAdUnit = "conversion";
        return made;
    }();
    DesktopDispatch dispatch;
    std::unique_ptr<DesktopDispatch> fetchDispatch = std::make_unique<DesktopDispatch>();
    FakeRemoteConfig remote{log, *fetchDispatch};
    FakeUserDefaults userDefaults{log};
    QuillmereApp app{{dispatch, services, ads, ads, consent, consent, application, userDefaults,
                      remote, coreML, bundles, analytics, crashLog, console, settings}};
};

const Lines adsStart{"setTestDeviceIdentifiers A B C", "start ads"};

TEST_F(StartUpTest, LaunchConfiguresThenSetsPrivacyThenStartsTheOneFetch) {
    remote.fetchError = Error{"NSURLErrorDomain", -1009, "offline"};
    EXPECT_TRUE(app.appDelegate().applicationDidFinishLaunching());
    fetchDispatch.reset();  // once the fetch has ended, which the application must outlive
    Lines lines = log.lines();
    lines.resize(6);
    EXPECT_THAT(lines, ElementsAre("configure", "setHasUserConsent true", "setDoNotSell true",
                                   "setDefaultsFromPlistFileName RemoteConfigDefaults",
                                   "setConfigSettings 60000 43200", "fetchAndActivate"));
}

TEST_F(StartUpTest, EachScenePhaseDoesItsWorkInOrder) {
    const auto listening = app.notificationCenter().addObserver(
        cancelSaveVideo, [this] { log.record("cancelSaveVideo"); });
    const auto other =
        app.notificationCenter().addObserver("other", [this] { log.record("other"); });
    struct Case {
        ScenePhase phase;
        Lines expected;
    };
    for (const auto& [phase, expected] : {
             Case{ScenePhase::background, {"cancelSaveVideo", "event AppGoBackground"}},
             Case{ScenePhase::inactive, {}},
             Case{ScenePhase::active, {"event AppBecomeActive", "integerForKey reviewCountKey"}},
             Case{ScenePhase{7}, {}},
         }) {
        EXPECT_THAT(linesAfter([&] { app.scenePhaseChanged(phase); }), ElementsAreArray(expected));
    }
}

/// One way through the sequence, as far as it goes.
struct ConsentPath {
    const char* name;
    bool allowedBefore = false;
    std::optional<std::string> updateError = {};
    bool window = true;
    std::optional<std::string> formError = {};
    bool allowedAfter = false;
    Lines expected = {};
    Lines crashLines = {};
};

TEST_F(StartUpTest, EachPathOfConsentStartsTheAdsOnceOrNotAtAll) {
    const std::string update = "update consent, under age no";
    const std::string start0 = adsStart[0];
    const std::string start1 = adsStart[1];
    const ConsentPath paths[] = {
        {.name = "refresh fails",
         .updateError = "offline",
         .expected = {update, "canRequestAds", "console Error: offline", start0, start1}},
        {.name = "no window",
         .window = false,
         .expected = {update, "canRequestAds", start0, start1},
         .crashLines = {"keyWindow == nil"}},
        {.name = "form fails",
         .formError = "torn",
         .expected = {update, "canRequestAds", "consent form", "console Error: torn", start0,
                      start1}},
        {.name = "consent given",
         .allowedAfter = true,
         .expected = {update, "canRequestAds", "consent form", "canRequestAds", start0, start1}},
        {.name = "consent refused",
         .expected = {update, "canRequestAds", "consent form", "canRequestAds"}},
        {.name = "given earlier",
         .allowedBefore = true,
         .allowedAfter = true,
         .expected = {update, "canRequestAds", start0, start1, "consent form", "canRequestAds"}},
        {.name = "given earlier, refresh fails",
         .allowedBefore = true,
         .updateError = "offline",
         .expected = {update, "canRequestAds", start0, start1, "console Error: offline"}},
    };
    for (const ConsentPath& path : paths) {
        SCOPED_TRACE(path.name);
        const auto asError = [](const std::optional<std::string>& text) {
            return text ? std::optional(Error{"consent", 1, *text}) : std::nullopt;
        };
        ContentView view({dispatch, consent, consent, ads, application, crashLog, console,
                          app.appOpenAdManager(), app.interstitialAdManager()},
                         settings.testDeviceIdentifiers);
        consent.adsAllowed = path.allowedBefore;
        consent.formHandler = nullptr;
        scene.shown = path.window ? std::vector<UIWindow*>{&window} : std::vector<UIWindow*>{};
        const std::size_t crashLinesBefore = crashLog.lines().size();

        Lines lines = linesAfter([&] { view.setupOnce(); });
        const auto add = [&](const std::function<void()>& action) {
            const Lines more = linesAfter(action);
            lines.insert(lines.end(), more.begin(), more.end());
        };
        add([&] { consent.updateHandler(asError(path.updateError)); });
        if (consent.formHandler) {
            EXPECT_EQ(consent.formShownOver, &root);
            consent.adsAllowed = path.allowedAfter;
            // The library may call back from anywhere; the start still happens on main.
            add([&] { std::thread([&] { consent.formHandler(asError(path.formError)); }).join(); });
        }
        EXPECT_THAT(lines, ElementsAreArray(path.expected));
        Lines crashLines = crashLog.lines();
        crashLines.erase(crashLines.begin(),
                         crashLines.begin() + static_cast<std::ptrdiff_t>(crashLinesBefore));
        EXPECT_THAT(crashLines, ElementsAreArray(path.crashLines));
        EXPECT_THAT(linesAfter([&] { view.setupOnce(); }), IsEmpty()) << "appears again";
    }
}

TEST_F(StartUpTest, TheStartedAdLibraryLoadsBothAdsInOrder) {
    linesAfter([&] { app.contentView().startMobileAds(); });
    EXPECT_THAT(log.lines(), Not(Contains("load app open open")));
    EXPECT_THAT(linesAfter([&] { ads.startHandler(); }),
                ElementsAre("console Start loading app open ad.", "load app open open",
                            "load interstitial conversion"));
}

TEST_F(StartUpTest, AnAdLibraryThatNeverStartsHoldsUpNothing) {
    userDefaults.integers["reviewCountKey"] = 1;
    linesAfter([&] { app.contentView().startMobileAds(); });
    EXPECT_THAT(linesAfter([&] { app.scenePhaseChanged(ScenePhase::active); }),
                ElementsAre("event AppBecomeActive", "integerForKey reviewCountKey",
                            "console App open ad is not ready yet."));
    EXPECT_THAT(ads.loads, IsEmpty());
}

TEST_F(StartUpTest, SeveralThreadsStartTheAdsOnceAndOnlyOnMain) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back([&] { app.contentView().startMobileAds(); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(linesAfter([] {}), ElementsAreArray(adsStart));
}

TEST(SharedTest, ThreadsThatComeTogetherGetOneInstance) {
    std::atomic<int> made = 0;
    Shared<int> shared([&] {
        ++made;
        return std::make_shared<int>(7);
    });
    EXPECT_EQ(made, 0);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back([&] { EXPECT_EQ(*shared.get(), 7); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(made, 1);
}

}  // namespace
}  // namespace quillmere
