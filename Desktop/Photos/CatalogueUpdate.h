// From files that were found, and entries whose files were not, to entries that are true.
#pragma once

#include <atomic>
#include <filesystem>
#include <vector>

#include "Base/Result.h"
#include "Desktop/Photos/CatalogueFile.h"
#include "Desktop/Photos/FileRecordReader.h"
#include "Desktop/Photos/FileStamp.h"

namespace quillmere {

/// A new entry: what the file says of itself, and its modification time where it has no date.
CatalogueEntry makeEntry(std::filesystem::path path, const FileStamp& stamp, FileRecord record);

/// One pass over some of the library's files. Entries go at its end, when all new names have been
/// seen: a file that carries the inode, size and time of an entry whose own name is gone is that
/// entry's file, moved or renamed. A pass that is not finished removes nothing.
class CatalogueUpdate {
public:
    CatalogueUpdate(CatalogueFile& catalogue, const FileRecordReader& read,
                    const std::atomic<bool>& stop)
        : catalogue_(catalogue), read_(read), stop_(stop) {}

    struct Found {
        std::filesystem::path path;
        FileStamp stamp;
    };
    /// Files that are there, and the entries that had been in the same places. Those that are as
    /// their entries say are not read. Answers whether each file could be read.
    Result<bool> take(const std::vector<Found>& files, const std::vector<CatalogueEntry>& known);
    /// Entries whose files may be gone.
    void miss(std::vector<CatalogueEntry> entries);
    /// Removes the entries of files that are nowhere.
    Result<void> finish();

private:
    Result<bool> takeMoved(const Found& file);
    Result<void> put(std::vector<CatalogueEntry>& entries);

    CatalogueFile& catalogue_;
    const FileRecordReader& read_;
    const std::atomic<bool>& stop_;
    std::vector<CatalogueEntry> missing_;
};

}  // namespace quillmere
