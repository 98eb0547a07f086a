#include "Desktop/Photos/NewFile.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <system_error>
#include <vector>

#include "Desktop/FileManager/FileDescriptor.h"

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr const char* stem = "Quillmere";
constexpr unsigned newFileMode = 0666;
constexpr std::size_t copiedAtOnce = std::size_t{1} << 30;
constexpr std::size_t bufferSize = std::size_t{1} << 20;

std::string wallClock() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H.%M.%S", &local);
    return text.data();
}

/// By the program's own hands, where the kernel can't between these two file systems.
int copyBytes(int source, PendingFile& target) {
    std::vector<std::byte> buffer(bufferSize);
    for (;;) {
        const ssize_t count = read(source, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno;
        if (count == 0) return 0;
        const int failed = target.write({buffer.data(), static_cast<std::size_t>(count)});
        if (failed != 0) return failed;
    }
}

}  // namespace

fs::path freeName(const fs::path& folder, std::string_view ending,
                  const std::set<fs::path>& others) {
    const std::string name = std::string(stem) + " " + wallClock();
    for (int number = 1;; ++number) {
        fs::path path = folder / (name + (number > 1 ? " " + std::to_string(number) : ""));
        path += ending;
        struct stat status {};
        if (!others.contains(path) && lstat(path.c_str(), &status) != 0) return path;
    }
}

int makeFolders(const fs::path& folder) {
    std::error_code ignored;
    if (fs::is_directory(folder, ignored)) return 0;
    const fs::path parent = folder.parent_path();
    if (const int failed = parent == folder ? ENOENT : makeFolders(parent); failed != 0) {
        return failed;
    }
    if (mkdir(folder.c_str(), 0777) != 0) {
        if (errno != EEXIST) return errno;
        // Another process may have made it meanwhile.
        return fs::is_directory(folder, ignored) ? 0 : ENOTDIR;
    }
    const FileDescriptor flushed(open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (flushed.isOpen()) fsync(flushed.number());
    return 0;
}

void removeLeftovers(const fs::path& folder) {
    std::error_code failed;
    for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        const std::string name = entry->path().filename().string();
        if (!name.starts_with("." + std::string(stem) + " ") || !name.ends_with(".part")) continue;
        const FileDescriptor file(
            open(entry->path().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        // Its writer holds a lock for as long as it lives.
        if (file.isOpen() && flock(file.number(), LOCK_EX | LOCK_NB) == 0) {
            unlink(entry->path().c_str());
        }
    }
}

int NewFile::writeBytes(std::span<const std::byte> bytes) {
    const int failed = file_.open(newFileMode);
    return failed != 0 ? failed : file_.write(bytes);
}

int NewFile::copyOf(const fs::path& source) {
    const FileDescriptor opened(open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!opened.isOpen() || fstat(opened.number(), &status) != 0) return errno;
    if (!S_ISREG(status.st_mode)) return EINVAL;
    if (const int failed = file_.open(newFileMode); failed != 0) return failed;
    if (ioctl(file_.descriptor(), FICLONE, opened.number()) == 0) return 0;
    for (;;) {
        const ssize_t count =
            copy_file_range(opened.number(), nullptr, file_.descriptor(), nullptr, copiedAtOnce, 0);
        if (count == 0) break;
        if (count > 0 || errno == EINTR) continue;
        if (errno == ENOSPC || errno == EDQUOT || errno == EIO || errno == EFBIG) return errno;
        break;  // the kernel can't; both files stand where it left them
    }
    return copyBytes(opened.number(), file_);
}

int NewFile::complete(std::optional<Date> modificationDate) {
    if (modificationDate) {
        using namespace std::chrono;
        const auto sinceEpoch = modificationDate->time_since_epoch();
        const auto whole = floor<seconds>(sinceEpoch);
        const timespec time{whole.count(), duration_cast<nanoseconds>(sinceEpoch - whole).count()};
        const std::array<timespec, 2> times{{{0, UTIME_OMIT}, time}};
        // A file system that can't hold that time keeps its own; the catalogue knows the date.
        (void)futimens(file_.descriptor(), times.data());
    }
    if (const int failed = file_.flush(); failed != 0) return failed;
    struct stat status {};
    if (fstat(file_.descriptor(), &status) != 0) return errno;
    stamp_ = stampOf(status);
    return 0;
}

fs::path NewFile::pathOfContents() const {
    return "/proc/self/fd/" + std::to_string(file_.descriptor());
}

}  // namespace quillmere
