// Brings the catalogue in line with the files in the library's folders.
#pragma once

#include <atomic>
#include <filesystem>
#include <set>
#include <vector>

#include "Base/Result.h"
#include "Desktop/Photos/CatalogueFile.h"
#include "Desktop/Photos/CatalogueUpdate.h"
#include "Desktop/Photos/FolderWatch.h"

namespace quillmere {

/// Hidden files and folders are left out, as are symbolic links beneath the roots, so that no loop
/// can be. A file is read again when its size, modification time or inode changed. A folder that
/// refuses reading keeps its entries. One thread.
class LibraryScanner {
public:
    /// Folders are put under `watch` before they are looked at, so that nothing is missed between.
    /// Roots may lie in each other or be missing.
    LibraryScanner(std::vector<std::filesystem::path> roots, CatalogueFile& catalogue,
                   FileRecordReader read, FolderWatch& watch);

    enum class Depth {
        /// Folders whose names changed since they were last listed, by their modification time.
        changedFolders,
        /// Each file's size, time and inode: also what was written in place meanwhile.
        everyFile,
    };
    /// All roots. What it found before `stop` came stays.
    Result<void> scan(Depth depth, const std::atomic<bool>& stop);
    /// Some files and folders that may have come, changed or gone.
    Result<void> look(const std::set<std::filesystem::path>& paths, const std::atomic<bool>& stop);

private:
    /// One pass: the folders that are still to be visited, and what it finds in them.
    struct Pass {
        std::set<std::filesystem::path> folders;
        Depth depth;
        CatalogueUpdate update;
        const std::atomic<bool>& stop;
    };

    bool isInRoots(const std::filesystem::path& path) const;
    Result<void> finish(Pass& pass);
    Result<void> visit(const std::filesystem::path& folder, Pass& pass);
    Result<void> lookAt(const std::filesystem::path& path, Pass& pass);
    Result<void> forget(const std::filesystem::path& folder, Pass& pass);

    std::vector<std::filesystem::path> roots_;
    CatalogueFile& catalogue_;
    FileRecordReader read_;
    FolderWatch& watch_;
};

}  // namespace quillmere
