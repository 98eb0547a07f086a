// A process that a test kills in the middle of its work.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

namespace quillmere {

class KilledProcess {
public:
    /// Hands a number to the test.
    using Tell = std::function<void(std::int64_t)>;

    /// Forks. The new process runs `work`, which gives up where it returns.
    explicit KilledProcess(const std::function<void(const Tell&)>& work) {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0) ADD_FAILURE() << "no pipe";
        process_ = fork();
        if (process_ == 0) {
            close(ends[0]);
            work([&](std::int64_t number) {
                if (write(ends[1], &number, sizeof number) != sizeof number) _exit(1);
            });
            _exit(1);
        }
        close(ends[1]);
        told_ = ends[0];
    }
    ~KilledProcess() {
        if (process_ > 0) kill();
        close(told_);
    }
    KilledProcess(const KilledProcess&) = delete;
    KilledProcess& operator=(const KilledProcess&) = delete;

    /// The next number that was told; waits for it. Nothing after the end of the process.
    std::optional<std::int64_t> next() const {
        std::int64_t number = 0;
        if (read(told_, &number, sizeof number) != sizeof number) return std::nullopt;
        return number;
    }
    bool hasNext() const {
        pollfd source{told_, POLLIN, 0};
        return poll(&source, 1, 0) == 1 && (source.revents & POLLIN) != 0;
    }
    /// Answers whether the process was still at work.
    bool kill() {
        ::kill(process_, SIGKILL);
        int status = 0;
        waitpid(std::exchange(process_, -1), &status, 0);
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }

private:
    pid_t process_ = -1;
    int told_ = -1;
};

}  // namespace quillmere
