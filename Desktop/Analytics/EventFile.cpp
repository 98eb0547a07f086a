#include "Desktop/Analytics/EventFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <string_view>
#include <thread>

#include "Desktop/FileManager/UserFolders.h"

namespace quillmere {
namespace {

constexpr const char* lockName = "events.lock";
constexpr mode_t onlyTheUser = 0600;
constexpr std::chrono::milliseconds retryInterval{20};

/// In bytes; nothing where the file does not tell.
std::optional<std::size_t> sizeOf(const FileDescriptor& file) {
    struct stat status {};
    if (fstat(file.number(), &status) != 0) return std::nullopt;
    return static_cast<std::size_t>(status.st_size);
}

/// A process that died while it wrote leaves a line without its end.
bool endsInsideALine(const FileDescriptor& file, std::size_t size) {
    char last = '\n';
    if (size == 0) return false;
    return pread(file.number(), &last, 1, static_cast<off_t>(size - 1)) == 1 && last != '\n';
}

bool writeAll(const FileDescriptor& file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file.number(), text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

FileDescriptor EventFile::open(const char* file) const {
    // Nothing but a file of ours: a link could lead to another's, a pipe would never end.
    FileDescriptor opened(::open((folder_ / file).c_str(),
                                 O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                                 onlyTheUser));
    struct stat status {};
    if (!opened.isOpen() || fstat(opened.number(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return FileDescriptor();
    }
    const bool isPrivate = (status.st_mode & 07777) == onlyTheUser;
    if (!isPrivate && fchmod(opened.number(), onlyTheUser) != 0) return FileDescriptor();
    return opened;
}

FileDescriptor EventFile::lock() const {
    FileDescriptor file = open(lockName);
    const auto deadline = std::chrono::steady_clock::now() + limits_.patience;
    while (file.isOpen() && flock(file.number(), LOCK_EX | LOCK_NB) != 0) {
        // Never for good: the other one may be a stopped process.
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline) {
            return FileDescriptor();
        }
        std::this_thread::sleep_for(retryInterval);
    }
    return file;
}

bool EventFile::rotate() const {
    return std::rename((folder_ / name).c_str(), (folder_ / olderName).c_str()) == 0;
}

bool EventFile::write(const std::string& text, std::size_t before,
                      const FileDescriptor& file) const {
    if (writeAll(file, text)) return true;
    // A full disk takes the half of a text; no line stays torn.
    (void)!ftruncate(file.number(), static_cast<off_t>(before));
    return false;
}

std::size_t EventFile::append(std::span<const std::string> lines) {
    if (!makePrivateFolder(folder_)) return 0;
    const FileDescriptor locked = lock();
    if (!locked.isOpen()) return 0;

    std::size_t written = 0;
    while (written < lines.size()) {
        const FileDescriptor file = open(name);
        const auto size = file.isOpen() ? sizeOf(file) : std::nullopt;
        if (!size) break;
        std::string text = endsInsideALine(file, *size) ? "\n" : "";
        std::size_t end = written;
        while (end < lines.size() && *size + text.size() + lines[end].size() <= limits_.fileSize) {
            text += lines[end++];
        }
        if (end > written) {
            if (!write(text, *size, file)) break;
            written = end;
        } else if (*size == 0 || !rotate()) {
            break;
        }
    }
    return written;
}

}  // namespace quillmere
