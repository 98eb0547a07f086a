// What the photo library remembers of the files in its folders.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Result.h"
#include "Desktop/Photos/Database.h"
#include "Desktop/Photos/FileRecord.h"
#include "Desktop/Photos/FileStamp.h"

namespace quillmere {

/// One picture or video.
struct CatalogueEntry {
    /// Random, so that it never means another file, not even in a catalogue that began anew.
    std::string identifier;
    std::filesystem::path path;
    FileStamp stamp;
    /// As the file says it, or as it was given when the library made the file.
    FileRecord record;
    bool dateIsGiven = false;
    bool locationIsGiven = false;
};

/// A file that is about to get its name.
struct PlannedFile {
    std::filesystem::path path;
    std::int64_t inode = 0;
    std::optional<Date> creationDate;
    std::optional<Location> location;
};

/// `Library.sqlite`: a table of assets, one of folders with the modification time up to which
/// their names are known, and one of the files of a change that is under way. Errors are those of
/// `Database`. One thread at a time; other processes may write as well.
class Catalogue {
public:
    static Result<std::unique_ptr<Catalogue>> open(
        const std::optional<std::filesystem::path>& file);

    /// Whether its file has been moved or removed since.
    bool isGone() const { return database_->isGone(); }

    /// Newest first; those of one kind, or of both.
    Result<std::vector<CatalogueEntry>> newest(std::optional<PHAssetMediaType> kind,
                                               std::size_t first, std::size_t count);
    Result<std::size_t> count(std::optional<PHAssetMediaType> kind);
    Result<std::optional<CatalogueEntry>> withIdentifier(const std::string& identifier);
    Result<std::vector<CatalogueEntry>> inFolder(const std::filesystem::path& folder);
    Result<std::optional<CatalogueEntry>> atPath(const std::filesystem::path& path);
    Result<std::vector<CatalogueEntry>> withStamp(const FileStamp& stamp);

    /// New entries, and new facts for those whose path is known; these keep their identifiers, and
    /// a date or place that was given, unless it is given anew. All or none.
    Result<void> put(const std::vector<CatalogueEntry>& entries);
    /// The file has another name now. An entry that had that name goes.
    Result<void> move(const std::string& identifier, const std::filesystem::path& path);
    Result<void> remove(const std::vector<std::string>& identifiers);

    /// Those at or beneath a path; all of them for an empty one.
    Result<std::vector<std::filesystem::path>> foldersIn(const std::filesystem::path& path);
    /// In nanoseconds; 0 for a folder that is not known or has to be listed again.
    Result<std::int64_t> folderTime(const std::filesystem::path& folder);
    Result<void> setFolder(const std::filesystem::path& folder, std::int64_t modified);
    Result<void> removeFolder(const std::filesystem::path& folder);

    // A change tells its files before it names them, and is done when they have their entries.
    Result<void> plan(const std::vector<PlannedFile>& files);
    Result<std::vector<PlannedFile>> planned();
    Result<void> fulfilPlan(const std::vector<CatalogueEntry>& entries);
    Result<void> dropPlan();

private:
    explicit Catalogue(std::unique_ptr<Database> database) : database_(std::move(database)) {}

    Result<void> putOne(const CatalogueEntry& entry);

    std::unique_ptr<Database> database_;
};

}  // namespace quillmere
