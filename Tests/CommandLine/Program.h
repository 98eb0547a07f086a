// Running the built command line as a user does.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace quillmere {

struct ProgramResult {
    int exitCode = -1;  // or minus the number of the signal that ended it
    std::string out;
    std::string err;
};

struct ProgramOptions {
    std::map<std::string, std::string> environment;  // added to the test's own
    bool unprivileged = false;                       // as "nobody", where the tests run as root
    std::filesystem::path program;                   // in the place of the built one
    bool terminal = false;                           // standard error is a terminal
    /// Called with what standard error has said so far, each time it says more.
    std::function<void(const std::string& err, pid_t process)> onError;
};

/// Runs `quillmere-cli` with `folder` as its current directory, and waits for its end. It never
/// meets the home of whoever runs the tests: without a HOME or XDG folder in the options'
/// environment, it has an empty one that goes with it.
ProgramResult runProgram(const std::vector<std::string>& arguments,
                         const std::filesystem::path& folder, const ProgramOptions& options = {});

}  // namespace quillmere
