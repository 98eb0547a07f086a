// The thread that keeps the catalogue true while the program runs.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "Base/Result.h"
#include "Desktop/FileManager/FileDescriptor.h"
#include "Desktop/Photos/FolderWatch.h"
#include "Desktop/Photos/LibraryScanner.h"
#include "Platform/Application/Console.h"

namespace quillmere {

/// Runs `prepare` and looks for changed folders when it begins, and then follows what happens in
/// them, where the system tells it. Its end waits for the file that is being read, not for a scan.
/// Any thread.
class LibraryKeeper {
public:
    LibraryKeeper(std::vector<std::filesystem::path> roots, CatalogueFile& catalogue,
                  FileRecordReader read, Console& console, std::function<void()> prepare);
    ~LibraryKeeper();
    LibraryKeeper(const LibraryKeeper&) = delete;
    LibraryKeeper& operator=(const LibraryKeeper&) = delete;

    /// Looks for changed folders again, soon.
    void scanSoon();
    /// Looks at every file, and waits until it has.
    Result<void> scan();

private:
    void run(const std::function<void()>& prepare);
    /// What there is to do, once there is something. Nothing at the end.
    struct Task {
        std::optional<LibraryScanner::Depth> depth;
        FolderWatch::Changes changes;
        std::uint64_t number = 0;
    };
    std::optional<Task> next();
    void finished(const Task& task, const Result<void>& done);
    void wake() const;

    FolderWatch watch_;
    LibraryScanner scanner_;
    Console& console_;
    FileDescriptor woken_;  // an event counter
    std::atomic<bool> stop_ = false;

    std::mutex mutex_;
    std::condition_variable changed_;
    bool wantsScan_ = true;
    std::uint64_t wantedWholeScans_ = 0;
    std::uint64_t doneWholeScans_ = 0;
    Result<void> lastWholeScan_;
    bool complained_ = false;

    std::thread thread_;  // the last, as it uses all of them
};

}  // namespace quillmere
