#include "Desktop/FileManager/PendingFile.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <string_view>
#include <system_error>

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view hiddenSuffix = ".part";
constexpr std::size_t randomLetters = 6;
constexpr std::size_t longestName = 255;
constexpr int attempts = 100;

int errnoOf(int result) { return result < 0 ? errno : 0; }

// Not in every C library, but in the kernel since 3.15.
int renameWithoutReplacing(const fs::path& from, const fs::path& to) {
    return static_cast<int>(
        syscall(SYS_renameat2, AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE));
}

}  // namespace

PendingFile::~PendingFile() {
    if (name_) unlink(name_->c_str());
}

int PendingFile::open(unsigned mode) {
    removeAbandoned();
    file_ =
        FileDescriptor(::open(target_.parent_path().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
    if (file_.isOpen()) {
        lock();
        return 0;
    }
    const bool unsupported = errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL ||
                             errno == ENOENT || errno == ENOSYS;
    return unsupported ? openNamed(mode) : errno;
}

int PendingFile::openNamed(unsigned mode) {
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const fs::path name = hiddenName();
        file_ = FileDescriptor(::open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, mode));
        if (!file_.isOpen()) {
            if (errno == EEXIST) continue;
            return errno;
        }
        lock();
        // Another write may have taken it for abandoned before it was locked.
        struct stat status {};
        if (fstat(file_.number(), &status) == 0 && status.st_nlink > 0) {
            name_ = name;
            return 0;
        }
    }
    return EEXIST;
}

// Tells other writes that this one is alive. Where a file system has no locks, nothing is told
// apart, and nobody removes anything.
void PendingFile::lock() const { flock(file_.number(), LOCK_EX); }

int PendingFile::write(std::span<const std::byte> contents) {
    while (!contents.empty()) {
        const ssize_t written = ::write(file_.number(), contents.data(), contents.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        if (written == 0) return EIO;
        contents = contents.subspan(static_cast<std::size_t>(written));
    }
    return 0;
}

int PendingFile::flush() {
    int result = 0;
    do {
        result = fsync(file_.number());
    } while (result < 0 && errno == EINTR);
    return errnoOf(result);
}

int PendingFile::setMode(unsigned mode) { return errnoOf(fchmod(file_.number(), mode)); }

int PendingFile::linkTo(const fs::path& name) {
    const std::string self = "/proc/self/fd/" + std::to_string(file_.number());
    return errnoOf(linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW));
}

int PendingFile::commit() {
    if (!name_) return linkTo(target_);
    int failed = errnoOf(renameWithoutReplacing(*name_, target_));
    if (failed == EINVAL || failed == ENOSYS) {
        // The file system can't promise it in one step; a link can, where there are links.
        failed = errnoOf(link(name_->c_str(), target_.c_str()));
        return failed;  // the hidden name goes with this object
    }
    if (failed == 0) name_.reset();
    return failed;
}

int PendingFile::commitReplacing() {
    for (int attempt = 0; !name_; ++attempt) {
        fs::path name = hiddenName();
        const int failed = linkTo(name);
        if (failed == EEXIST && attempt < attempts) continue;
        if (failed != 0) return failed;
        name_ = std::move(name);
    }
    const int failed = errnoOf(rename(name_->c_str(), target_.c_str()));
    if (failed == 0) name_.reset();
    return failed;
}

// A hidden file of this target whose writer is gone holds no lock any more.
void PendingFile::removeAbandoned() const {
    const std::string prefix = hiddenPrefix();
    std::error_code failed;
    for (auto entry = fs::directory_iterator(target_.parent_path(), failed);
         !failed && entry != fs::directory_iterator(); entry.increment(failed)) {
        const std::string name = entry->path().filename().string();
        const bool ours = name.size() == prefix.size() + randomLetters + hiddenSuffix.size() &&
                          name.starts_with(prefix) && name.ends_with(hiddenSuffix);
        if (!ours) continue;
        const FileDescriptor file(
            ::open(entry->path().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        if (file.isOpen() && flock(file.number(), LOCK_EX | LOCK_NB) == 0) {
            unlink(entry->path().c_str());
        }
    }
}

std::string PendingFile::hiddenPrefix() const {
    const std::size_t room = longestName - randomLetters - hiddenSuffix.size() - 2;
    return "." + target_.filename().string().substr(0, room) + ".";
}

fs::path PendingFile::hiddenName() const {
    static constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::uniform_int_distribution<std::size_t> letter(0, letters.size() - 1);
    std::string name = hiddenPrefix();
    for (std::size_t i = 0; i < randomLetters; ++i) name += letters[letter(random)];
    return target_.parent_path() / (name + std::string(hiddenSuffix));
}

}  // namespace quillmere
