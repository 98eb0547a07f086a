// What the user, or a program, is told of the work on a video.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "CommandLine/Options.h"
#include "CommandLine/ProgressLine.h"
#include "CommandLine/VideoPlan.h"
#include "Platform/Localization/Localization.h"

namespace quillmere::cli {

/// The plan and the result go to standard output, or one JSON object for both; failures, warnings
/// and progress to standard error. One thread.
class VideoReporter {
public:
    VideoReporter(const VideoOptions& options, const Localization& localization)
        : options_(options), localization_(localization), line_(stderr, !options.quiet) {}

    void looking();
    void planned(const VideoPlan& plan, const std::filesystem::path& output);
    void progress(const VideoPlan& plan, float fraction, std::chrono::duration<double> elapsed);
    /// `failedFrames` were not enlarged.
    void succeeded(const VideoPlan& plan, const std::filesystem::path& output, int failedFrames,
                   std::chrono::duration<double> elapsed);
    void interrupted();
    /// `reason` is brought to one line.
    void failed(const std::string& reason);

private:
    VideoOptions options_;
    const Localization& localization_;
    ProgressLine line_;
};

}  // namespace quillmere::cli
