#include "Desktop/CrashLog/RunFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <system_error>

namespace quillmere {
namespace fs = std::filesystem;
namespace {

/// Of the whole file, by open file and not by process, so that a look from within the same process
/// sees it too.
struct flock wholeFile(short kind) {
    struct flock lock {};
    lock.l_type = kind;
    lock.l_whence = SEEK_SET;
    return lock;
}

bool isAlive(const FileDescriptor& file) {
    struct flock lock = wholeFile(F_WRLCK);
    return fcntl(file.number(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

/// Not open for what is no file of ours.
FileDescriptor openRun(const fs::path& path) {
    FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status {};
    const bool regular =
        file.isOpen() && fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
    return regular ? std::move(file) : FileDescriptor();
}

std::optional<RunRecord> recordIn(const FileDescriptor& file, std::size_t slot,
                                  RunRecord::Kind kind) {
    RunSlot bytes{};
    const ssize_t count =
        pread(file.number(), bytes.data(), bytes.size(), static_cast<off_t>(slot * runSlotSize));
    if (count != static_cast<ssize_t>(bytes.size())) return std::nullopt;
    const auto record = decodeRunRecord(bytes);
    return record && record->kind == kind ? record : std::nullopt;
}

PastRun readRun(const fs::path& path, const FileDescriptor& file) {
    PastRun run;
    run.file = path;
    run.start = recordIn(file, runStartSlot, RunRecord::Kind::start);
    run.end = recordIn(file, runEndSlot, RunRecord::Kind::end);
    for (std::size_t slot = firstBreadcrumbSlot; slot < runSlotCount; ++slot) {
        if (auto record = recordIn(file, slot, RunRecord::Kind::breadcrumb)) {
            run.breadcrumbs.push_back(*std::move(record));
        }
    }
    std::sort(run.breadcrumbs.begin(), run.breadcrumbs.end(),
              [](const RunRecord& a, const RunRecord& b) { return a.number < b.number; });
    if (run.end) {
        run.state = PastRun::State::endedInOrder;
    } else if (isAlive(file)) {
        run.state = PastRun::State::running;
    }
    return run;
}

}  // namespace

void RunFolder::markAlive(const FileDescriptor& file) {
    struct flock lock = wholeFile(F_WRLCK);
    fcntl(file.number(), F_OFD_SETLK, &lock);
}

std::vector<fs::path> RunFolder::files() const {
    std::vector<fs::path> found;
    std::error_code failed;
    for (auto entry = fs::directory_iterator(path_, failed);
         !failed && entry != fs::directory_iterator(); entry.increment(failed)) {
        if (entry->path().extension() == extension) found.push_back(entry->path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<PastRun> RunFolder::runs() const {
    std::vector<PastRun> runs;
    for (const fs::path& path : files()) {
        const FileDescriptor file = openRun(path);
        if (file.isOpen()) runs.push_back(readRun(path, file));
    }
    return runs;
}

void RunFolder::removeAllButTheLast(std::size_t count) const {
    std::vector<fs::path> ended;
    for (const fs::path& path : files()) {
        const FileDescriptor file = openRun(path);
        if (file.isOpen() && !isAlive(file)) ended.push_back(path);
    }
    for (std::size_t i = 0; i + count < ended.size(); ++i) unlink(ended[i].c_str());
}

}  // namespace quillmere
