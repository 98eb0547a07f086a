#include "CommandLine/VideoReporter.h"

#include <cstdio>

#include "Base/FormatString.h"
#include "CommandLine/PrintedLine.h"

namespace quillmere::cli {
namespace {

std::string sizeText(PixelSize size) {
    return std::to_string(size.width) + " by " + std::to_string(size.height);
}

}  // namespace

void VideoReporter::looking() {
    line_.draw(options_.input.filename().string() + ": the first frame is enlarged ...");
}

void VideoReporter::planned(const VideoPlan& plan, const std::filesystem::path& output) {
    line_.clear();
    if (options_.json || options_.quiet) return;
    std::string source = options_.input.string() + ": " + sizeText(plan.source);
    if (plan.survey.frames > 0) source += ", " + std::to_string(plan.survey.frames) + " frames";
    if (plan.duration > 0) source += ", " + durationText(plan.duration);
    std::string result = "becomes " + output.string() + ": " + sizeText(plan.result);
    if (plan.secondsPerFrame && plan.survey.frames > 0) {
        const double seconds = *plan.secondsPerFrame * static_cast<double>(plan.survey.frames);
        result += ", in about " + durationText(seconds);
    }
    std::printf("%s\n%s\n", source.c_str(), result.c_str());
    std::string losses;
    for (const std::string& loss : plan.notKept) losses += (losses.empty() ? "" : ", ") + loss;
    if (!losses.empty()) std::printf("not kept: %s\n", losses.c_str());
    std::fflush(stdout);
}

void VideoReporter::progress(const VideoPlan& plan, float fraction,
                             std::chrono::duration<double> elapsed) {
    const double done = static_cast<double>(fraction) * static_cast<double>(plan.survey.frames);
    const double rate = elapsed.count() > 0 ? done / elapsed.count() : 0;
    line_.draw(videoProgressText(options_.input.filename().string(), fraction,
                                 std::chrono::floor<std::chrono::seconds>(elapsed), rate));
}

void VideoReporter::succeeded(const VideoPlan& plan, const std::filesystem::path& output,
                              int failedFrames, std::chrono::duration<double> elapsed) {
    line_.clear();
    if (failedFrames > 0) {
        const std::string told = formatString(
            localization_.localizedString("Frames that could not be enlarged and kept their size: "
                                          "%@."),
            {std::to_string(failedFrames)});
        std::fprintf(stderr, "quillmere-cli: %s: %s\n", options_.input.c_str(), told.c_str());
    }
    if (options_.json) {
        printLine({{"input", options_.input.string()},
                   {"ok", true},
                   {"output", output.string()},
                   {"style", displayKey(options_.style)},
                   {"width", plan.result.width},
                   {"height", plan.result.height},
                   {"frames", plan.survey.frames},
                   {"failedFrames", failedFrames},
                   {"notKept", plan.notKept},
                   {"seconds", elapsed.count()}});
    } else if (!options_.quiet) {
        std::printf("%s: %s, made in %.1f s\n", output.c_str(), sizeText(plan.result).c_str(),
                    elapsed.count());
        std::fflush(stdout);
    }
}

void VideoReporter::interrupted() {
    line_.clear();
    std::fputs("\nInterrupted.\n", stderr);
}

void VideoReporter::failed(const std::string& reason) {
    line_.clear();
    const std::string line = oneLine(reason);
    std::fprintf(stderr, "quillmere-cli: %s: %s\n", options_.input.c_str(), line.c_str());
    if (options_.json) {
        printLine({{"input", options_.input.string()}, {"ok", false}, {"error", line}});
    }
}

}  // namespace quillmere::cli
