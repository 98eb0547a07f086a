#include "Desktop/Photos/Catalogue.h"

#include <chrono>

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr const char* layout =
    "CREATE TABLE IF NOT EXISTS assets ("
    " identifier BLOB PRIMARY KEY, folder BLOB NOT NULL, name BLOB NOT NULL,"
    " kind INTEGER NOT NULL, type BLOB NOT NULL,"
    " size INTEGER NOT NULL, modified INTEGER NOT NULL, inode INTEGER NOT NULL,"
    " width INTEGER NOT NULL, height INTEGER NOT NULL, orientation INTEGER NOT NULL,"
    " created INTEGER, created_given INTEGER NOT NULL,"
    " latitude REAL, longitude REAL, altitude REAL, fixed INTEGER, place_given INTEGER NOT NULL,"
    " UNIQUE (folder, name)) STRICT, WITHOUT ROWID;"
    "CREATE INDEX IF NOT EXISTS assets_by_inode ON assets (inode);"
    "CREATE INDEX IF NOT EXISTS assets_by_date ON assets (created);"
    "CREATE INDEX IF NOT EXISTS assets_by_kind ON assets (kind, created);"
    "CREATE TABLE IF NOT EXISTS folders ("
    " path BLOB PRIMARY KEY, modified INTEGER NOT NULL) STRICT, WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS planned ("
    " path BLOB PRIMARY KEY, inode INTEGER NOT NULL, created INTEGER,"
    " latitude REAL, longitude REAL, altitude REAL, fixed INTEGER) STRICT, WITHOUT ROWID;";

#define QUILLMERE_COLUMNS                                                                      \
    "identifier, folder, name, kind, type, size, modified, inode, width, height, orientation," \
    " created, created_given, latitude, longitude, altitude, fixed, place_given"
// What comes before the page is passed over in the index alone.
#define QUILLMERE_NEWEST(condition)                                              \
    "SELECT " QUILLMERE_COLUMNS                                                  \
    " FROM assets WHERE identifier IN (SELECT identifier FROM assets " condition \
    " ORDER BY created DESC, identifier DESC LIMIT ?1 OFFSET ?2)"                \
    " ORDER BY created DESC, identifier DESC"
constexpr const char* selectNewest = QUILLMERE_NEWEST("");
constexpr const char* selectNewestOfKind = QUILLMERE_NEWEST("WHERE kind = ?3");
#undef QUILLMERE_NEWEST
constexpr const char* selectIdentifier =
    "SELECT " QUILLMERE_COLUMNS " FROM assets WHERE identifier = ?1";
constexpr const char* selectFolder = "SELECT " QUILLMERE_COLUMNS " FROM assets WHERE folder = ?1";
constexpr const char* selectPath =
    "SELECT " QUILLMERE_COLUMNS " FROM assets WHERE folder = ?1 AND name = ?2";
constexpr const char* selectStamp =
    "SELECT " QUILLMERE_COLUMNS " FROM assets WHERE inode = ?1 AND size = ?2 AND modified = ?3";
constexpr const char* upsert =
    "INSERT INTO assets (" QUILLMERE_COLUMNS
    ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17, ?18)"
    " ON CONFLICT (folder, name) DO UPDATE SET kind = excluded.kind, type = excluded.type,"
    " size = excluded.size, modified = excluded.modified, inode = excluded.inode,"
    " width = excluded.width, height = excluded.height, orientation = excluded.orientation,"
    " created = iif(excluded.created_given OR NOT created_given, excluded.created, created),"
    " created_given = created_given OR excluded.created_given,"
    " latitude = iif(excluded.place_given OR NOT place_given, excluded.latitude, latitude),"
    " longitude = iif(excluded.place_given OR NOT place_given, excluded.longitude, longitude),"
    " altitude = iif(excluded.place_given OR NOT place_given, excluded.altitude, altitude),"
    " fixed = iif(excluded.place_given OR NOT place_given, excluded.fixed, fixed),"
    " place_given = place_given OR excluded.place_given";
#undef QUILLMERE_COLUMNS

std::int64_t nanosecondsOf(Date date) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(date.time_since_epoch()).count();
}

std::optional<std::int64_t> nanosecondsOf(const std::optional<Date>& date) {
    return date ? std::optional(nanosecondsOf(*date)) : std::nullopt;
}

Date dateOf(std::int64_t nanoseconds) {
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::nanoseconds(nanoseconds)));
}

/// A place as its columns.
struct Place {
    explicit Place(const std::optional<Location>& location) {
        if (!location) return;
        latitude = location->latitude;
        longitude = location->longitude;
        altitude = location->altitude;
        fixed = nanosecondsOf(location->timestamp);
    }
    std::optional<double> latitude, longitude, altitude;
    std::optional<std::int64_t> fixed;
};

std::optional<Date> dateIn(const Query& row, int column) {
    return row.isNull(column) ? std::nullopt : std::optional(dateOf(row.integer(column)));
}

std::optional<Location> locationFrom(const Query& row, int first) {
    if (row.isNull(first)) return std::nullopt;
    return Location{row.real(first), row.real(first + 1), row.real(first + 2),
                    dateOf(row.integer(first + 3))};
}

CatalogueEntry entryOf(const Query& row) {
    CatalogueEntry entry;
    entry.identifier = row.bytes(0);
    entry.path = fs::path(row.bytes(1)) / row.bytes(2);
    entry.record.mediaType =
        row.integer(3) == 2 ? PHAssetMediaType::video : PHAssetMediaType::image;
    entry.record.typeIdentifier = row.bytes(4);
    entry.stamp = {row.integer(5), row.integer(6), row.integer(7)};
    entry.record.pixelSize = {static_cast<int>(row.integer(8)), static_cast<int>(row.integer(9))};
    entry.record.orientation = static_cast<int>(row.integer(10));
    entry.record.creationDate = dateIn(row, 11);
    entry.dateIsGiven = row.integer(12) != 0;
    entry.record.location = locationFrom(row, 13);
    entry.locationIsGiven = row.integer(17) != 0;
    return entry;
}

Result<std::vector<CatalogueEntry>> entriesOf(Query& query) {
    std::vector<CatalogueEntry> entries;
    for (;;) {
        const auto row = query.step();
        if (!row) return row.error();
        if (!*row) return entries;
        entries.push_back(entryOf(query));
    }
}

Result<std::optional<CatalogueEntry>> entryOrNone(Query& query) {
    const auto row = query.step();
    if (!row) return row.error();
    return *row ? std::optional(entryOf(query)) : std::nullopt;
}

}  // namespace

Result<std::unique_ptr<Catalogue>> Catalogue::open(const std::optional<fs::path>& file) {
    auto database = Database::open(file, layout);
    if (!database) return database.error();
    std::unique_ptr<Catalogue> catalogue(new Catalogue(*std::move(database)));
    // Tables of other columns are found out here, not at a user's first picture.
    if (const auto fits = catalogue->withIdentifier({}); !fits) return fits.error();
    if (const auto fits = catalogue->planned(); !fits) return fits.error();
    return catalogue;
}

Result<std::vector<CatalogueEntry>> Catalogue::newest(std::optional<PHAssetMediaType> kind,
                                                      std::size_t first, std::size_t count) {
    const auto limit = static_cast<std::int64_t>(count);
    const auto offset = static_cast<std::int64_t>(first);
    if (!kind) {
        Query query(*database_, selectNewest, limit, offset);
        return entriesOf(query);
    }
    Query query(*database_, selectNewestOfKind, limit, offset, static_cast<int>(*kind));
    return entriesOf(query);
}

Result<std::size_t> Catalogue::count(std::optional<PHAssetMediaType> kind) {
    Query query(*database_, "SELECT count(*) FROM assets WHERE ?1 IS NULL OR kind = ?1",
                kind ? std::optional(static_cast<int>(*kind)) : std::nullopt);
    const auto row = query.step();
    if (!row) return row.error();
    return static_cast<std::size_t>(query.integer(0));
}

Result<std::optional<CatalogueEntry>> Catalogue::withIdentifier(const std::string& identifier) {
    Query query(*database_, selectIdentifier, identifier);
    return entryOrNone(query);
}

Result<std::vector<CatalogueEntry>> Catalogue::inFolder(const fs::path& folder) {
    Query query(*database_, selectFolder, folder.string());
    return entriesOf(query);
}

Result<std::optional<CatalogueEntry>> Catalogue::atPath(const fs::path& path) {
    Query query(*database_, selectPath, path.parent_path().string(), path.filename().string());
    return entryOrNone(query);
}

Result<std::vector<CatalogueEntry>> Catalogue::withStamp(const FileStamp& stamp) {
    Query query(*database_, selectStamp, stamp.inode, stamp.size, stamp.modified);
    return entriesOf(query);
}

Result<void> Catalogue::putOne(const CatalogueEntry& entry) {
    const FileRecord& record = entry.record;
    const Place place(record.location);
    return Query(*database_, upsert, entry.identifier, entry.path.parent_path().string(),
                 entry.path.filename().string(), static_cast<int>(record.mediaType),
                 record.typeIdentifier, entry.stamp.size, entry.stamp.modified, entry.stamp.inode,
                 record.pixelSize.width, record.pixelSize.height, record.orientation,
                 nanosecondsOf(record.creationDate), int{entry.dateIsGiven}, place.latitude,
                 place.longitude, place.altitude, place.fixed, int{entry.locationIsGiven})
        .run();
}

Result<void> Catalogue::put(const std::vector<CatalogueEntry>& entries) {
    Transaction transaction(*database_);
    if (!transaction.begun()) return transaction.begun();
    for (const CatalogueEntry& entry : entries) {
        if (auto done = putOne(entry); !done) return done;
    }
    return transaction.commit();
}

Result<void> Catalogue::move(const std::string& identifier, const fs::path& path) {
    return Query(*database_,
                 "UPDATE OR REPLACE assets SET folder = ?2, name = ?3 WHERE identifier = ?1",
                 identifier, path.parent_path().string(), path.filename().string())
        .run();
}

Result<void> Catalogue::remove(const std::vector<std::string>& identifiers) {
    Transaction transaction(*database_);
    if (!transaction.begun()) return transaction.begun();
    for (const std::string& identifier : identifiers) {
        Query query(*database_, "DELETE FROM assets WHERE identifier = ?1", identifier);
        if (auto done = query.run(); !done) return done;
    }
    return transaction.commit();
}

Result<std::vector<fs::path>> Catalogue::foldersIn(const fs::path& path) {
    // "0" is the letter after "/". Between them lies all that is beneath.
    Query query(*database_,
                "SELECT path FROM folders WHERE length(?1) = 0 OR path = ?1"
                " OR (path > ?2 AND path < ?3)",
                path.string(), path.string() + "/", path.string() + "0");
    std::vector<fs::path> folders;
    for (;;) {
        const auto row = query.step();
        if (!row) return row.error();
        if (!*row) return folders;
        folders.emplace_back(query.bytes(0));
    }
}

Result<std::int64_t> Catalogue::folderTime(const fs::path& folder) {
    Query query(*database_, "SELECT modified FROM folders WHERE path = ?1", folder.string());
    const auto row = query.step();
    if (!row) return row.error();
    return *row ? query.integer(0) : 0;
}

Result<void> Catalogue::setFolder(const fs::path& folder, std::int64_t modified) {
    return Query(*database_, "INSERT OR REPLACE INTO folders (path, modified) VALUES (?1, ?2)",
                 folder.string(), modified)
        .run();
}

Result<void> Catalogue::removeFolder(const fs::path& folder) {
    return Query(*database_, "DELETE FROM folders WHERE path = ?1", folder.string()).run();
}

Result<void> Catalogue::plan(const std::vector<PlannedFile>& files) {
    Transaction transaction(*database_);
    if (!transaction.begun()) return transaction.begun();
    for (const PlannedFile& file : files) {
        const Place place(file.location);
        Query query(*database_,
                    "INSERT OR REPLACE INTO planned"
                    " (path, inode, created, latitude, longitude, altitude, fixed)"
                    " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)",
                    file.path.string(), file.inode, nanosecondsOf(file.creationDate),
                    place.latitude, place.longitude, place.altitude, place.fixed);
        if (auto done = query.run(); !done) return done;
    }
    return transaction.commit();
}

Result<std::vector<PlannedFile>> Catalogue::planned() {
    Query query(*database_,
                "SELECT path, inode, created, latitude, longitude, altitude, fixed FROM planned");
    std::vector<PlannedFile> files;
    for (;;) {
        const auto row = query.step();
        if (!row) return row.error();
        if (!*row) return files;
        files.push_back(
            {query.bytes(0), query.integer(1), dateIn(query, 2), locationFrom(query, 3)});
    }
}

Result<void> Catalogue::fulfilPlan(const std::vector<CatalogueEntry>& entries) {
    Transaction transaction(*database_);
    if (!transaction.begun()) return transaction.begun();
    for (const CatalogueEntry& entry : entries) {
        if (auto done = putOne(entry); !done) return done;
    }
    if (auto done = dropPlan(); !done) return done;
    return transaction.commit();
}

Result<void> Catalogue::dropPlan() { return database_->run("DELETE FROM planned"); }

}  // namespace quillmere
