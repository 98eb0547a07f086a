// `quillmere-cli enhance`: pictures in, enlarged pictures out, one after another.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "Base/Result.h"
#include "CommandLine/Interruption.h"
#include "CommandLine/LimitOption.h"
#include "CommandLine/Options.h"
#include "CommandLine/OutputPlan.h"
#include "CommandLine/Reporter.h"
#include "Desktop/DesktopPlatform.h"
#include "Quillmere/Models/Enhance/TileEngine.h"

namespace quillmere::cli {

/// Runs on the main thread, which pumps the main queue while a global queue does the work.
class EnhanceCommand {
public:
    EnhanceCommand(DesktopPlatform& platform, Interruption& interruption,
                   const EnhanceOptions& options);

    /// The exit code: 0 if all inputs are done, 1 if some failed. Each failure has been told.
    int run();

private:
    /// Reads, enlarges and writes one picture; gives the result's size. Not on the main thread.
    Result<PixelSize> enhance(const std::filesystem::path& input, const OutputFile& output,
                              const TileEngine::Progress& progress);
    Result<UIImage> enlarge(const UIImage& picture, const TileEngine::Progress& progress);
    Result<std::vector<std::byte>> encode(const UIImage& picture, PictureFormat format);

    struct Job;

    bool runOne(const std::filesystem::path& input);
    void redraw(const Job& job);
    /// Draws the progress again and again until the job is over, so that the time left moves.
    void keepRedrawing(const std::weak_ptr<Job>& job);

    DesktopPlatform& platform_;
    Interruption& interruption_;
    EnhanceOptions options_;
    OutputPlan outputs_;
    Reporter reporter_;
    ModelCatalogue catalogue_;
    LimitOption limit_;
    TileEngine engine_;
};

}  // namespace quillmere::cli
