#include "Quillmere/Models/Services/RemoteConfigClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Tests/Fakes/FakeBundles.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeCoreML.h"
#include "Tests/Fakes/FakeRemoteConfig.h"

namespace quillmere {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

using Lines = std::vector<std::string>;
using Status = RemoteConfigFetchStatus;

class RemoteConfigClientTest : public testing::Test {
protected:
    RemoteConfigClientTest() {
        remote.propertyLists["RemoteConfigDefaults"] = {
            {"showCollapsibleBanner", FakeRemoteConfig::boolean(false)},
            {"convertAdDisplayThreshold", FakeRemoteConfig::integer(5)}};
        client = std::make_shared<RemoteConfigClient>(remote, warmUp, console);
    }

    /// The lines from here on, once nothing is under way any more.
    Lines linesAfter(const std::function<void()>& action) {
        const std::size_t before = log.lines().size();
        action();
        dispatch.reset();
        Lines lines = log.lines();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
        return lines;
    }

    /// What start-up does.
    void launch() {
        client->remoteConfig.fetchAndActivateWithCompletionHandler(
            [this, weak = std::weak_ptr<const RemoteConfigClient>(client)](
                Status status, const std::optional<Error>& error) {
                client->fetchCompleted(status, error, weak);
            });
    }

    CallLog log;
    FakeBundles bundles{log};
    FakeCoreML coreML{log};
    FakeConsole console{log};
    std::unique_ptr<DesktopDispatch> dispatch = std::make_unique<DesktopDispatch>();
    FakeRemoteConfig remote{log, *dispatch};
    ModelCatalogue catalogue{coreML, bundles};
    ModelWarmUp warmUp{catalogue, coreML, *dispatch, console};
    std::shared_ptr<RemoteConfigClient> client;
};

std::ptrdiff_t predictions(const Lines& lines) {
    return std::count_if(lines.begin(), lines.end(),
                         [](const std::string& line) { return line.starts_with("prediction"); });
}

TEST_F(RemoteConfigClientTest, IsMadeWithItsDefaultsAndThePlatformsOwnSettingsAndFetchesNothing) {
    EXPECT_THAT(log.lines(), ElementsAre("setDefaultsFromPlistFileName RemoteConfigDefaults",
                                         "setConfigSettings 60000 43200"));
}

TEST_F(RemoteConfigClientTest, AGoodFetchPrintsAllValuesInOrderAndWarmsUpTheStyleHighOnce) {
    remote.server = {{"enableWarmUp", FakeRemoteConfig::boolean(true)},
                     {"convertAdDisplayThreshold", FakeRemoteConfig::integer(7)}};
    const Lines lines = linesAfter([this] { launch(); });
    EXPECT_THAT(
        lines,
        ElementsAre(
            "fetchAndActivate", "console RemoteConfig status: 0", "read showCollapsibleBanner",
            "console showCollapsibleBanner: false (source: default)",
            "read convertAdDisplayThreshold",
            "console convertAdDisplayThreshold: 7 (source: remote)", "read showEnhancedShareView",
            "console showEnhancedShareView:  (source: static)", "read enableWarmUp",
            "console enableWarmUp: true (source: remote)", "read enableWarmUp",
            "bundleForClass bsrgan8", "urlForResource bsrgan8.mlmodelc",
            "load /bundle/bsrgan8.mlmodelc", "multiArray type=65568",
            "prediction input 1 3 256 256", "console ✅ Model warmed up predictions"));
}

TEST_F(RemoteConfigClientTest, EachStatusButFailureReadsTheSwitch) {
    remote.propertyLists["on"] = {{"enableWarmUp", FakeRemoteConfig::boolean(true)}};
    remote.setDefaultsFromPlistFileName("on");
    const Lines lines = linesAfter([this] {
        client->fetchCompleted(Status::fetchedFromRemote, {}, client);
        client->fetchCompleted(Status::usedPreFetchedData, {}, client);
        client->fetchCompleted(Status{17}, {}, client);
        client->fetchCompleted(Status::failed, {}, client);
    });
    EXPECT_EQ(predictions(lines), 3);
    EXPECT_THAT(lines, Contains("console RemoteConfig status: 17"));
    EXPECT_THAT(lines, Contains("console RemoteConfig status: 2"));
}

TEST_F(RemoteConfigClientTest, WithoutTheSwitchNothingIsWarmedUp) {
    const Lines lines = linesAfter([this] { launch(); });
    EXPECT_EQ(lines.back(), "read enableWarmUp");
}

TEST_F(RemoteConfigClientTest, AFailedFetchIsPrintedAndReadsNothing) {
    remote.fetchError = Error{"server", 500, "The server is out of order."};
    EXPECT_THAT(linesAfter([this] { launch(); }),
                ElementsAre("fetchAndActivate",
                            "console RemoteConfig fetch error: The server is out of order."));
}

TEST_F(RemoteConfigClientTest, AClientThatIsGonePrintsNoValuesAndTheWarmUpIsStillAskedFor) {
    remote.propertyLists["on"] = {{"enableWarmUp", FakeRemoteConfig::boolean(true)}};
    remote.setDefaultsFromPlistFileName("on");
    auto gone = std::make_shared<RemoteConfigClient>(remote, warmUp, console);
    remote.setDefaultsFromPlistFileName("on");
    const std::weak_ptr<const RemoteConfigClient> asking = gone;
    gone.reset();
    const Lines lines =
        linesAfter([&] { client->fetchCompleted(Status::fetchedFromRemote, {}, asking); });
    EXPECT_EQ(predictions(lines), 1);
    EXPECT_THAT(lines, Not(Contains(StartsWith("console enableWarmUp"))));
}

TEST_F(RemoteConfigClientTest, ASourceThatNobodyKnowsIsCalledUnknown) {
    class Strange final : public RemoteConfig {
    public:
        void setDefaultsFromPlistFileName(std::string_view) override {}
        void setConfigSettings(const RemoteConfigSettings&) override {}
        void fetchAndActivateWithCompletionHandler(FetchHandler) override {}
        RemoteConfigValue objectForKeyedSubscript(std::string_view) const override {
            return {"x", false, 0, 0, RemoteConfigSource{9}};
        }
    };
    Strange strange;
    RemoteConfigClient(strange, warmUp, console).logAllValues();
    EXPECT_EQ(log.lines().back(), "console enableWarmUp: x (source: unknown)");
}

}  // namespace
}  // namespace quillmere
