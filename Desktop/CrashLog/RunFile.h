// The crash log of one process: its start, its last breadcrumbs and its orderly end, in one file.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "Desktop/CrashLog/RunRecord.h"
#include "Desktop/FileManager/FileDescriptor.h"
#include "Platform/CrashLog/CrashLog.h"

namespace quillmere {

/// Every line is one write of one slot, so that the system has it when `log` returns, and needs
/// neither a lock nor memory that a full disk could take away. The file has a fixed size and mode
/// 0600. While its process lives it is locked; files of the oldest runs are removed at the start.
class RunFile final : public CrashLog {
public:
    /// So many files of runs that have ended stay, besides the own one.
    static constexpr std::size_t keptRuns = 10;

    /// `folder` is the application's for state; runs lie in `runs/` there. Without one, or where it
    /// refuses writing, nothing is kept.
    explicit RunFile(const std::optional<std::filesystem::path>& folder);
    /// An orderly end.
    ~RunFile() override { end(); }

    void log(std::string_view line) override;

    /// Records that this run ended in order; also for a process that does not destroy this object.
    void end();

private:
    void write(std::size_t slot, const RunRecord& record) const;

    FileDescriptor file_;
    std::atomic<std::uint64_t> next_ = 0;
};

}  // namespace quillmere
