// Puts new assets into the user's folders and into the catalogue: all of a change, or nothing.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "Base/Result.h"
#include "Desktop/Photos/CatalogueFile.h"
#include "Desktop/Photos/CatalogueUpdate.h"
#include "Desktop/Photos/MediaFolders.h"
#include "Desktop/Photos/NewAsset.h"
#include "Desktop/Photos/NewFile.h"
#include "Platform/ImageIO/ImageIO.h"

namespace quillmere {

/// The steps of a change, and what the next start finds if the process ends after each, or the
/// power goes:
///
/// 1. Each file's bytes go to an inode without a name, or a hidden one where the file system has
///    no such, and are flushed. - An inode without a name is gone; a hidden name is removed.
/// 2. One transaction of the catalogue plans the files: paths, inodes, given dates and places.
///    - None of the files has its name: the plan is dropped.
/// 3. Each file gets its name. - If all have theirs, the change is finished: the entries are made.
///    If some lack theirs, those that have one are removed; their inodes tell that no other file
///    is meant. The plan is dropped.
/// 4. The folders are flushed. One transaction makes the entries and drops the plan. - All is done.
///
/// An entry can only follow its file, and a file without an entry is found by the next scan, as it
/// would be if the catalogue were lost. All of it runs under the catalogue's lock for changes, so
/// that a start never takes a living process's plan for a dead one's, and two processes never
/// choose the same name. One thread at a time.
class AssetSaver {
public:
    AssetSaver(MediaFolders folders, CatalogueFile& catalogue, ImageIO& imageIO,
               FileRecordReader read);

    /// New files lie in the folder "Quillmere" of the user's folder for their kind, under names of
    /// the library's making. Errors are those of `PHPhotoLibrary`, or have the system's number.
    Result<void> save(const std::vector<NewAsset>& assets);

    /// Finishes or takes back what a dead process had begun, unless another is saving now; for the
    /// start.
    void cleanUp();

private:
    struct Prepared {
        std::unique_ptr<NewFile> file;
        /// Nothing for a file that is no picture or movie.
        std::optional<CatalogueEntry> entry;
    };
    Result<Prepared> prepare(const NewAsset& asset, const std::set<std::filesystem::path>& others);
    Result<Prepared> prepareBytes(const NewAsset& asset, std::span<const std::byte> bytes,
                                  std::string_view type,
                                  const std::set<std::filesystem::path>& others);
    Result<Prepared> prepareFile(const NewAsset& asset, const NewAsset::File& source,
                                 const std::set<std::filesystem::path>& others);
    /// Steps 2 to 4. False where a name was taken meanwhile, and nothing was done.
    Result<bool> commit(std::vector<Prepared>& files);
    Result<void> settlePlan();

    std::filesystem::path pictures_;
    std::filesystem::path videos_;
    CatalogueFile& catalogue_;
    ImageIO& imageIO_;
    FileRecordReader read_;
};

}  // namespace quillmere
