#include "Desktop/UserDefaults/SettingsStore.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace quillmere {
namespace {

using namespace std::chrono_literals;

// A write takes some milliseconds; only a process that was stopped in the midst of one holds
// longer.
constexpr auto patience = 5s;

// SQLite's own pauses grow to 100 ms, and never meet the moments between the writes of a busy
// process.
constexpr auto pauseBetweenAttempts = 1ms;

int waitForOthers(void*, int attempt) {
    if (attempt >= patience / pauseBetweenAttempts) return 0;
    std::this_thread::sleep_for(pauseBetweenAttempts);
    return 1;
}

/// Binds, runs and resets: a statement that is left running would hold its locks.
class Execution {
public:
    Execution(sqlite3_stmt* statement, const std::string& key) : statement_(statement) {
        sqlite3_bind_text(statement_, 1, key.data(), static_cast<int>(key.size()), SQLITE_STATIC);
    }
    ~Execution() {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }
    Execution(const Execution&) = delete;
    Execution& operator=(const Execution&) = delete;

    int step() { return sqlite3_step(statement_); }

private:
    sqlite3_stmt* statement_;
};

/// A file name as a URI that SQLite takes, with its parameters.
std::string uriOf(const std::string& path, const char* parameters) {
    constexpr const char* digits = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const char c : path) {
        if (c == '%' || c == '?' || c == '#') {
            const auto code = static_cast<unsigned char>(c);
            uri += {'%', digits[code / 16], digits[code % 16]};
        } else {
            uri += c;
        }
    }
    return uri + "?" + parameters;
}

/// For what SQLite answered, with places for the file and, where nothing better is known, a reason.
const char* sentenceOf(int code) {
    switch (code & 0xFF) {
        case SQLITE_FULL:
            return "The settings at %@ can't be used: the disk is full.";
        case SQLITE_READONLY:
            return "The settings at %@ can't be used: the file or its folder refuses writing.";
        case SQLITE_CANTOPEN:
            return "The settings at %@ can't be used: the file can't be opened, or its folder "
                   "refuses writing.";
        case SQLITE_BUSY:
            return "The settings at %@ can't be used: another program keeps the file locked.";
        default:
            return "The settings at %@ can't be used: %@.";
    }
}

std::string reasonOf(sqlite3* connection, int code) {
    if (const int system = connection ? sqlite3_system_errno(connection) : 0; system != 0) {
        return std::generic_category().message(system);
    }
    return connection ? sqlite3_errmsg(connection) : sqlite3_errstr(code);
}

}  // namespace

Result<std::unique_ptr<SettingsStore>> SettingsStore::open(const std::filesystem::path& file) {
    std::unique_ptr<SettingsStore> store(new SettingsStore(file));
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    if (const auto connected = store->connect(store->path_, flags); !connected) {
        return connected.error();
    }
    if (const auto checked = store->check(); !checked) return checked.error();
    if (const auto laidOut = store->layOut(); !laidOut) return laidOut.error();
    store->isOpening_ = false;
    return store;
}

Result<std::unique_ptr<SettingsStore>> SettingsStore::openReadOnly(
    const std::filesystem::path& file, Error why) {
    std::unique_ptr<SettingsStore> store(new SettingsStore(file));
    store->readOnlyBecause_ = std::move(why);
    // "Immutable" lets SQLite read without the files beside this one, which can't be made here.
    const std::string uri = uriOf(store->path_, "immutable=1");
    const int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
    if (const auto connected = store->connect(uri, flags); !connected) return connected.error();
    if (const auto checked = store->check(); !checked) return checked.error();
    auto read = store->prepare("SELECT value FROM settings WHERE key = ?1");
    if (!read) return read.error();
    store->read_ = *std::move(read);
    store->isOpening_ = false;
    return store;
}

Result<void> SettingsStore::connect(const std::string& name, int flags) {
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(name.c_str(), &opened,
                                     flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    connection_.reset(opened);
    if (code != SQLITE_OK) return failure(code);
    sqlite3_busy_handler(opened, waitForOthers, nullptr);
    return {};
}

Result<void> SettingsStore::check() {
    const auto statement = prepare("PRAGMA quick_check(1)");
    if (!statement) return statement.error();
    const int code = sqlite3_step(statement->get());
    if (code != SQLITE_ROW) return failure(code);
    const auto* answer = sqlite3_column_text(statement->get(), 0);
    if (!answer || std::string_view(reinterpret_cast<const char*>(answer)) != "ok") {
        return failure(SQLITE_CORRUPT);
    }
    return {};
}

Result<void> SettingsStore::layOut() {
    // With EXTRA, each commit is flushed to the disk in the write-ahead log, and also on file
    // systems that can't have such a log.
    for (const char* sql : {"PRAGMA journal_mode = WAL", "PRAGMA synchronous = EXTRA",
                            "CREATE TABLE IF NOT EXISTS settings"
                            " (key TEXT PRIMARY KEY, value INTEGER NOT NULL)"
                            " STRICT, WITHOUT ROWID"}) {
        if (const auto done = run(sql); !done) return done.error();
    }
    auto read = prepare("SELECT value FROM settings WHERE key = ?1");
    if (!read) return read.error();
    auto write = prepare(
        "INSERT INTO settings (key, value) VALUES (?1, ?2)"
        " ON CONFLICT (key) DO UPDATE SET value = excluded.value");
    if (!write) return write.error();
    read_ = *std::move(read);
    write_ = *std::move(write);
    return {};
}

Result<std::optional<std::int64_t>> SettingsStore::integer(std::string_view key) {
    const std::string text(key);
    Execution reading(read_.get(), text);
    const int code = reading.step();
    if (code == SQLITE_DONE) return std::optional<std::int64_t>();
    if (code != SQLITE_ROW) return failure(code);
    return std::optional<std::int64_t>(sqlite3_column_int64(read_.get(), 0));
}

Result<void> SettingsStore::setInteger(std::int64_t value, std::string_view key) {
    if (readOnlyBecause_) return *readOnlyBecause_;
    const std::string text(key);
    Execution writing(write_.get(), text);
    sqlite3_bind_int64(write_.get(), 2, value);
    const int code = writing.step();
    if (code != SQLITE_DONE) return failure(code);
    return {};
}

bool SettingsStore::isGone() const {
    int moved = 0;
    const int code =
        sqlite3_file_control(connection_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return code == SQLITE_OK && moved != 0;
}

Result<void> SettingsStore::run(const char* sql) {
    const int code = sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) return failure(code);
    return {};
}

Result<SQLiteStatement> SettingsStore::prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v3(connection_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT,
                                        &statement, nullptr);
    if (code != SQLITE_OK) return failure(code);
    return SQLiteStatement(statement);
}

Error SettingsStore::failure(int code) {
    const int primary = code & 0xFF;
    // Our statements are right: where they don't fit while opening, the table is another one.
    const bool isDamage = primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB ||
                          (isOpening_ && primary == SQLITE_ERROR);
    if (isDamage) {
        // Closing must leave the files as they are, for whoever wants to save something.
        sqlite3_db_config(connection_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        return {errorDomain, damaged, "The settings at %@ are damaged.", {path_}};
    }
    return {errorDomain, unavailable, sentenceOf(code), {path_, reasonOf(connection_.get(), code)}};
}

}  // namespace quillmere
