// `quillmere-cli enhance`: pictures in, enlarged pictures out, in the order of the inputs.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "Base/Result.h"
#include "CommandLine/BackgroundSave.h"
#include "CommandLine/Interruption.h"
#include "CommandLine/LimitOption.h"
#include "CommandLine/Options.h"
#include "CommandLine/OutputPlan.h"
#include "CommandLine/Reporter.h"
#include "Desktop/DesktopPlatform.h"
#include "Quillmere/Models/Enhance/TileEngine.h"

namespace quillmere::cli {

/// Runs on the main thread, which pumps the main queue while global queues do the work: one picture
/// is read and enlarged while the result before it is encoded and written.
class EnhanceCommand {
public:
    EnhanceCommand(DesktopPlatform& platform, Interruption& interruption,
                   const EnhanceOptions& options);

    /// The exit code: 0 if all inputs are done, 1 if some failed. Each failure has been told.
    int run();

private:
    struct Job;

    void runOne(const std::filesystem::path& input);
    /// Pumps the main queue until the job's picture is read and enlarged, or failed.
    Result<UIImage> enlargeInBackground(const std::shared_ptr<Job>& job);
    void redraw(const Job& job);
    /// Draws the progress again and again until the job is over, so that the time left moves.
    void keepRedrawing(const std::weak_ptr<Job>& job);
    void fail(const std::filesystem::path& input, const Error& error);

    // Not on the main thread.
    Result<UIImage> enlarge(const std::filesystem::path& input,
                            const TileEngine::Progress& progress);
    Result<PixelSize> save(const UIImage& picture, const OutputFile& output);
    Result<std::vector<std::byte>> encode(const UIImage& picture, PictureFormat format);

    DesktopPlatform& platform_;
    Interruption& interruption_;
    EnhanceOptions options_;
    OutputPlan outputs_;
    Reporter reporter_;
    ModelCatalogue catalogue_;
    LimitOption limit_;
    TileEngine engine_;
    BackgroundSave save_;
    bool allDone_ = true;
};

}  // namespace quillmere::cli
