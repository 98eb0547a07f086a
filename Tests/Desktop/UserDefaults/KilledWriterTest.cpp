// Two processes store settings without end while one of them is killed again and again.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <optional>
#include <random>
#include <string>

#include "Desktop/UserDefaults/DesktopUserDefaults.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t slots = 7;

std::string slotOf(const std::string& name, std::int64_t value) {
    return name + std::to_string(value % slots);
}

/// A process of its own that stores rising numbers under keys by turns, reads the latest back, and
/// tells each number once it counts as stored.
class Writer {
public:
    Writer(const fs::path& folder, const std::string& name, std::int64_t first) {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0) ADD_FAILURE() << "no pipe";
        process_ = fork();
        if (process_ == 0) {
            close(ends[0]);
            write(folder, name, first, ends[1]);
        }
        close(ends[1]);
        told_ = ends[0];
    }
    ~Writer() {
        if (process_ > 0) kill();
        close(told_);
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// The next number that was stored; waits for it. Nothing after the end of the process.
    std::optional<std::int64_t> next() const {
        std::int64_t value = 0;
        if (read(told_, &value, sizeof value) != sizeof value) return std::nullopt;
        return value;
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
    [[noreturn]] static void write(const fs::path& folder, const std::string& name,
                                   std::int64_t first, int told) {
        CallLog log;
        FakeConsole console(log);
        DesktopUserDefaults settings(folder, console);
        for (std::int64_t value = first;; ++value) {
            settings.setInteger(value, slotOf(name, value));
            for (const std::string& line : log.lines()) std::fprintf(stderr, "%s\n", line.c_str());
            for (std::int64_t old = std::max(first, value - slots + 1); old <= value; ++old) {
                if (settings.integerForKey(slotOf(name, old)) != old) _exit(1);
            }
            if (!settings.isStored() || !log.lines().empty()) _exit(1);
            if (::write(told, &value, sizeof value) != sizeof value) _exit(1);
        }
    }

    pid_t process_ = -1;
    int told_ = -1;
};

class KilledWriter : public testing::Test {
protected:
    void note(const std::string& name, std::int64_t value) { stored[slotOf(name, value)] = value; }

    /// Opens the store anew, and looks for all that was told to be in it.
    void expectEverythingStored() {
        DesktopUserDefaults settings(folder.path(), console);
        for (const auto& [slot, value] : stored) {
            EXPECT_GE(settings.integerForKey(slot), value) << slot;
        }
        EXPECT_TRUE(log.lines().empty()) << log.lines().front();
        for (const std::string& name : folder.names()) {
            EXPECT_EQ(name.find("damaged"), std::string::npos);
        }
    }

    TemporaryFolder folder;
    CallLog log;
    FakeConsole console{log};
    std::map<std::string, std::int64_t> stored;
};

TEST_F(KilledWriter, LosesNothingThatWasStoredAndHoldsNobodyUp) {
    constexpr int kills = 20;
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> numbers(0, 4);

    Writer steady(folder.path(), "steady", 0);
    std::int64_t first = 0;
    for (int round = 0; round < kills; ++round) {
        Writer killed(folder.path(), "killed", first);
        // None: it is killed while it opens the store. The numbers come one by one, so that the
        // signal meets the writer anywhere on its way to a later one.
        for (int left = numbers(random); left > 0; --left) {
            const auto value = killed.next();
            ASSERT_TRUE(value) << "the writer gave up";
            note("killed", *value);
        }
        ASSERT_TRUE(killed.kill());
        while (const auto value = killed.next()) note("killed", *value);

        do {
            const auto value = steady.next();
            ASSERT_TRUE(value) << "the other writer gave up";
            note("steady", *value);
        } while (steady.hasNext());
        expectEverythingStored();
        first += 1000;
    }
    ASSERT_TRUE(steady.kill());
    while (const auto value = steady.next()) note("steady", *value);
    expectEverythingStored();
    EXPECT_GE(stored.size(), static_cast<std::size_t>(slots));
}

}  // namespace
}  // namespace quillmere
