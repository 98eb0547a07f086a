// The last runs of the application, as their files tell of them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Desktop/CrashLog/RunRecord.h"
#include "Desktop/FileManager/FileDescriptor.h"

namespace quillmere {

struct PastRun {
    enum class State { running, endedInOrder, broken };

    std::filesystem::path file;
    State state = State::broken;         // broken: it crashed, was killed, or the power failed
    std::optional<RunRecord> start;      // nothing where it can't be read
    std::optional<RunRecord> end;        // there if it ended in order
    std::vector<RunRecord> breadcrumbs;  // from the oldest
};

/// Reads what is whole, and skips what is torn. Any process may look, at any time.
class RunFolder {
public:
    static constexpr const char* extension = ".run";

    /// `state` is the application's folder for state; it need not exist.
    explicit RunFolder(const std::filesystem::path& state) : path_(state / "runs") {}

    const std::filesystem::path& path() const { return path_; }

    /// From the oldest.
    std::vector<PastRun> runs() const;

    /// Removes files of ended runs, the oldest first, until `count` are left.
    void removeAllButTheLast(std::size_t count) const;

    /// From now on and until its end, the file's process counts as running.
    static void markAlive(const FileDescriptor& file);

private:
    std::vector<std::filesystem::path> files() const;

    std::filesystem::path path_;
};

}  // namespace quillmere
