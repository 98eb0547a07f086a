// What SQLite hands out, held so that it is given back.
#pragma once

#include <sqlite3.h>

#include <memory>

namespace quillmere {

struct SQLiteDeleter {
    void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

using SQLiteConnection = std::unique_ptr<sqlite3, SQLiteDeleter>;
using SQLiteStatement = std::unique_ptr<sqlite3_stmt, SQLiteDeleter>;

}  // namespace quillmere
