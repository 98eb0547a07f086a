// Programs as a user starts them: in a process of their own, which is waited for.
#pragma once

#include <string>
#include <vector>

namespace quillmere::benchmark {

/// The path of the program that is running.
std::string thisProgram();

struct Outcome {
    int exitCode = -1;  // or minus the number of the signal that ended it
    std::string output;
};

/// Runs `command` (a path and its arguments). What it writes to standard output is kept if
/// `capture` is set, else it goes where ours goes; standard error always does.
Outcome runProgram(const std::vector<std::string>& command, bool capture);

struct ProgramCost {
    Outcome outcome;
    double seconds = 0;  // from the start of the process to its end
    double peakMiB = 0;  // the most memory that was resident
};

/// Runs `command` and measures it.
///
/// The system counts a process's peak from its birth as a copy of its parent, so that a parent
/// which is large itself would be taken for the peak of a small program. That is why a small
/// process of this program, in the mode `kLauncherMode`, stands between the two.
ProgramCost measureProgram(const std::vector<std::string>& command);

inline constexpr const char* kLauncherMode = "--launch";

/// That mode: runs `command` and writes its costs in one line behind its output; the exit code.
int launch(const std::vector<std::string>& command);

}  // namespace quillmere::benchmark
