#include "Tests/CommandLine/Program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

constexpr uid_t nobody = 65534;

/// The two ends of what a program writes; not open where there is none to be had.
struct Channel {
    int reading = -1;
    int writing = -1;
};

Channel makeChannel(bool terminal) {
    Channel channel;
    if (terminal) {
        if (openpty(&channel.reading, &channel.writing, nullptr, nullptr, nullptr) != 0) {
            ADD_FAILURE() << "no terminal";
            return {};
        }
    } else {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0) {
            ADD_FAILURE() << "no pipe";
            return {};
        }
        channel = {ends[0], ends[1]};
    }
    fcntl(channel.reading, F_SETFD, FD_CLOEXEC);
    return channel;
}

[[noreturn]] void become(std::vector<std::string> arguments, const std::filesystem::path& folder,
                         const ProgramOptions& options, const std::filesystem::path& home, int out,
                         int err) {
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    if (chdir(folder.c_str()) != 0) _exit(126);
    setenv("HOME", home.c_str(), 1);
    setenv("QUILLMERE_LANGUAGE", "en", 1);
    for (const char* name :
         {"XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"}) {
        unsetenv(name);
    }
    for (const auto& [name, value] : options.environment) setenv(name.c_str(), value.c_str(), 1);
    if (options.unprivileged && getuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0)) {
        _exit(126);
    }
    const std::string program = options.program.empty() ? QUILLMERE_CLI : options.program.string();
    arguments.insert(arguments.begin(), program);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
}

/// False at the end. A terminal whose program has gone answers with an error.
bool readMore(int from, std::string& into) {
    std::array<char, 4096> bytes{};
    const ssize_t count = read(from, bytes.data(), bytes.size());
    if (count <= 0) return false;
    into.append(bytes.data(), static_cast<std::size_t>(count));
    return true;
}

}  // namespace

ProgramResult runProgram(const std::vector<std::string>& arguments,
                         const std::filesystem::path& folder, const ProgramOptions& options) {
    const TemporaryFolder home;
    chmod(home.path().c_str(), 0777);  // an unprivileged program may use it too
    const Channel out = makeChannel(false);
    const Channel err = makeChannel(options.terminal);
    if (out.reading < 0 || err.reading < 0) return {};
    const pid_t process = fork();
    if (process == 0) become(arguments, folder, options, home.path(), out.writing, err.writing);
    close(out.writing);
    close(err.writing);

    ProgramResult result;
    std::array<pollfd, 2> sources{{{out.reading, POLLIN, 0}, {err.reading, POLLIN, 0}}};
    while (sources[0].fd >= 0 || sources[1].fd >= 0) {
        poll(sources.data(), sources.size(), -1);
        if (sources[0].revents != 0 && !readMore(out.reading, result.out)) sources[0].fd = -1;
        if (sources[1].revents != 0) {
            if (!readMore(err.reading, result.err)) sources[1].fd = -1;
            if (options.onError) options.onError(result.err, process);
        }
    }
    close(out.reading);
    close(err.reading);
    int status = 0;
    waitpid(process, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return result;
}

}  // namespace quillmere
