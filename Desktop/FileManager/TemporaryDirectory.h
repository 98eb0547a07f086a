// The process's own folder for files that need not outlive it.
#pragma once

#include <filesystem>
#include <mutex>

#include "Desktop/FileManager/FileDescriptor.h"

namespace quillmere {

/// "quillmere-XXXXXX" under the system's temporary folder, which only the user may enter. A lock on
/// the folder itself says that its owner lives, so nothing but work files is in it; folders whose
/// owners are dead are removed before a new one is made. Any thread.
class TemporaryDirectory {
public:
    /// Nothing happens on the disk before `path` is asked for. Under the system's temporary folder,
    /// or else another one.
    explicit TemporaryDirectory(std::filesystem::path systemFolder = systemTemporaryFolder());
    ~TemporaryDirectory() { remove(); }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// Made at the first call. Where that fails, there is no folder of that name, and nothing can
    /// be written into it; the next call tries anew.
    std::filesystem::path path();

    /// With all that is in it, if it was made; for the orderly end of a process.
    void remove();

private:
    static std::filesystem::path systemTemporaryFolder();
    bool make();

    const std::filesystem::path systemFolder_;
    std::mutex mutex_;
    std::filesystem::path path_;
    FileDescriptor lock_;
};

}  // namespace quillmere
