// Whole videos through the command line, beside the ffmpeg program with the same settings.
#include <array>
#include <cmath>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "Benchmarks/Photo.h"
#include "Benchmarks/Process.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"
#include "Benchmarks/WatchedEnlargement.h"

namespace quillmere::benchmark {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPeer = "/usr/bin/ffmpeg";
constexpr int kFramesPerSecond = 30;
constexpr Rounds kRounds{3, 7, 60.0};
const char* const kFailed = "A program failed; it says why on standard error.";

struct Clip {
    PixelSize size;
    int frames;
    std::string rate;  // in bits a second, as the peer takes it

    fs::path path() const {
        return fs::temp_directory_path() /
               ("clip" + std::to_string(size.width) + "-" + std::to_string(frames) + ".mp4");
    }
};

/// A flight into a Mandelbrot set, with a tone: nothing stands still.
bool make(const Clip& clip) {
    const std::string size =
        std::to_string(clip.size.width) + "x" + std::to_string(clip.size.height);
    const std::string length = std::to_string(static_cast<double>(clip.frames) / kFramesPerSecond);
    return runProgram({kPeer,
                       "-nostdin",
                       "-v",
                       "error",
                       "-y",
                       "-f",
                       "lavfi",
                       "-i",
                       "mandelbrot=s=" + size + ":r=" + std::to_string(kFramesPerSecond),
                       "-f",
                       "lavfi",
                       "-i",
                       "sine",
                       "-t",
                       length,
                       "-c:v",
                       "libx264",
                       "-preset",
                       "veryfast",
                       "-b:v",
                       clip.rate,
                       "-pix_fmt",
                       "yuv420p",
                       "-c:a",
                       "aac",
                       clip.path()},
                      false)
               .exitCode == 0;
}

fs::path resultPath() { return fs::temp_directory_path() / "result.mov"; }

ProgramCost ours(const Setting& setting, const Clip& clip, const std::string& style) {
    return measureProgram({setting.commandLine, "video", clip.path(), "--style", style, "-o",
                           resultPath(), "--force", "--json"});
}

ProgramCost peers(const Clip& clip, const std::string& filter) {
    return measureProgram({kPeer, "-nostdin", "-v", "error", "-y", "-i", clip.path(), "-vf", filter,
                           "-c:v", "libx264", "-preset", "veryfast", "-b:v", clip.rate, "-c:a",
                           "aac", fs::temp_directory_path() / "peer.mov"});
}

void measureBesidePeer(const Setting& setting, const Clip& clip, const std::string& style,
                       const std::string& filter, Table& table) {
    if (!make(clip)) return table.missing(style, kFailed);
    bool failed = false;
    double peak = 0;
    const std::array<std::function<double()>, 2> contestants{
        [&] {
            const ProgramCost cost = ours(setting, clip, style);
            failed = failed || cost.outcome.exitCode != 0;
            peak = std::max(peak, cost.peakMiB);
            return cost.seconds;
        },
        [&] {
            const ProgramCost cost = peers(clip, filter);
            failed = failed || cost.outcome.exitCode != 0;
            return cost.seconds;
        }};
    const std::vector<Spread> times = takeTurns(kRounds, contestants);
    if (failed) return table.missing(style, kFailed);
    table.row({style, figure(times[0], kSeconds), figure(clip.frames / times[0].median),
               figure(times[1], kSeconds), figure(clip.frames / times[1].median),
               figure(times[1].median / times[0].median), figure(peak)});
}

void measurePeers(const Setting& setting) {
    Table table("Videos of 1280 by 720, beside ffmpeg",
                {"Style", "Ours, s", "Frames a second", "ffmpeg, s", "Frames a second",
                 "Ours of ffmpeg's rate", "Peak, MiB"});
    const Clip clip{{1280, 720}, 4 * kFramesPerSecond, "4000000"};
    measureBesidePeer(setting, clip, "original", "null", table);
    measureBesidePeer(setting, clip, "rapidHQ", "scale=2560:1440:flags=lanczos", table);
    table.note(
        "From the start of a process to its end, by turns; both encode by x264's *veryfast*, "
        "ffmpeg\n"
        "at the data rate that was asked for when the clip was made, ours at that which it has.\n"
        "ffmpeg's filter beside `rapidHQ` is Lanczos, to the same size.");
}

void measureNetworkShare(const Setting& setting) {
    const std::string style = "speedGeneral";
    Table table("What a network leaves to the rest of a video",
                {"Style", "Frames", "Job, s", "In the network, s", "Share outside"});
    const Clip clip{{640, 360}, 6, "1000000"};
    const fs::path photo = fs::temp_directory_path() / "frame.jpg";
    const auto written = writePhoto(setting.bundle, clip.size, photo);
    if (!written) return table.missing(style, written.error().localizedDescription);
    if (!make(clip)) return table.missing(style, kFailed);
    bool failed = false;
    const std::array<std::function<double()>, 2> contestants{
        [&] {
            const ProgramCost cost = ours(setting, clip, style);
            const auto told = nlohmann::json::parse(cost.outcome.output, nullptr, false);
            failed = failed || cost.outcome.exitCode != 0 || !told.is_object();
            return failed ? 0.0 : told["seconds"].get<double>();
        },
        [&] {
            const ProgramCost cost = measureProgram({thisProgram(), kWatchedMode, style, photo,
                                                     fs::temp_directory_path() / "frame-out.jpg"});
            double inside = 0;
            failed = failed || cost.outcome.exitCode != 0 ||
                     !(std::istringstream(cost.outcome.output) >> inside);
            return inside * clip.frames;
        }};
    const std::vector<Spread> times = takeTurns({3, 3, 0}, contestants);
    if (failed) return table.missing(style, kFailed);
    table.row({style, std::to_string(clip.frames), figure(times[0], kSeconds),
               figure(times[1], kSeconds),
               figure(100 * (1 - times[1].median / times[0].median)) + " %"});
    table.note(
        "The job without what is found out before it. The time in the network is that of one\n"
        "picture of a frame's size, with a stop-watch around its tiles, for each frame; taken by\n"
        "turns with the job, beside which nothing else ran in that picture.");
}

void measureMemory(const Setting& setting) {
    Table table("Memory for videos of 640 by 360", {"Seconds of video", "Peak, MiB"});
    for (const int seconds : {20, 60}) {
        const Clip clip{{640, 360}, seconds * kFramesPerSecond, "1000000"};
        const bool made = make(clip);
        const ProgramCost cost = made ? ours(setting, clip, "original") : ProgramCost();
        if (cost.outcome.exitCode != 0) {
            table.missing(std::to_string(seconds), kFailed);
            continue;
        }
        table.row({std::to_string(seconds), figure(cost.peakMiB)});
    }
    table.note("With the style `original`, one run each.");
}

}  // namespace

void measureVideos(const Setting& setting) {
    measurePeers(setting);
    measureNetworkShare(setting);
    measureMemory(setting);
}

}  // namespace quillmere::benchmark
