#include "Desktop/FileManager/DesktopFileManager.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <system_error>

#include "Desktop/FileManager/FileDescriptor.h"
#include "Desktop/FileManager/PendingFile.h"

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr unsigned newFileMode = 0666;

Error failure(int number, std::string sentence, std::vector<std::string> values) {
    return {FileManager::posixErrorDomain, number, std::move(sentence), std::move(values)};
}

Error readFailure(int number, const fs::path& path) {
    const std::string name = path.string();
    switch (number) {
        case ENOENT:
        case ENOTDIR:
            return failure(number, "There is no file %@.", {name});
        case EACCES:
        case EPERM:
            return failure(number, "The file %@ refuses reading.", {name});
        case EISDIR:
            return failure(number, "%@ is a folder, not a file.", {name});
        case EFBIG:
        case ENOMEM:
            return failure(number, "The file %@ is too large.", {name});
        default:
            return failure(number, "The file %@ can't be read: %@.",
                           {name, std::generic_category().message(number)});
    }
}

Error writeFailure(int number, const fs::path& path) {
    const std::string name = path.string();
    const std::string folder = path.parent_path().string();
    switch (number) {
        case ENOENT:
        case ENOTDIR:
            return failure(number, "There is no folder %@.", {folder});
        case EACCES:
        case EPERM:
        case EROFS:
            return failure(number, "The folder %@ refuses writing.", {folder});
        case EEXIST:
            return failure(number, "%@ already exists.", {name});
        case ENOSPC:
        case EDQUOT:
            return failure(number, "There is no space left for %@.", {name});
        case EISDIR:
            return failure(number, "%@ is a folder, not a file.", {name});
        case EFBIG:
            return failure(number, "%@ is larger than its disk allows.", {name});
        case ENAMETOOLONG:
            return failure(number, "The name %@ is too long.", {name});
        case EINVAL:
            return failure(number, "%@ is not a regular file and is not replaced.", {name});
        default:
            return failure(number, "%@ can't be written: %@.",
                           {name, std::generic_category().message(number)});
    }
}

/// Where a write really goes: absolute, so that it has a folder, and behind symbolic links.
Result<fs::path> resolvedTarget(const fs::path& path) {
    std::error_code failed;
    fs::path target = fs::absolute(path, failed);
    for (int hops = 0; !failed && fs::is_symlink(fs::symlink_status(target, failed)); ++hops) {
        if (hops == 40) return writeFailure(ELOOP, path);
        const fs::path next = fs::read_symlink(target, failed);
        target = next.is_absolute() ? next : target.parent_path() / next;
    }
    if (failed && failed.value() != ENOENT) return writeFailure(failed.value(), path);
    return target;
}

/// The file has its name; a power cut must not take it back. Nothing could be done if this fails.
void flushFolder(const fs::path& folder) {
    const FileDescriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) fsync(opened.number());
}

}  // namespace

Result<std::vector<std::byte>> DesktopFileManager::contentsOfFile(const fs::path& path) {
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) return readFailure(errno, path);
    struct stat status {};
    if (fstat(file.number(), &status) != 0) return readFailure(errno, path);
    if (S_ISDIR(status.st_mode)) return readFailure(EISDIR, path);

    try {
        // One byte more than the file says it has, to meet its end without growing.
        const auto size = static_cast<std::size_t>(std::max<off_t>(status.st_size, 0));
        if (size > maximumSize) return readFailure(EFBIG, path);
        std::vector<std::byte> contents(std::max<std::size_t>(size + 1, 65536));
        std::size_t filled = 0;
        for (;;) {
            const ssize_t count =
                read(file.number(), contents.data() + filled, contents.size() - filled);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return readFailure(errno, path);
            if (count == 0) break;
            filled += static_cast<std::size_t>(count);
            if (filled > maximumSize) return readFailure(EFBIG, path);
            if (filled == contents.size()) contents.resize(contents.size() * 2);
        }
        contents.resize(filled);
        return contents;
    } catch (const std::bad_alloc&) {
        return readFailure(ENOMEM, path);
    }
}

Result<void> DesktopFileManager::writeFile(const fs::path& path,
                                           std::span<const std::byte> contents,
                                           WriteExisting existing) {
    const auto target = resolvedTarget(path);
    if (!target) return target.error();

    struct stat status {};
    const bool exists = stat(target->c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) return writeFailure(EISDIR, *target);
    if (exists && existing == WriteExisting::refuse) return writeFailure(EEXIST, *target);
    if (exists && !S_ISREG(status.st_mode)) return writeFailure(EINVAL, *target);
    if (!exists && errno != ENOENT) return writeFailure(errno, *target);

    PendingFile pending(*target);
    int failed = pending.open(exists ? 0600 : newFileMode);
    if (failed == 0) failed = pending.write(contents);
    if (failed == 0 && exists) failed = pending.setMode(status.st_mode & 07777);
    if (failed == 0) failed = pending.flush();
    if (failed == 0) {
        failed = existing == WriteExisting::refuse ? pending.commit() : pending.commitReplacing();
    }
    if (failed != 0) return writeFailure(failed, *target);
    flushFolder(target->parent_path());
    return {};
}

}  // namespace quillmere
