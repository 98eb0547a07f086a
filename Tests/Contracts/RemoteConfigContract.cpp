// What every implementation of `RemoteConfig` owes its callers, on the fake and over a real server.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "Desktop/Application/ResourceBundle.h"
#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/RemoteConfig/DesktopRemoteConfig.h"
#include "Desktop/URLSession/DesktopURLSession.h"
#include "Tests/Awaited.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeRemoteConfig.h"
#include "Tests/LoopbackServer.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

enum class Kind { fake, desktop };

/// Both are given a list "Defaults" with a true `flag` and a `count` of 5.
class RemoteConfigContract : public testing::TestWithParam<Kind> {
protected:
    RemoteConfigContract() {
        if (GetParam() == Kind::fake) {
            auto made = std::make_unique<FakeRemoteConfig>(log, dispatch);
            fake = made.get();
            fake->propertyLists["Defaults"] = {{"flag", FakeRemoteConfig::boolean(true)},
                                               {"count", FakeRemoteConfig::integer(5)}};
            config = std::move(made);
            return;
        }
        folder.write("Defaults.plist",
                     "<plist version=\"1.0\"><dict><key>flag</key><true/>"
                     "<key>count</key><integer>5</integer></dict></plist>");
        config = std::make_unique<DesktopRemoteConfig>(
            DesktopRemoteConfig::Ports{session, files, dispatch, bundle, console},
            server.url("/values"), std::nullopt);
        config->setConfigSettings({std::chrono::seconds(30), std::chrono::seconds(0)});
    }

    /// The server says that `flag` is false.
    void serve() {
        server.answer("/values", 200, {}, R"({"flag": false})");
        if (!fake) return;
        fake->fetchError.reset();
        fake->server = {{"flag", FakeRemoteConfig::boolean(false)}};
    }

    void serveAFailure() {
        server.answer("/values", 500, {}, "");
        if (fake) fake->fetchError = Error{"server", 500, "The server is out of order."};
    }

    struct Fetched {
        RemoteConfigFetchStatus status{};
        std::optional<Error> error;
        std::thread::id thread;
        RemoteConfigValue flag;  // as the handler reads it
    };

    Fetched fetch() {
        Awaited<Fetched> promise;
        config->fetchAndActivateWithCompletionHandler(
            [&](RemoteConfigFetchStatus status, const std::optional<Error>& error) {
                promise.set({status, error, std::this_thread::get_id(), read("flag")});
            });
        return promise.get();
    }

    RemoteConfigValue read(const char* key) const { return config->objectForKeyedSubscript(key); }

    CallLog log;
    TemporaryFolder folder;
    DesktopFileManager files;
    ResourceBundle bundle{folder.path()};
    FakeConsole console{log};
    DesktopDispatch dispatch;
    LoopbackServer server;
    DesktopURLSession session{dispatch};
    std::unique_ptr<RemoteConfig> config;
    FakeRemoteConfig* fake = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Both, RemoteConfigContract, testing::Values(Kind::fake, Kind::desktop),
                         [](const auto& kind) {
                             return kind.param == Kind::fake ? "Fake" : "Desktop";
                         });

TEST_P(RemoteConfigContract, AKeyThatNobodyKnowsIsEmptyFalseAndZero) {
    EXPECT_EQ(read("flag"), RemoteConfigValue());
    config->setDefaultsFromPlistFileName("Defaults");
    EXPECT_EQ(read("other"), RemoteConfigValue());
    EXPECT_EQ(read("other").source, RemoteConfigSource::fixed);
    config->setDefaultsFromPlistFileName("Missing");
    EXPECT_EQ(read("flag"), RemoteConfigValue());
}

TEST_P(RemoteConfigContract, DefaultsHoldUntilTheServerHasSpokenAndWhereItSaysNothing) {
    config->setDefaultsFromPlistFileName("Defaults");
    EXPECT_EQ(read("flag"), (RemoteConfigValue{"true", true, 1, 1, RemoteConfigSource::defaults}));
    serve();
    const Fetched fetched = fetch();
    EXPECT_EQ(fetched.status, RemoteConfigFetchStatus::fetchedFromRemote);
    EXPECT_EQ(fetched.error, std::nullopt);
    EXPECT_NE(fetched.thread, std::this_thread::get_id());
    const RemoteConfigValue expected{"false", false, 0, 0, RemoteConfigSource::remote};
    EXPECT_EQ(fetched.flag, expected) << "the handler came before the values";
    EXPECT_EQ(read("flag"), expected);
    EXPECT_EQ(read("count"), (RemoteConfigValue{"5", true, 5, 5, RemoteConfigSource::defaults}));
}

TEST_P(RemoteConfigContract, AFailedFetchSaysWhyAndLeavesTheValuesAsTheyWere) {
    config->setDefaultsFromPlistFileName("Defaults");
    serveAFailure();
    const Fetched first = fetch();
    EXPECT_EQ(first.status, RemoteConfigFetchStatus::failed);
    ASSERT_TRUE(first.error);
    EXPECT_FALSE(first.error->localizedDescription.empty());
    EXPECT_EQ(first.flag.source, RemoteConfigSource::defaults);

    serve();
    fetch();
    serveAFailure();
    EXPECT_EQ(fetch().flag.source, RemoteConfigSource::remote);
}

TEST_P(RemoteConfigContract, TheHandlerIsNeverCalledInsideTheCall) {
    serve();
    std::mutex calling;
    Awaited<bool> called;
    {
        const std::lock_guard lock(calling);  // a call from in here would hang
        config->fetchAndActivateWithCompletionHandler(
            [&](RemoteConfigFetchStatus, const std::optional<Error>&) {
                { const std::lock_guard afterTheCall(calling); }
                called.set(true);
            });
    }
    called.get();
}

}  // namespace
}  // namespace quillmere
