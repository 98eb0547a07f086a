#include "Desktop/UserDefaults/SettingsFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "Desktop/FileManager/FileDescriptor.h"

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr mode_t folderMode = 0700;

Error failure(const fs::path& file, int number) {
    return {SettingsStore::errorDomain,
            SettingsStore::unavailable,
            "The settings at %@ can't be used: %@.",
            {file.string(), std::generic_category().message(number)}};
}

FileDescriptor openFolder(const fs::path& folder) {
    return FileDescriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/// Answers 0 or the system's error number. A new folder has its name on the disk before anything
/// is put into it, as SQLite does for its files.
int makeFolder(const fs::path& folder) {
    std::error_code ignored;
    if (fs::is_directory(folder, ignored)) return 0;
    const fs::path parent = folder.parent_path();
    if (const int failed = parent == folder ? ENOENT : makeFolder(parent); failed != 0) {
        return failed;
    }
    if (mkdir(folder.c_str(), folderMode) != 0) return errno == EEXIST ? 0 : errno;
    const FileDescriptor flushed = openFolder(parent);
    if (flushed.isOpen()) fsync(flushed.number());
    return 0;
}

/// A name beside `file` that nothing has.
fs::path nameAside(const fs::path& file) {
    std::error_code ignored;
    const std::string first = file.string() + ".damaged";
    fs::path name = first;
    for (int number = 2; fs::exists(fs::symlink_status(name, ignored)); ++number) {
        name = first + "-" + std::to_string(number);
    }
    return name;
}

/// The file itself goes last: a log that stayed alone would be read into the next store.
Result<fs::path> moveAside(const fs::path& file) {
    const fs::path aside = nameAside(file);
    for (const char* suffix : {"-wal", "-shm", ""}) {
        const std::string from = file.string() + suffix;
        const std::string to = aside.string() + suffix;
        if (rename(from.c_str(), to.c_str()) != 0 && errno != ENOENT) return failure(file, errno);
    }
    return aside;
}

}  // namespace

Result<std::unique_ptr<SettingsStore>> openSettingsFile(const fs::path& file, Console& console) {
    if (const int failed = makeFolder(file.parent_path()); failed != 0) {
        return failure(file, failed);
    }
    // One process at a time: two that meet damage must not move away each other's new store. Where
    // a file system has no locks, that is as likely as damage in the same moment.
    const FileDescriptor folder = openFolder(file.parent_path());
    flock(folder.number(), LOCK_EX);

    auto store = SettingsStore::open(file);
    if (!store && store.error().code == SettingsStore::damaged) {
        const auto aside = moveAside(file);
        if (!aside) return aside.error();
        console.report({Error{
            SettingsStore::errorDomain,
            SettingsStore::damaged,
            "The settings at %@ are damaged. They lie at %@ now, and all settings begin anew.",
            {file.string(), aside->string()}}});
        store = SettingsStore::open(file);
    }
    if (!store && store.error().code == SettingsStore::unavailable) {
        if (auto readable = SettingsStore::openReadOnly(file, store.error())) return readable;
    }
    return store;
}

}  // namespace quillmere
