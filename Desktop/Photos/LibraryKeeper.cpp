#include "Desktop/Photos/LibraryKeeper.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>

#include <array>
#include <utility>

namespace quillmere {
namespace {

// Nobody waits for the scan: what a user waits for comes first.
constexpr int lowPriority = 10;

}  // namespace

LibraryKeeper::LibraryKeeper(std::vector<std::filesystem::path> roots, CatalogueFile& catalogue,
                             FileRecordReader read, Console& console, std::function<void()> prepare)
    : scanner_(std::move(roots), catalogue, std::move(read), watch_),
      console_(console),
      woken_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)),
      thread_([this, prepare = std::move(prepare)] { run(prepare); }) {}

LibraryKeeper::~LibraryKeeper() {
    stop_ = true;
    wake();
    thread_.join();
}

void LibraryKeeper::scanSoon() {
    {
        const std::lock_guard lock(mutex_);
        wantsScan_ = true;
    }
    wake();
}

Result<void> LibraryKeeper::scan() {
    std::unique_lock lock(mutex_);
    const std::uint64_t number = ++wantedWholeScans_;
    wake();
    changed_.wait(lock, [&] { return doneWholeScans_ >= number; });
    return lastWholeScan_;
}

void LibraryKeeper::wake() const {
    const std::uint64_t one = 1;
    // A counter that is full wakes as well.
    (void)!write(woken_.number(), &one, sizeof one);
}

void LibraryKeeper::run(const std::function<void()>& prepare) {
    // On Linux, the priority of this thread alone.
    setpriority(PRIO_PROCESS, 0, lowPriority);
    prepare();
    while (const auto task = next()) {
        const auto done = task->depth ? scanner_.scan(*task->depth, stop_)
                                      : scanner_.look(task->changes.paths, stop_);
        finished(*task, done);
    }
}

std::optional<LibraryKeeper::Task> LibraryKeeper::next() {
    while (!stop_) {
        Task task;
        {
            const std::lock_guard lock(mutex_);
            if (wantedWholeScans_ > doneWholeScans_) {
                task.depth = LibraryScanner::Depth::everyFile;
            } else if (wantsScan_) {
                task.depth = LibraryScanner::Depth::changedFolders;
            }
            if (task.depth) wantsScan_ = false;
            task.number = wantedWholeScans_;
        }
        if (task.depth) return task;
        task.changes = watch_.read();
        if (task.changes.isIncomplete) {
            const std::lock_guard lock(mutex_);
            ++wantedWholeScans_;
            continue;
        }
        if (!task.changes.paths.empty()) return task;

        std::array<pollfd, 2> sources{
            {{woken_.number(), POLLIN, 0}, {watch_.descriptor(), POLLIN, 0}}};
        poll(sources.data(), sources.size(), -1);
        std::uint64_t count = 0;
        (void)!read(woken_.number(), &count, sizeof count);
    }
    return std::nullopt;
}

void LibraryKeeper::finished(const Task& task, const Result<void>& done) {
    const std::lock_guard lock(mutex_);
    if (!done && !std::exchange(complained_, true)) {
        console_.report(
            {done.error(), Error{done.error().domain, done.error().code,
                                 "New pictures may be missing from the photo library."}});
    }
    if (task.depth != LibraryScanner::Depth::everyFile) return;
    doneWholeScans_ = task.number;
    lastWholeScan_ = done;
    changed_.notify_all();
}

}  // namespace quillmere
