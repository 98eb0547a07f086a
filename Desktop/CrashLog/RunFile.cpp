#include "Desktop/CrashLog/RunFile.h"

#include <errno.h>  // program_invocation_short_name
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <exception>

#include "Desktop/CrashLog/RunFolder.h"
#include "Desktop/FileManager/UserFolders.h"

namespace quillmere {
namespace {

using Clock = std::chrono::system_clock;

/// Sorts by time, as long as the clock isn't set back.
std::string fileName(Clock::time_point start) {
    const auto microseconds =
        std::chrono::duration_cast<std::chrono::microseconds>(start.time_since_epoch()).count();
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "%020lld-%d", static_cast<long long>(microseconds),
                  getpid());
    return name.data() + std::string(RunFolder::extension);
}

}  // namespace

RunFile::RunFile(const std::optional<std::filesystem::path>& folder) {
    if (!folder || !makePrivateFolder(*folder)) return;
    const RunFolder runs(*folder);
    if (!makePrivateFolder(runs.path())) return;
    runs.removeAllButTheLast(keptRuns);
    const Clock::time_point start = Clock::now();
    file_ = FileDescriptor(open((runs.path() / fileName(start)).c_str(),
                                O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file_.isOpen()) return;
    RunFolder::markAlive(file_);
    write(runStartSlot, {RunRecord::Kind::start, 0, static_cast<std::uint32_t>(getpid()), start,
                         program_invocation_short_name});
}

void RunFile::log(std::string_view line) {
    if (!file_.isOpen()) return;
    try {
        const std::uint64_t number = next_.fetch_add(1, std::memory_order_relaxed);
        write(firstBreadcrumbSlot + number % keptLines,
              {RunRecord::Kind::breadcrumb, number, static_cast<std::uint32_t>(getpid()),
               Clock::now(), std::string(line.substr(0, longestLine + 1))});
    } catch (const std::exception&) {  // too little memory
    }
}

void RunFile::end() {
    if (!file_.isOpen()) return;
    write(runEndSlot, {RunRecord::Kind::end, 0, static_cast<std::uint32_t>(getpid()), Clock::now(),
                       std::string()});
}

// Nothing could be done about a failure.
void RunFile::write(std::size_t slot, const RunRecord& record) const {
    const RunSlot bytes = encodeRunRecord(record);
    (void)!pwrite(file_.number(), bytes.data(), bytes.size(),
                  static_cast<off_t>(slot * runSlotSize));
}

}  // namespace quillmere
