// One connection to an SQLite file, its statements, and what to say when it fails.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Base/Result.h"
#include "Desktop/UserDefaults/SQLiteHandles.h"

namespace quillmere {

/// One thread at a time; other processes may have the file open. An operation waits for them at
/// most five seconds. What was committed is on the disk.
class Database {
public:
    static constexpr const char* errorDomain = "quillmere.library";
    enum Code {
        damaged = 1,  // not such a file any more
        unavailable = 2,
        full = 3,
        refused = 4,  // by its permissions
    };

    /// Makes the file where it is missing, and what `layout` says if it is not there yet. Without
    /// a file, it lives in memory.
    static Result<std::unique_ptr<Database>> open(const std::optional<std::filesystem::path>& file,
                                                  const char* layout);

    Result<void> run(const char* sql);
    /// Whether the file has been moved or removed since.
    bool isGone() const;
    bool isInTransaction() const { return sqlite3_get_autocommit(connection_.get()) == 0; }
    Error failure(int code);

private:
    friend class Query;

    explicit Database(std::string path) : path_(std::move(path)) {}

    sqlite3_stmt* statement(const char* sql, int& code);

    std::string path_;
    SQLiteConnection connection_;
    std::map<std::string_view, SQLiteStatement> statements_;
    bool isOpening_ = true;
};

/// One run of a statement. No two of the same text at once, and none that outlives its database.
class Query {
public:
    /// `sql` is a literal. Values are bound in their order: integers, doubles, texts, and nothing
    /// for an empty optional.
    template <class... Values>
    Query(Database& database, const char* sql, const Values&... values)
        : database_(database), statement_(database.statement(sql, code_)) {
        int index = 0;
        (bind(++index, values), ...);
    }
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    /// Whether there is one more row.
    Result<bool> step();
    /// For statements without rows.
    Result<void> run();

    // Of the row, columns from 0.
    bool isNull(int column) const;
    std::int64_t integer(int column) const;
    double real(int column) const;
    std::string bytes(int column) const;

private:
    void bind(int index, std::int64_t value);
    void bind(int index, int value) { bind(index, std::int64_t{value}); }
    void bind(int index, double value);
    /// As bytes: names of files need be no UTF-8.
    void bind(int index, const std::string& value);
    template <class Value>
    void bind(int index, const std::optional<Value>& value) {
        if (value) bind(index, *value);
    }

    Database& database_;
    int code_ = 0;
    sqlite3_stmt* statement_;
};

/// All of what is run while it lives, or nothing of it without `commit`.
class Transaction {
public:
    explicit Transaction(Database& database)
        : database_(database), begun_(database.run("BEGIN IMMEDIATE")) {}
    ~Transaction() {
        // A full disk may have ended it already.
        if (begun_ && database_.isInTransaction()) (void)database_.run("ROLLBACK");
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    const Result<void>& begun() const { return begun_; }
    Result<void> commit();

private:
    Database& database_;
    Result<void> begun_;
};

}  // namespace quillmere
