// Whole pictures through the command line, each time as a process of its own.
#include <algorithm>
#include <array>
#include <filesystem>
#include <sstream>
#include <string>

#include "Benchmarks/Photo.h"
#include "Benchmarks/Process.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"
#include "Benchmarks/WatchedEnlargement.h"
#include "Quillmere/Models/Enhance/TilePlan.h"

namespace quillmere::benchmark {
namespace {

constexpr Rounds kRounds{1, 7, 60.0};
constexpr PixelSize kPicture{1024, 768};
constexpr PixelSize kLargePicture{2048, 1536};

std::string sizeName(PixelSize size) {
    return std::to_string(size.width) + " by " + std::to_string(size.height);
}

std::string tiles(PixelSize size) {
    const TilePlan plan({static_cast<double>(size.width), static_cast<double>(size.height)});
    return std::to_string(plan.count());
}

/// One photo, and where its enlargements go: into the program's temporary folder.
class Picture {
public:
    Picture(const Setting& setting, PixelSize size)
        : setting_(setting),
          size_(size),
          photo_(std::filesystem::temp_directory_path() / "photo.jpg"),
          result_(std::filesystem::temp_directory_path() / "result.jpg"),
          written_(writePhoto(setting.bundle, size, photo_)) {}

    const Result<void>& written() const { return written_; }

    ProgramCost byCommandLine(const std::string& style) const {
        return measureProgram({setting_.commandLine, "enhance", photo_, "--style", style, "-o",
                               result_, "--force", "--quiet", "--limit",
                               std::to_string(std::max(size_.width, size_.height))});
    }

    /// At the smaller resolution limit.
    ProgramCost watched(const std::string& style) const {
        return measureProgram({thisProgram(), kWatchedMode, style, photo_, result_});
    }

private:
    const Setting& setting_;
    PixelSize size_;
    std::filesystem::path photo_;
    std::filesystem::path result_;
    Result<void> written_;
};

const char* const kFailed = "The command failed; it says why on standard error.";

void measureTime(const std::string& style, const Picture& picture, Table& table) {
    bool failed = false;
    double peak = 0;
    const std::array<std::function<double()>, 2> contestants{
        [&] {
            if (failed) return 0.0;
            const ProgramCost cost = picture.byCommandLine(style);
            failed = failed || cost.outcome.exitCode != 0;
            peak = std::max(peak, cost.peakMiB);
            return cost.seconds;
        },
        [&] {
            if (failed) return 0.0;
            const ProgramCost cost = picture.watched(style);
            double inside = 0;
            failed = failed || cost.outcome.exitCode != 0 ||
                     !(std::istringstream(cost.outcome.output) >> inside);
            return cost.seconds - inside;
        }};
    const std::vector<Spread> times = takeTurns(kRounds, contestants);
    if (failed) return table.missing(style, kFailed);
    table.row({style, tiles(kPicture), figure(times[0], kSeconds), figure(times[1], kSeconds),
               figure(100 * times[1].median / times[0].median) + " %", figure(peak)});
}

void measureTimes(const Setting& setting) {
    Table table("Pictures of " + sizeName(kPicture),
                {"Style", "Tiles", "Command, s", "Outside the network, s", "Share", "Peak, MiB"});
    const Picture picture(setting, kPicture);
    if (!picture.written()) {
        return table.missing("All", picture.written().error().localizedDescription);
    }
    for (const char* style : {"superSpeed", "speedGeneral", "high"}) {
        measureTime(style, picture, table);
    }
    table.note(
        "JPEG to JPEG by `quillmere-cli`, from the start of the process to its end. *Outside the\n"
        "network* is what remains when the time in which a tile is being run is taken off: start,\n"
        "decoding, loading the network, cutting, stitching, encoding. It is taken in runs of the\n"
        "same steps with a stop-watch around the tiles, by turns with the command.");
}

void measurePeaks(const Setting& setting) {
    Table table("Memory for a picture of " + sizeName(kLargePicture),
                {"Style", "Tiles", "Command, s", "Peak, MiB"});
    const Picture picture(setting, kLargePicture);
    if (!picture.written()) {
        return table.missing("All", picture.written().error().localizedDescription);
    }
    for (const char* style : {"superSpeed", "high", "kyokuHigh"}) {
        if (std::string(style) == "kyokuHigh" && !setting.slow) {
            table.missing(style, "It takes many minutes; add `--slow`.");
            continue;
        }
        const ProgramCost cost = picture.byCommandLine(style);
        if (cost.outcome.exitCode != 0) {
            table.missing(style, kFailed);
            continue;
        }
        table.row({style, tiles(kLargePicture), figure(cost.seconds), figure(cost.peakMiB)});
    }
    table.note("With `--limit 2048`, one run each.");
}

}  // namespace

void measurePictures(const Setting& setting) {
    measureTimes(setting);
    measurePeaks(setting);
}

}  // namespace quillmere::benchmark
