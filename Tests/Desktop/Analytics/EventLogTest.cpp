#include "Desktop/Analytics/EventLog.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <regex>

#include "Tests/EventLines.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class EventLogTest : public testing::Test {
protected:
    std::vector<nlohmann::json> recorded() const { return eventsIn(folder / EventFile::name); }

    TemporaryFolder folder;
};

TEST_F(EventLogTest, ALineTellsWhenAndInWhichProcess) {
    EventLog(folder.path()).logEventWithName("ShowDetail", std::nullopt);
    const auto lines = recorded();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].at("process"), getpid());
    EXPECT_TRUE(std::regex_match(lines[0].at("time").get<std::string>(),
                                 std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z)")));
}

TEST_F(EventLogTest, AnEndWithoutDestructionLosesNothing) {
    EventLog log(folder.path());
    for (int i = 0; i < 10; ++i) log.logEventWithName("ShowDetail", std::nullopt);
    log.end(10min);
    EXPECT_EQ(recorded().size(), 10u);
    log.logEventWithName("ShowDetail", std::nullopt);
    log.end(10min);
}

TEST_F(EventLogTest, WhatWasDroppedIsToldWhenThereIsRoomAgain) {
    EventLog log(folder.path());
    log.logEventWithName(std::string(EventQueue::largestEvent + 1, 'x'), std::nullopt);
    log.logEventWithName("ShowDetail", std::nullopt);
    log.end(10min);
    const auto lines = recorded();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].at("dropped"), 1);
    EXPECT_EQ(lines[1].at("event"), "ShowDetail");
}

TEST_F(EventLogTest, BytesThatAreNoTextDoNotStopTheRecord) {
    {
        EventLog log(folder.path());
        log.logEventWithName("TryConvert", AnalyticsParameters{{"Style", "\xFF\xC3"}});
        log.logEventWithName("ShowDetail", std::nullopt);
    }
    EXPECT_EQ(recorded().size(), 2u);
}

TEST_F(EventLogTest, NoCallerNoticesThatNothingCanBeRecorded) {
    folder.write("file", "");
    for (const std::optional<fs::path>& nowhere :
         {std::optional<fs::path>(), std::optional<fs::path>(folder / "file" / "state")}) {
        EventLog log(nowhere);
        for (std::size_t i = 0; i < 2 * EventLog::queueCapacity; ++i) {
            log.logEventWithName("ShowDetail", std::nullopt);
        }
        log.end(10min);
    }
    EXPECT_EQ(folder.names(), (std::set<std::string>{"file"}));
}

}  // namespace
}  // namespace quillmere
