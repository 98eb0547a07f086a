// What every implementation of `Analytics` owes its callers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "Desktop/Analytics/EventLog.h"
#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Tests/EventLines.h"
#include "Tests/Fakes/FakeAnalytics.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

using Event = FakeAnalytics::Event;

class AnalyticsContract : public testing::TestWithParam<bool> {
protected:
    AnalyticsContract() {
        if (GetParam()) desktop = std::make_unique<EventLog>(folder.path());
    }

    Analytics& analytics() { return desktop ? static_cast<Analytics&>(*desktop) : fake; }

    /// At the end of the program.
    std::vector<Event> recorded() {
        if (!desktop) return fake.events();
        desktop.reset();
        std::vector<Event> events;
        for (const auto& line : eventsIn(folder / EventFile::name)) {
            const auto& parameters = line.at("parameters");
            events.push_back({line.at("event"), parameters.is_null()
                                                    ? std::nullopt
                                                    : std::optional<AnalyticsParameters>(
                                                          parameters.get<AnalyticsParameters>())});
        }
        return events;
    }

    TemporaryFolder folder;
    CallLog log;
    FakeAnalytics fake{log};
    std::unique_ptr<EventLog> desktop;
};

INSTANTIATE_TEST_SUITE_P(Both, AnalyticsContract, testing::Values(false, true),
                         [](const auto& desktop) { return desktop.param ? "Desktop" : "Fake"; });

TEST_P(AnalyticsContract, EveryEventOfTheVocabularyComesBackInOrder) {
    std::vector<Event> sent;
    for (const AnalyticsEvent& event : analyticsEvents) {
        std::optional<AnalyticsParameters> parameters;
        for (const std::string_view name : event.parameters) {
            if (name.empty()) continue;
            if (!parameters) parameters.emplace();
            (*parameters)[std::string(name)] = std::to_string(sent.size());
        }
        sent.push_back({std::string(event.name), parameters});
        analytics().logEventWithName(event.name, parameters);
    }
    EXPECT_EQ(recorded(), sent);
}

TEST_P(AnalyticsContract, NoValueBreaksTheRecord) {
    std::vector<Event> sent;
    for (const char* value : {"", "a \"quoted\" \\ word", "two\nlines", "é 漢 🎈", "\x01\x7F"}) {
        sent.push_back({"TryConvert", AnalyticsParameters{{"Style", value}}});
        analytics().logEventWithName(sent.back().name, sent.back().parameters);
    }
    EXPECT_EQ(recorded(), sent);
}

TEST_P(AnalyticsContract, EventsOfSeveralThreadsAreAllThereAndEachThreadsInOrder) {
    constexpr int threads = 4;
    constexpr int each = 100;
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread) {
        running.emplace_back([this, thread] {
            for (int i = 0; i < each; ++i) {
                analytics().logEventWithName(
                    "share_sheet_open", AnalyticsParameters{{"variant", std::to_string(thread)},
                                                            {"option", std::to_string(i)}});
            }
        });
    }
    for (std::thread& thread : running) thread.join();
    std::vector<int> next(threads, 0);
    for (const Event& event : recorded()) {
        const int thread = std::stoi(event.parameters->at("variant"));
        EXPECT_EQ(event.parameters->at("option"), std::to_string(next.at(thread)++));
    }
    EXPECT_EQ(next, std::vector<int>(threads, each));
}

}  // namespace
}  // namespace quillmere
