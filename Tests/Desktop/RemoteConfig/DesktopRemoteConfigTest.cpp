// The remote values over a real server and a real disk.
#include "Desktop/RemoteConfig/DesktopRemoteConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>

#include "Base/Shared.h"
#include "Desktop/Application/ResourceBundle.h"
#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/URLSession/DesktopURLSession.h"
#include "Quillmere/Models/Services/RemoteConfigClient.h"
#include "Tests/Awaited.h"
#include "Tests/Fakes/FakeBundles.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeCoreML.h"
#include "Tests/LoopbackServer.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::Pair;
using testing::SizeIs;

using Status = RemoteConfigFetchStatus;

class RemoteValues : public testing::Test {
protected:
    RemoteValues() {
        folder.write("Defaults.plist",
                     "<plist version=\"1.0\"><dict>"
                     "<key>flag</key><true/><key>count</key><integer>5</integer>"
                     "<key>name</key><string>built in</string></dict></plist>");
    }

    /// As a process would have it at its start.
    std::unique_ptr<DesktopRemoteConfig> start(const std::string& endpoint) {
        auto config = std::make_unique<DesktopRemoteConfig>(
            DesktopRemoteConfig::Ports{*session, files, dispatch, bundle, console}, endpoint,
            folder / "cache", [this] { return now; });
        config->setDefaultsFromPlistFileName("Defaults");
        config->setConfigSettings(settings);
        return config;
    }
    std::unique_ptr<DesktopRemoteConfig> start() { return start(server.url("/values")); }

    struct Fetched {
        Status status{};
        std::optional<Error> error;
    };

    static Fetched fetch(RemoteConfig& config) {
        Awaited<Fetched> promise;
        config.fetchAndActivateWithCompletionHandler(
            [&](Status status, const std::optional<Error>& error) {
                promise.set({status, error});
            });
        return promise.get();
    }

    static std::string text(const DesktopRemoteConfig& config, const char* key) {
        return config.objectForKeyedSubscript(key).stringValue;
    }

    void serve(const std::string& document, const std::map<std::string, std::string>& fields = {}) {
        server.answer("/values", 200, fields, document);
    }

    std::chrono::system_clock::time_point now{1'800'000'000s};
    RemoteConfigSettings settings;
    CallLog log;
    FakeConsole console{log};
    TemporaryFolder folder;
    DesktopFileManager files;
    ResourceBundle bundle{folder.path()};
    DesktopDispatch dispatch;
    LoopbackServer server;
    std::unique_ptr<URLSession> session = std::make_unique<DesktopURLSession>(dispatch);
};

TEST_F(RemoteValues, WithoutAnEndpointTheFetchEndsWellAndTouchesNothing) {
    const auto config = start("");
    const Fetched fetched = fetch(*config);
    EXPECT_EQ(fetched.status, Status::usedPreFetchedData);
    EXPECT_EQ(fetched.error, std::nullopt);
    EXPECT_EQ(text(*config, "name"), "built in");
    EXPECT_THAT(server.requests(), IsEmpty());
    EXPECT_EQ(folder.names(), std::set<std::string>{"Defaults.plist"});
}

TEST_F(RemoteValues, WarmUpOnceAfterEachGoodFetchThatSaysSoAndAfterNoOther) {
    struct Case {
        int status;
        const char* document;
        int predictions;
    };
    for (const auto& [status, document, predictions] :
         {Case{200, "{\"enableWarmUp\": true}", 1}, Case{200, "{\"enableWarmUp\": false}", 0},
          Case{500, "{\"enableWarmUp\": true}", 0}}) {
        folder.write("RemoteConfigDefaults.plist",
                     "<plist version=\"1.0\"><dict><key>enableWarmUp</key><false/></dict></plist>");
        std::filesystem::remove_all(folder / "cache");
        server.answer("/values", status, {}, document);
        const auto config = start();
        CallLog calls;
        FakeBundles bundles(calls);
        FakeCoreML coreML(calls);
        const ModelCatalogue catalogue(coreML, bundles);
        {
            DesktopDispatch background;  // its end waits for the warm-up
            ModelWarmUp warmUp(catalogue, coreML, background, console);
            Shared<RemoteConfigClient> client(
                [&] { return std::make_shared<RemoteConfigClient>(*config, warmUp, console); });
            const Fetched fetched = fetch(client.get()->remoteConfig);
            client.get()->fetchCompleted(fetched.status, fetched.error, client.get());
        }
        const auto lines = calls.lines();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "prediction input 1 3 256 256"),
                  predictions)
            << status << document;
    }
}

TEST_F(RemoteValues, AnAnswerThatIsNoDocumentIsAnErrorAndChangesNothing) {
    const auto http = [](const std::string& body) {
        return "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
               std::to_string(body.size()) + "\r\n\r\n" + body;
    };
    struct Case {
        const char* what;
        std::string bytes;
        std::string domain;
        int code;
    };
    const Case cases[] = {
        {"a fault of the server", "HTTP/1.1 500 Error\r\nContent-Length: 2\r\n\r\n{}",
         DesktopRemoteConfig::errorDomain, 500},
        {"nothing there", "HTTP/1.1 404 Not Found\r\nContent-Length: 2\r\n\r\n{}",
         DesktopRemoteConfig::errorDomain, 404},
        {"unchanged, although nothing is known", "HTTP/1.1 304 Not Modified\r\n\r\n",
         DesktopRemoteConfig::errorDomain, 304},
        {"a page of a hotel's network", http("<html>Please sign in</html>"),
         DesktopRemoteConfig::errorDomain, 200},
        {"half a document", http("{\"flag\": fal"), DesktopRemoteConfig::errorDomain, 200},
        {"a list", http("[true]"), DesktopRemoteConfig::errorDomain, 200},
        {"nothing at all", http(""), DesktopRemoteConfig::errorDomain, 200},
        {"no UTF-8", http("{\"name\": \"\xff\"}"), DesktopRemoteConfig::errorDomain, 200},
        {"deep nesting", http(std::string(500'000, '[')), DesktopRemoteConfig::errorDomain, 200},
        {"10 MB", http("{\"name\": \"" + std::string(10'000'000, 'x') + "\"}"),
         URLSession::errorDomain, static_cast<int>(URLErrorCode::dataLengthExceedsMaximum)},
        {"cut off in the middle", http("{\"flag\": false}").substr(0, 70), URLSession::errorDomain,
         static_cast<int>(URLErrorCode::networkConnectionLost)},
        {"a redirect to itself", "HTTP/1.1 302 Found\r\nLocation: /values\r\n\r\n",
         URLSession::errorDomain, static_cast<int>(URLErrorCode::httpTooManyRedirects)},
    };
    const auto config = start();
    for (const Case& c : cases) {
        server.answerRaw("/values", c.bytes);
        const Fetched fetched = fetch(*config);
        EXPECT_EQ(fetched.status, Status::failed) << c.what;
        ASSERT_TRUE(fetched.error) << c.what;
        EXPECT_EQ(fetched.error->domain, c.domain) << c.what;
        EXPECT_EQ(fetched.error->code, c.code) << c.what;
        EXPECT_EQ(text(*config, "flag"), "true") << c.what;
    }
    EXPECT_EQ(folder.names(), std::set<std::string>{"Defaults.plist"}) << "nothing to be kept";
}

TEST_F(RemoteValues, AServerThatStaysSilentEndsWithTheTime) {
    server.neverAnswer("/values");
    settings.fetchTimeout = 20ms;
    const auto config = start();
    const Fetched fetched = fetch(*config);
    EXPECT_EQ(fetched.status, Status::failed);
    ASSERT_TRUE(fetched.error);
    EXPECT_EQ(fetched.error->code, static_cast<int>(URLErrorCode::timedOut));
}

TEST_F(RemoteValues, AValueOfAnotherKindThanItsDefaultDoesNotCountAndTheRestDoes) {
    serve(R"({"flag": 0, "count": "7", "name": "remote", "new": 1.5, "object": {}, "nothing": null,
              "list": )" +
          std::string(100'000, '[') + std::string(100'000, ']') + "}");
    const auto config = start();
    ASSERT_EQ(fetch(*config).status, Status::fetchedFromRemote);
    EXPECT_EQ(text(*config, "flag"), "true");
    EXPECT_EQ(text(*config, "count"), "5");
    EXPECT_EQ(text(*config, "name"), "remote");
    EXPECT_EQ(text(*config, "new"), "1.5");
    for (const char* key : {"list", "object", "nothing"}) {
        EXPECT_EQ(config->objectForKeyedSubscript(key), RemoteConfigValue()) << key;
    }
}

TEST_F(RemoteValues, WhatWasFetchedHoldsInLaterProcesses) {
    serve(R"({"flag": false, "count": 7, "name": "\u3042"})");
    fetch(*start());
    const auto later = start();
    EXPECT_EQ(text(*later, "flag"), "false");
    EXPECT_EQ(text(*later, "count"), "7");
    EXPECT_EQ(text(*later, "name"), "\xE3\x81\x82");
    EXPECT_EQ(later->objectForKeyedSubscript("flag").source, RemoteConfigSource::remote);
    EXPECT_EQ(text(*start(server.url("/other")), "flag"), "true") << "another server's";
    EXPECT_EQ(text(*start(""), "flag"), "true") << "without a server";
}

TEST_F(RemoteValues, NothingIsFetchedAgainWithinTheInterval) {
    serve(R"({"name": "first"})");
    ASSERT_EQ(fetch(*start()).status, Status::fetchedFromRemote);
    serve(R"({"name": "second"})");
    now += 12h - 1s;
    const auto within = start();
    EXPECT_EQ(fetch(*within).status, Status::usedPreFetchedData);
    EXPECT_EQ(text(*within, "name"), "first");
    EXPECT_THAT(server.requests(), SizeIs(1));
    now += 1s;
    const auto after = start();
    EXPECT_EQ(fetch(*after).status, Status::fetchedFromRemote);
    EXPECT_EQ(text(*after, "name"), "second");
    now -= 24h;
    EXPECT_EQ(fetch(*start()).status, Status::fetchedFromRemote) << "a clock that was set back";
}

TEST_F(RemoteValues, AnUnchangedDocumentIsNotSentAgain) {
    serve(R"({"name": "first"})", {{"ETag", "\"v1\""}});
    fetch(*start());
    EXPECT_THAT(server.requests().back().fields, Not(Contains(Key("if-none-match"))));

    server.answer("/values", 304, {}, "");
    now += 13h;
    const auto later = start();
    EXPECT_EQ(fetch(*later).status, Status::usedPreFetchedData);
    EXPECT_EQ(text(*later, "name"), "first");
    EXPECT_THAT(server.requests().back().fields, Contains(Pair("if-none-match", "\"v1\"")));

    now += 11h;
    EXPECT_EQ(fetch(*start()).status, Status::usedPreFetchedData);
    EXPECT_THAT(server.requests(), SizeIs(2)) << "the interval begins with the 304";
}

TEST_F(RemoteValues, ADamagedCacheCountsAsNone) {
    serve(R"({"name": "kept"})", {{"ETag", "\"v1\""}});
    fetch(*start());
    const auto cache = folder / "cache" / "RemoteConfig.json";
    const auto contents = files.contentsOfFile(cache);
    ASSERT_TRUE(contents);
    const std::string kept(reinterpret_cast<const char*>(contents->data()), contents->size());
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string changed = kept;
        changed.replace(changed.find(from), from.size(), to);
        return changed;
    };
    ASSERT_EQ(text(*start(), "name"), "kept");
    for (const std::string& damaged :
         {std::string(), kept.substr(0, kept.size() / 2), std::string("[]"),
          with("\"endpoint\"", "\"address\""), with("1800000000", "\"yesterday\""),
          with("1800000000", "-1"), with("1800000000", "18000000000000000000"),
          with("\"values\": {", "\"values\": [{"), with("\"\\\"v1\\\"\"", "null")}) {
        folder.write("cache/RemoteConfig.json", damaged);
        EXPECT_EQ(text(*start(), "name"), "built in") << damaged;
    }
    folder.write("cache/RemoteConfig.json", with("v1", "v1\\r\\nx-other: 1"));
    now += 13h;
    EXPECT_EQ(fetch(*start()).status, Status::fetchedFromRemote);
    EXPECT_THAT(server.requests().back().fields, Not(Contains(Key("if-none-match"))));
}

TEST_F(RemoteValues, WhatCannotBeKeptIsInForceAllTheSame) {
    folder.write("cache", "a file where the folder should be");
    serve(R"({"name": "remote"})");
    const auto config = start();
    EXPECT_EQ(fetch(*config).status, Status::fetchedFromRemote);
    EXPECT_EQ(text(*config, "name"), "remote");
    EXPECT_THAT(log.lines(), Contains(HasSubstr("not kept")));
}

TEST_F(RemoteValues, AListOfDefaultsThatCannotBeReadIsToldAndSetsNone) {
    folder.write("Broken.plist", "<plist>");
    const auto config = start();
    for (const char* name : {"Broken", "Missing"}) {
        config->setDefaultsFromPlistFileName(name);
        EXPECT_EQ(config->objectForKeyedSubscript("name"), RemoteConfigValue());
        EXPECT_THAT(log.lines().back(), HasSubstr(name));
    }
}

TEST_F(RemoteValues, AFetchMayOutliveWhoeverAskedForIt) {
    server.neverAnswer("/values");
    std::atomic<int> code = 0;
    start()->fetchAndActivateWithCompletionHandler(
        [&](Status, const std::optional<Error>& error) { code = error ? error->code : 1; });
    session.reset();
    EXPECT_EQ(code, static_cast<int>(URLErrorCode::cancelled));
}

}  // namespace
}  // namespace quillmere
