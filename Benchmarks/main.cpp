// The benchmark: starts each section in a process of its own, one after another.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <map>
#include <string>
#include <vector>

#include "Base/WorkerPool.h"
#include "Benchmarks/LoadSection.h"
#include "Benchmarks/Machine.h"
#include "Benchmarks/OneDnnLayer.h"
#include "Benchmarks/Process.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/TemporaryFolder.h"
#include "Benchmarks/WarmUpSection.h"
#include "Benchmarks/WatchedEnlargement.h"

namespace {

using namespace quillmere;
using namespace quillmere::benchmark;

struct Section {
    std::string name;
    void (*measure)(const Setting&);
    std::string what;
};

const Section kSections[] = {
    {"layers", measureLayers, "single convolutions, beside oneDNN"},
    {"networks", measureNetworks, "whole networks on a tile, beside oneDNN"},
    {"load", measureLoading, "loading networks"},
    {"picture", measurePictures, "whole pictures by the command line: time and memory"},
    {"heic", measureEncoding, "saving 12 megapixels: encoding, date and place"},
    {"warm-up", measureWarmUp, "the first conversion, with and without the warm-up at start"},
    {"events", measureEvents, "what recording an event costs its caller"},
    {"scaler", measureScaler, "video frames, beside swscale"},
    {"video", measureVideos, "whole videos by the command line, beside ffmpeg: time and memory"},
    {"window", measureWindow, "the application's window: its start, its memory, its frames"},
    {"fidelity", measureFidelity, "what enlarged pictures keep of the truth, style by style"},
    {"scaler-quality", measureScalerQuality, "what enlarged video frames keep of the truth"},
};

constexpr const char* kSectionMode = "--inside";
constexpr int kUsageError = 2;

int fail(const std::string& sentence) {
    std::fprintf(stderr, "quillmere-benchmark: %s\n", sentence.c_str());
    return 1;
}

/// `arguments`: the section's name, and "--slow" or nothing.
int runSection(const std::vector<std::string>& arguments) {
    auto bundle = ResourceBundle::besideTheProgram();
    if (!bundle) return fail(bundle.error().localizedDescription);
    const auto folder = std::filesystem::path(thisProgram()).parent_path();
    const Setting setting{*std::move(bundle), folder / "quillmere-cli", arguments.size() > 1};
    for (const Section& section : kSections) {
        if (section.name == arguments.front()) section.measure(setting);
    }
    return 0;
}

/// The ways in which this program starts itself.
int runMode(const std::string& mode, const std::vector<std::string>& arguments) try {
    if (mode == kSectionMode && !arguments.empty()) return runSection(arguments);
    if (mode == kLauncherMode && !arguments.empty()) return launch(arguments);
    if (mode == kLoadingMode && arguments.size() == 1) return loadTwice(arguments[0]);
    if (mode == kFirstConversionMode && arguments.size() == 1) return convertFirst(arguments[0]);
    if (mode == kWatchedMode && arguments.size() == 3) {
        return enlargeWatched(arguments[0], arguments[1], arguments[2]);
    }
    return fail("Unknown arguments; --help says how to call it.");
} catch (const std::exception& error) {  // oneDNN's, or too little memory
    return fail(error.what());
}

/// The exit code: 1 if a section ended before its time.
int runSections(const std::vector<std::string>& names, bool slow) {
    const TemporaryFolder folder;
    if (!folder.made()) return fail("The temporary folder could not be made.");
    const std::size_t threads = WorkerPool().threadCount();
    describeMachine(threads);
    sleepBetweenTurns(threads);
    // Ctrl-C ends the section, and leaves this process to clear away.
    std::signal(SIGINT, SIG_IGN);
    int exitCode = 0;
    for (const std::string& name : names) {
        std::vector<std::string> command{thisProgram(), kSectionMode, name};
        if (slow) command.push_back("--slow");
        const Outcome outcome = runProgram(command, false);
        if (outcome.exitCode == -SIGINT) return 128 + SIGINT;
        if (outcome.exitCode == 0) continue;
        exitCode = fail("The section " + name + " ended before its time.");
    }
    return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    for (const char* mode :
         {kSectionMode, kLauncherMode, kLoadingMode, kFirstConversionMode, kWatchedMode}) {
        if (argc > 1 && std::string(argv[1]) == mode) {
            return runMode(mode, std::vector<std::string>(argv + 2, argv + argc));
        }
    }

    CLI::App app("Measures what must be fast, and prints it in Markdown.", "quillmere-benchmark");
    std::map<std::string, std::string> known;
    std::vector<std::string> names;
    std::string help = "What to measure (default: everything):";
    for (const Section& section : kSections) {
        known[section.name] = section.what;
        names.push_back(section.name);
        help += "\n" + section.name + ": " + section.what;
    }
    std::vector<std::string> chosen;
    bool slow = false;
    app.add_option("SECTION", chosen, help)->check(CLI::IsMember(&known))->option_text(" ");
    app.add_flag("--slow", slow, "Measure also what takes many minutes");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsageError;
    }
    return runSections(chosen.empty() ? names : chosen, slow);
}
