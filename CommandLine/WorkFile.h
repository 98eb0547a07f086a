// A result's file before it is whole.
#pragma once

#include <filesystem>

#include "Base/Result.h"

namespace quillmere::cli {

/// A hidden name beside the result's own, so that the move to it is one step of the file system.
/// What lies there goes with this object.
class WorkFile {
public:
    explicit WorkFile(std::filesystem::path target);
    ~WorkFile();
    WorkFile(const WorkFile&) = delete;
    WorkFile& operator=(const WorkFile&) = delete;

    const std::filesystem::path& path() const { return path_; }

    /// Gives the file its name. Unless `mayReplace`, a file that has appeared there meanwhile
    /// stays, and this fails.
    Result<void> commit(bool mayReplace);

private:
    std::filesystem::path target_;
    std::filesystem::path path_;
};

}  // namespace quillmere::cli
