// Which file each result becomes, if any.
#pragma once

#include <filesystem>
#include <set>

#include "Base/Result.h"
#include "CommandLine/Options.h"

namespace quillmere::cli {

struct OutputFile {
    std::filesystem::path path;  // empty for a new asset of the photo library
    PictureFormat format = PictureFormat::jpg;
};

/// Names the results of one run, and finds out before the work what would make it vain.
class OutputPlan {
public:
    /// Results are written in `otherwise` where neither an option nor a name asks for a format.
    OutputPlan(const EnhanceOptions& options, PictureFormat otherwise);

    /// The file for `input`. Fails where it exists and `--force` was not given, where it is one of
    /// the run's inputs or an earlier result of the run, and where its folder is missing or
    /// refuses writing.
    Result<OutputFile> outputFor(const std::filesystem::path& input);

private:
    EnhanceOptions options_;
    PictureFormat otherwise_;
    bool intoFolder_;
    std::set<std::filesystem::path> taken_;
};

}  // namespace quillmere::cli
