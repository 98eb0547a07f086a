// What happens in the library's folders while the program runs.
#pragma once

#include <filesystem>
#include <set>
#include <unordered_map>

#include "Desktop/FileManager/FileDescriptor.h"

namespace quillmere {

/// Over the system's own notices (inotify). Where it has none, or no more of them, folders go
/// unwatched. One thread.
class FolderWatch {
public:
    FolderWatch();

    /// For `poll`: there is something to read. Negative where nothing can be watched.
    int descriptor() const { return notices_.number(); }

    /// Again for a folder that is watched under an earlier name is well.
    void add(const std::filesystem::path& folder);
    /// A folder that is gone, and all beneath it.
    void remove(const std::filesystem::path& folder);

    struct Changes {
        /// Files and folders that came, changed or went; hidden ones left out.
        std::set<std::filesystem::path> paths;
        /// There were more than the system keeps.
        bool isIncomplete = false;
    };
    /// Those since the last call; does not wait.
    Changes read();

private:
    FileDescriptor notices_;
    std::unordered_map<int, std::filesystem::path> folders_;  // by the system's number
};

/// Whether `path` is `folder` or lies beneath it, by the letters.
bool liesIn(const std::filesystem::path& path, const std::filesystem::path& folder);

}  // namespace quillmere
