#include "Desktop/Photos/Database.h"

#include <chrono>
#include <system_error>
#include <thread>

namespace quillmere {
namespace {

using namespace std::chrono_literals;

// Only a process that was stopped in the midst of a write holds longer.
constexpr auto patience = 5s;
// SQLite's own pauses grow, and never meet the moments between the writes of a busy process.
constexpr auto pauseBetweenAttempts = 1ms;

int waitForOthers(void*, int attempt) {
    if (attempt >= patience / pauseBetweenAttempts) return 0;
    std::this_thread::sleep_for(pauseBetweenAttempts);
    return 1;
}

/// For what SQLite answered, with places for the file and, where nothing better is known, a reason.
const char* sentenceOf(int code) {
    switch (code & 0xFF) {
        case SQLITE_FULL:
            return "The photo library's catalogue at %@ can't be used: the disk is full.";
        case SQLITE_READONLY:
        case SQLITE_PERM:
            return "The photo library's catalogue at %@ can't be used: the file or its folder "
                   "refuses writing.";
        case SQLITE_CANTOPEN:
            return "The photo library's catalogue at %@ can't be used: the file can't be opened, "
                   "or its folder refuses writing.";
        case SQLITE_BUSY:
            return "The photo library's catalogue at %@ can't be used: another program keeps the "
                   "file locked.";
        default:
            return "The photo library's catalogue at %@ can't be used: %@.";
    }
}

std::string reasonOf(sqlite3* connection, int code) {
    if (const int system = connection ? sqlite3_system_errno(connection) : 0; system != 0) {
        return std::generic_category().message(system);
    }
    return connection ? sqlite3_errmsg(connection) : sqlite3_errstr(code);
}

}  // namespace

Result<std::unique_ptr<Database>> Database::open(const std::optional<std::filesystem::path>& file,
                                                 const char* layout) {
    std::unique_ptr<Database> database(new Database(file ? file->string() : ":memory:"));
    sqlite3* opened = nullptr;
    const int flags =
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const int code = sqlite3_open_v2(database->path_.c_str(), &opened, flags, nullptr);
    database->connection_.reset(opened);
    if (code != SQLITE_OK) return database->failure(code);
    sqlite3_busy_handler(opened, waitForOthers, nullptr);
    // With EXTRA, each commit is flushed to the disk, on file systems without such a log as well.
    for (const char* sql : {"PRAGMA journal_mode = WAL", "PRAGMA synchronous = EXTRA", layout}) {
        if (const auto done = database->run(sql); !done) return done.error();
    }
    database->isOpening_ = false;
    return database;
}

Result<void> Database::run(const char* sql) {
    const int code = sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) return failure(code);
    return {};
}

bool Database::isGone() const {
    int moved = 0;
    const int code =
        sqlite3_file_control(connection_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return code == SQLITE_OK && moved != 0;
}

Error Database::failure(int code) {
    const int primary = code & 0xFF;
    // Our statements are right: where they don't fit, the tables are others.
    if (primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB || primary == SQLITE_ERROR) {
        // Closing must leave the files as they are, for whoever wants to save something.
        sqlite3_db_config(connection_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        return {errorDomain, damaged, "The photo library's catalogue at %@ is damaged.", {path_}};
    }
    const int kind = primary == SQLITE_FULL ? full
                     : primary == SQLITE_READONLY || primary == SQLITE_PERM ||
                             (primary == SQLITE_CANTOPEN && isOpening_)
                         ? refused
                         : unavailable;
    return {errorDomain, kind, sentenceOf(code), {path_, reasonOf(connection_.get(), code)}};
}

sqlite3_stmt* Database::statement(const char* sql, int& code) {
    SQLiteStatement& kept = statements_[sql];
    if (!kept) {
        sqlite3_stmt* made = nullptr;
        code = sqlite3_prepare_v3(connection_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &made,
                                  nullptr);
        kept.reset(made);
    }
    return kept.get();
}

// A statement that is left running would hold its locks.
Query::~Query() {
    sqlite3_reset(statement_);
    if (statement_) sqlite3_clear_bindings(statement_);
}

Result<bool> Query::step() {
    if (!statement_) return database_.failure(code_);
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    return database_.failure(code);
}

Result<void> Query::run() {
    if (const auto done = step(); !done) return done.error();
    return {};
}

bool Query::isNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::int64_t Query::integer(int column) const { return sqlite3_column_int64(statement_, column); }

double Query::real(int column) const { return sqlite3_column_double(statement_, column); }

std::string Query::bytes(int column) const {
    const auto* first = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    const int count = sqlite3_column_bytes(statement_, column);
    return first ? std::string(first, static_cast<std::size_t>(count)) : std::string();
}

void Query::bind(int index, std::int64_t value) {
    if (statement_) sqlite3_bind_int64(statement_, index, value);
}

void Query::bind(int index, double value) {
    if (statement_) sqlite3_bind_double(statement_, index, value);
}

void Query::bind(int index, const std::string& value) {
    if (!statement_) return;
    sqlite3_bind_blob64(statement_, index, value.data(), value.size(), SQLITE_TRANSIENT);
}

Result<void> Transaction::commit() {
    if (!begun_) return begun_;
    return database_.run("COMMIT");
}

}  // namespace quillmere
