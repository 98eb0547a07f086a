// What recording costs whoever has something to record.
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"
#include "Desktop/Analytics/EventLog.h"
#include "Desktop/CrashLog/RunFile.h"

namespace quillmere::benchmark {
namespace {

constexpr double kMicroseconds = 1e6;
constexpr int kBursts = 20;
constexpr int kBurst = 500;  // fits the queue: a call that drops costs less
constexpr int kSingles = 200;
constexpr EventFile::Limits kLimits{std::size_t{64} << 20, std::chrono::seconds(1)};
/// Longer than the writer gathers and writes: it sleeps again.
constexpr std::chrono::milliseconds kCalm{150};

AnalyticsParameters parameters() { return {{"variant", "enhanced"}, {"option", "image"}}; }

void record(Analytics& analytics) { analytics.logEventWithName("share_sheet_open", parameters()); }

/// What any work costs whose memory the caches have forgotten: the parameters alone, not recorded.
double secondsOfNoEvent() {
    std::size_t count = 0;
    const double seconds = secondsOf([&] { count = parameters().size(); });
    return count == 0 ? 0 : seconds;
}

void row(Table& table, const std::string& name, const std::vector<double>& seconds) {
    table.row({name, figure(quantileOf(seconds, 0.5) * kMicroseconds),
               figure(quantileOf(seconds, 0.99) * kMicroseconds)});
}

std::size_t linesIn(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::size_t count = 0;
    for (std::string line; std::getline(stream, line);) ++count;
    return count;
}

}  // namespace

void measureEvents(const Setting&) {
    const auto folder = std::filesystem::temp_directory_path() / "events";
    Table table("Recording an event", {"Call", "Median, µs", "99th percentile, µs"});
    std::vector<double> singles;
    std::vector<double> bursts;
    std::vector<double> controls;
    {
        EventLog log(folder, kLimits);
        for (int i = 0; i < kSingles; ++i) {
            std::this_thread::sleep_for(kCalm);
            singles.push_back(secondsOf([&] { record(log); }));
        }
        for (int i = 0; i < kSingles; ++i) {
            std::this_thread::sleep_for(kCalm);
            controls.push_back(secondsOfNoEvent());
        }
        for (int i = 0; i < kBursts; ++i) {
            std::this_thread::sleep_for(kCalm);
            for (int j = 0; j < kBurst; ++j) bursts.push_back(secondsOf([&] { record(log); }));
        }
    }
    if (linesIn(folder / EventFile::name) != singles.size() + bursts.size()) {
        return table.missing("All", "Not every event reached the disk.");
    }
    std::vector<double> breadcrumbs;
    RunFile crashLog(folder);
    for (int i = 0; i < kBursts * kBurst; ++i) {
        breadcrumbs.push_back(secondsOf([&] { crashLog.log("tryFinish A"); }));
    }
    row(table, "An event among others", bursts);
    row(table, "An event after 150 ms of rest, which wakes the writer", singles);
    row(table, "Its parameters made after 150 ms of rest, and not recorded", controls);
    row(table, "A breadcrumb", breadcrumbs);
    table.note("Wall time of single calls, the making of an event's parameters included.");
}

}  // namespace quillmere::benchmark
