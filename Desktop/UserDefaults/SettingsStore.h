// One connection to the file of settings, a table of keys and integers in SQLite.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Base/Result.h"
#include "Desktop/UserDefaults/SQLiteHandles.h"

namespace quillmere {

/// Several processes may have the file open. A value that was set is on the disk: a power cut takes
/// at most the one that is being set, and never the file. One thread at a time.
///
/// An operation waits for other processes at most five seconds. Errors have the domain
/// `errorDomain`, and as their code `damaged` where the file is no such store any more, and
/// `unavailable` for the rest.
class SettingsStore {
public:
    static constexpr const char* errorDomain = "quillmere.settings";
    enum Code { damaged = 1, unavailable = 2 };

    /// Makes the file where it is missing, and reads all of it to find damage.
    static Result<std::unique_ptr<SettingsStore>> open(const std::filesystem::path& file);

    /// For a file that can't be opened to write, because of `why`: as it stood on the disk when
    /// it was last complete. Setting a value answers `why`.
    static Result<std::unique_ptr<SettingsStore>> openReadOnly(const std::filesystem::path& file,
                                                               Error why);

    /// Nothing for a key that was never set.
    Result<std::optional<std::int64_t>> integer(std::string_view key);
    Result<void> setInteger(std::int64_t value, std::string_view key);

    bool isReadOnly() const { return readOnlyBecause_.has_value(); }
    /// Whether the file has been moved or removed since.
    bool isGone() const;

private:
    explicit SettingsStore(const std::filesystem::path& file) : path_(file.string()) {}

    Result<void> connect(const std::string& name, int flags);
    Result<void> check();
    Result<void> layOut();
    Result<void> run(const char* sql);
    Result<SQLiteStatement> prepare(const char* sql);
    Error failure(int code);

    std::string path_;
    SQLiteConnection connection_;
    SQLiteStatement read_;
    SQLiteStatement write_;
    std::optional<Error> readOnlyBecause_;
    bool isOpening_ = true;
};

}  // namespace quillmere
