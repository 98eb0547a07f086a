#include "Desktop/Photos/CatalogueFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "Desktop/FileManager/UserFolders.h"

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr const char* fileName = "Library.sqlite";
constexpr mode_t onlyTheUser = 0600;

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

}  // namespace

FileDescriptor CatalogueFile::lockForChange(bool waits) {
    // A folder that can't be made is told of when the catalogue is opened.
    if (!folder_ || !makePrivateFolder(*folder_)) return FileDescriptor();
    FileDescriptor file(
        ::open((*folder_ / "Library.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, onlyTheUser));
    int failed = 0;
    do {
        failed = flock(file.number(), LOCK_EX | (waits ? 0 : LOCK_NB));
    } while (failed != 0 && errno == EINTR);
    // Where a file system has no locks, nobody is held up.
    if (failed != 0 && errno == EWOULDBLOCK) return FileDescriptor();
    return file;
}

Result<void> CatalogueFile::open() {
    if (catalogue_ && folder_ && catalogue_->isGone()) {
        // Another process moved it aside, or a user removed it.
        catalogue_.reset();
        beganAnew_();
    }
    if (catalogue_) return {};
    std::optional<fs::path> file;
    FileDescriptor folder;
    if (folder_) {
        if (!makePrivateFolder(*folder_)) {
            return Error{Database::errorDomain,
                         Database::refused,
                         "The folder %@ can't be made or written, and the photo library needs it.",
                         {folder_->string()}};
        }
        file = *folder_ / fileName;
        folder = lockFolder();
    }
    auto opened = Catalogue::open(file);
    if (!opened && opened.error().code == Database::damaged && file) {
        if (const auto moved = moveAside(); !moved) return moved;
        opened = Catalogue::open(file);
    }
    if (!opened) return opened.error();
    catalogue_ = *std::move(opened);
    return {};
}

// Two processes that meet damage must not move away each other's new catalogue.
FileDescriptor CatalogueFile::lockFolder() const {
    FileDescriptor folder(::open(folder_->c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    flock(folder.number(), LOCK_EX);
    return folder;
}

Result<void> CatalogueFile::mend() {
    if (!folder_) {
        catalogue_.reset();
        beganAnew_();
        return {};
    }
    const FileDescriptor folder = lockFolder();
    if (!catalogue_->isGone()) return moveAside();
    return {};
}

// The file itself goes last: a log that stayed alone would be read into the next catalogue.
Result<void> CatalogueFile::moveAside() {
    catalogue_.reset();
    const fs::path file = *folder_ / fileName;
    const fs::path aside = nameAside(file);
    for (const char* suffix : {"-wal", "-shm", ""}) {
        const std::string from = file.string() + suffix;
        const std::string to = aside.string() + suffix;
        if (rename(from.c_str(), to.c_str()) != 0 && errno != ENOENT) {
            return Error{
                Database::errorDomain,
                Database::unavailable,
                "The photo library's catalogue at %@ is damaged and can't be moved aside: %@.",
                {file.string(), std::generic_category().message(errno)}};
        }
    }
    console_.report({Error{Database::errorDomain,
                           Database::damaged,
                           "The photo library's catalogue at %@ is damaged. It lies at %@ now, and "
                           "a new one is made from the files.",
                           {file.string(), aside.string()}}});
    beganAnew_();
    return {};
}

}  // namespace quillmere
