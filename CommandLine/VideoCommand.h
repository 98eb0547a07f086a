// `quillmere-cli video`: one video in, one enlarged video out.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>

#include "Base/Result.h"
#include "CommandLine/Interruption.h"
#include "CommandLine/LimitOption.h"
#include "CommandLine/Options.h"
#include "CommandLine/VideoPlan.h"
#include "CommandLine/VideoReporter.h"
#include "Desktop/DesktopPlatform.h"
#include "Quillmere/Models/Enhance/TileEngine.h"
#include "Quillmere/Models/Video/FrameEnhancer.h"

namespace quillmere::cli {

/// Runs on the main thread, which pumps the main queue while queues of their own do the work. A
/// signal cancels as the application's own cancel does, after the frame in progress.
class VideoCommand {
public:
    VideoCommand(DesktopPlatform& platform, Interruption& interruption,
                 const VideoOptions& options);

    /// The exit code: 0 if the result is there, 1 if not, as has been told, or that of an
    /// interruption.
    int run();

private:
    /// What the application traces is for its developers.
    struct SilentConsole final : Console {
        void print(std::string_view) override {}
        void report(const std::vector<Error>&) override {}
    };
    struct Ending {
        std::optional<Error> error;
        bool wasCancelled = false;
    };
    struct Job;

    std::filesystem::path outputPath() const;
    Result<VideoPlan> planInBackground();
    Ending encode(const VideoPlan& plan, const std::filesystem::path& workPath,
                  FrameEnhancer& enhancer);
    void keepRedrawing(const std::weak_ptr<Job>& job);
    int fail(const Error& error);

    DesktopPlatform& platform_;
    Interruption& interruption_;
    VideoOptions options_;
    VideoReporter reporter_;
    SilentConsole console_;
    ModelCatalogue catalogue_;
    LimitOption limit_;
    TileEngine engine_;
    std::atomic<bool> wasInterrupted_ = false;
};

}  // namespace quillmere::cli
