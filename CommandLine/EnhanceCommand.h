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
#include "Quillmere/Models/Services/ImageMetadataHelper.h"

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
    using OriginalMetadata = ImageMetadataHelper::OriginalMetadata;
    struct Job;

    void runOne(const std::filesystem::path& input);
    /// Pumps the main queue until the job's picture is read and enlarged, or failed.
    Result<UIImage> enlargeInBackground(const std::shared_ptr<Job>& job);
    void redraw(const Job& job);
    /// Draws the progress again and again until the job is over, so that the time left moves.
    void keepRedrawing(const std::weak_ptr<Job>& job);
    void fail(const std::filesystem::path& input, const Error& error);

    /// What the user wants results to keep of this input. A file counts as an item of a library
    /// whose record is what the file says of itself.
    OriginalMetadata keptOf(const std::filesystem::path& input) const;

    // Not on the main thread.
    Result<UIImage> enlarge(const std::filesystem::path& input,
                            const TileEngine::Progress& progress);
    Result<PixelSize> save(const UIImage& picture, const OutputFile& output,
                           const OriginalMetadata& kept);
    Result<void> write(const UIImage& picture, const OutputFile& output,
                       const OriginalMetadata& kept);

    DesktopPlatform& platform_;
    Interruption& interruption_;
    EnhanceOptions options_;
    OutputPlan outputs_;
    Reporter reporter_;
    ModelCatalogue catalogue_;
    LimitOption limit_;
    TileEngine engine_;
    BackgroundSave save_;
    std::size_t number_ = 0;  // of the input that is being enlarged, from 1
    const bool keepsDate_;
    const bool keepsLocation_;
    bool allDone_ = true;
};

}  // namespace quillmere::cli
