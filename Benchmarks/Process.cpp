#include "Benchmarks/Process.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <sstream>

namespace quillmere::benchmark {
namespace {

constexpr int kNotStarted = 127;

/// A new process that becomes `command`, its standard output being `output`; -1 where there can be
/// none.
pid_t start(std::vector<std::string> command, int output) {
    std::vector<char*> arguments;
    for (std::string& argument : command) arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    std::fflush(nullptr);
    const pid_t process = fork();
    if (process != 0) return process;
    std::signal(SIGINT, SIG_DFL);  // the outermost process ignores it: see main()
    dup2(output, STDOUT_FILENO);
    execv(arguments.front(), arguments.data());
    _exit(kNotStarted);
}

int exitCodeOf(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status); }

std::string readAll(int from) {
    std::string text;
    std::array<char, 4096> bytes{};
    for (ssize_t count = 0; (count = read(from, bytes.data(), bytes.size())) > 0;) {
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return text;
}

}  // namespace

std::string thisProgram() {
    std::error_code failed;
    return std::filesystem::read_symlink("/proc/self/exe", failed);
}

Outcome runProgram(const std::vector<std::string>& command, bool capture) {
    std::array<int, 2> ends{-1, STDOUT_FILENO};
    if (capture && pipe2(ends.data(), O_CLOEXEC) != 0) return {};
    Outcome outcome;
    const pid_t process = start(command, ends[1]);
    if (capture) {
        close(ends[1]);
        outcome.output = readAll(ends[0]);
        close(ends[0]);
    }
    int status = 0;
    if (process > 0 && waitpid(process, &status, 0) == process) {
        outcome.exitCode = exitCodeOf(status);
    }
    return outcome;
}

ProgramCost measureProgram(const std::vector<std::string>& command) {
    std::vector<std::string> launcher{thisProgram(), kLauncherMode};
    launcher.insert(launcher.end(), command.begin(), command.end());
    ProgramCost cost{runProgram(launcher, true)};
    // The launcher's line is the last one.
    std::string& output = cost.outcome.output;
    if (!output.empty()) output.pop_back();
    const std::size_t line = output.find_last_of('\n') + 1;
    std::istringstream(output.substr(line)) >> cost.seconds >> cost.peakMiB;
    output.resize(line);
    return cost;
}

int launch(const std::vector<std::string>& command) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point begin = Clock::now();
    int status = 0;
    rusage usage{};
    const pid_t process = start(command, STDOUT_FILENO);
    if (process < 0 || wait4(process, &status, 0, &usage) != process) return kNotStarted;
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    std::printf("%f %f\n", seconds, static_cast<double>(usage.ru_maxrss) / 1024);
    const int exitCode = exitCodeOf(status);
    return exitCode < 0 ? 128 - exitCode : exitCode;
}

}  // namespace quillmere::benchmark
