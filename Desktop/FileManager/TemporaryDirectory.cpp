#include "Desktop/FileManager/TemporaryDirectory.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <string>
#include <system_error>

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr const char* prefix = "quillmere-";

/// Held until it is closed, or its process ends in whatever way. Not open where another holds the
/// folder, or where it is no folder of this user's.
FileDescriptor lockOn(const fs::path& folder) {
    FileDescriptor opened(
        open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    const bool ours = opened.isOpen() && fstat(opened.number(), &status) == 0 &&
                      status.st_uid == geteuid() && flock(opened.number(), LOCK_EX | LOCK_NB) == 0;
    return ours ? std::move(opened) : FileDescriptor();
}

/// Whether the name still means what is locked: between the making of a folder and its locking,
/// another process may have taken it for one of the dead.
bool stands(const FileDescriptor& lock, const fs::path& folder) {
    struct stat locked {
    }, named{};
    return fstat(lock.number(), &locked) == 0 && lstat(folder.c_str(), &named) == 0 &&
           locked.st_dev == named.st_dev && locked.st_ino == named.st_ino;
}

void removeThoseOfTheDead(const fs::path& systemFolder) {
    std::error_code failed;
    for (fs::directory_iterator entry(systemFolder, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        const fs::path folder = entry->path();
        if (!folder.filename().string().starts_with(prefix)) continue;
        if (folder.filename().string().size() != std::string(prefix).size() + 6) continue;
        const FileDescriptor lock = lockOn(folder);
        std::error_code ignored;
        if (lock.isOpen()) fs::remove_all(folder, ignored);
    }
}

}  // namespace

TemporaryDirectory::TemporaryDirectory(fs::path systemFolder)
    : systemFolder_(std::move(systemFolder)),
      path_(systemFolder_ / (std::string(prefix) + "none")) {}

fs::path TemporaryDirectory::systemTemporaryFolder() {
    std::error_code none;
    const fs::path folder = fs::temp_directory_path(none);
    return none ? "/tmp" : folder;  // which each system has
}

fs::path TemporaryDirectory::path() {
    const std::lock_guard guard(mutex_);
    if (!lock_.isOpen()) {
        removeThoseOfTheDead(systemFolder_);
        for (int attempt = 0; attempt < 10 && !make(); ++attempt) continue;
    }
    return path_;
}

bool TemporaryDirectory::make() {
    std::string name = systemFolder_ / (std::string(prefix) + "XXXXXX");
    if (!mkdtemp(name.data())) return false;
    FileDescriptor lock = lockOn(name);
    if (!lock.isOpen() || !stands(lock, name)) return false;
    path_ = name;
    lock_ = std::move(lock);
    return true;
}

void TemporaryDirectory::remove() {
    const std::lock_guard guard(mutex_);
    if (!lock_.isOpen()) return;
    std::error_code ignored;
    fs::remove_all(path_, ignored);
    lock_ = FileDescriptor();
}

}  // namespace quillmere
