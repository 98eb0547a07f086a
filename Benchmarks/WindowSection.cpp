// The application's window: how soon it is there, what it takes, and how it moves.
#include <chrono>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "Benchmarks/Process.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"

namespace quillmere::benchmark {
namespace {

namespace fs = std::filesystem;

constexpr int kRuns = 10;
constexpr int kPictures = 10'000;

/// What ten runs told: each figure by its place in a run's line, or why there are none.
struct Told {
    std::vector<std::vector<double>> figures;
    std::string failure;
};

/// The application tells more on standard output; the figures come last.
std::string lastLine(const std::string& output) {
    std::string last;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) last = line;
    return last;
}

Told tenRuns(const std::function<std::vector<std::string>()>& call) {
    Told told;
    for (int i = 0; i < kRuns; ++i) {
        const Outcome outcome = runProgram(call(), true);
        if (outcome.exitCode != 0) return {{}, "A run failed: " + lastLine(outcome.output)};
        std::istringstream words(lastLine(outcome.output));
        std::size_t place = 0;
        for (double value = 0; words >> value; ++place) {
            if (told.figures.size() <= place) told.figures.emplace_back();
            told.figures[place].push_back(value);
        }
    }
    return told;
}

}  // namespace

void measureWindow(const Setting& setting) {
    Table table("The window, of 1280 by 800 points, drawn by the processor",
                {"", "Median of ten runs, with quartiles"});
    const std::string program = setting.commandLine.parent_path() / "quillmere-window-run";
    const auto home = [](const char* name) -> std::string {
        return fs::temp_directory_path() / name;
    };
    const auto start = tenRuns([&]() -> std::vector<std::string> {
        const std::chrono::duration<double> now =
            std::chrono::steady_clock::now().time_since_epoch();
        return {program, home("start"), "start", std::to_string(now.count())};
    });
    const auto drag = tenRuns([&]() -> std::vector<std::string> {
        return {program, home("drag"), "drag"};
    });
    const auto scroll = tenRuns([&]() -> std::vector<std::string> {
        return {program, home("scroll"), "scroll", std::to_string(kPictures)};
    });
    const auto row = [&](const std::string& name, const Told& told, std::size_t place,
                         double factor) {
        if (place >= told.figures.size()) return table.missing(name, told.failure);
        table.row({name, figure(spreadOf(told.figures[place]), factor)});
    };
    row("From the start of the process to the first frame, s", start, 0, kSeconds);
    row("Resident memory two seconds later, MiB", start, 1, 1);
    row("A frame while the divider is dragged over 8192 by 6144, ms", drag, 0, kMilliseconds);
    row("The slowest of these, ms", drag, 1, kMilliseconds);
    row("A frame while a library of 10,000 pictures is scrolled from end to end, ms", scroll, 0,
        kMilliseconds);
    row("The slowest of these, ms", scroll, 1, kMilliseconds);
    row("Resident memory at the end, MiB", scroll, 2, 1);
    table.note(
        "A frame counts from the change to the moment when it would be on the screen. The library\n"
        "is scrolled in 300 steps.");
}

}  // namespace quillmere::benchmark
