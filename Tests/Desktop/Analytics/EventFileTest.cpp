#include "Desktop/Analytics/EventFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>

#include "Tests/EventLines.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

mode_t modeOf(const fs::path& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777;
}

class EventFileTest : public testing::Test {
protected:
    EventFile fileOf(std::size_t size) const {
        return {folder / "state", {size, std::chrono::milliseconds(0)}};
    }
    fs::path current() const { return folder / "state" / EventFile::name; }
    fs::path older() const { return folder / "state" / EventFile::olderName; }

    static std::size_t append(EventFile& file, const std::vector<std::string>& lines) {
        return file.append(lines);
    }

    TemporaryFolder folder;
    EventFile file = fileOf(1000);
};

TEST_F(EventFileTest, NobodyElseMayReadWhatIsRecorded) {
    const mode_t mask = umask(0);
    EXPECT_EQ(append(file, {"a\n"}), 1u);
    umask(mask);
    chmod((folder / "state").c_str(), 0755);
    chmod(current().c_str(), 0644);
    EXPECT_EQ(append(file, {"b\n"}), 1u);
    for (const auto& entry : fs::directory_iterator(folder / "state")) {
        EXPECT_EQ(modeOf(entry.path()), 0600u) << entry.path();
    }
    EXPECT_EQ(modeOf(folder / "state"), 0700u);
}

TEST_F(EventFileTest, TheDiskIsNeverFilledAndTheNewestLinesStay) {
    EventFile small = fileOf(100);
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(append(small, {std::to_string(10 + i) + std::string(17, '.') + "\n"}), 1u);
    }
    EXPECT_EQ(fs::file_size(current()), 100u);
    EXPECT_EQ(fs::file_size(older()), 100u);
    EXPECT_THAT(linesOf(current()).back(), testing::StartsWith("59"));
    EXPECT_THAT(linesOf(older()).front(), testing::StartsWith("50"));
}

TEST_F(EventFileTest, ABatchLargerThanAFileIsSpreadOverTwo) {
    EventFile small = fileOf(8);
    EXPECT_EQ(append(small, {"aaa\n", "bbb\n", "ccc\n"}), 3u);
    EXPECT_THAT(linesOf(older()), ElementsAre("aaa", "bbb"));
    EXPECT_THAT(linesOf(current()), ElementsAre("ccc"));
    EXPECT_EQ(append(small, {"larger than a file\n"}), 0u);
}

TEST_F(EventFileTest, AKilledWritersHalfLineSpoilsNoOther) {
    append(file, {"a\n"});
    std::ofstream(current(), std::ios::app) << "hal";
    EXPECT_EQ(append(file, {"b\n"}), 1u);
    EXPECT_THAT(linesOf(current()), ElementsAre("a", "hal", "b"));
}

TEST_F(EventFileTest, AFullDiskLeavesNoHalfLine) {
    append(file, {"a\n"});
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = signal(SIGXFSZ, SIG_IGN);
    const rlimit six{6, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &six);
    const std::size_t written = append(file, {"b\n", "too long\n"});
    setrlimit(RLIMIT_FSIZE, &before);
    signal(SIGXFSZ, handler);
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(append(file, {"c\n"}), 1u);
    EXPECT_THAT(linesOf(current()), ElementsAre("a", "c"));
}

TEST_F(EventFileTest, WhereNothingCanBeWrittenNothingIs) {
    folder.write("file", "");
    EventFile underAFile(folder / "file" / "state", {});
    EXPECT_EQ(append(underAFile, {"a\n"}), 0u);

    fs::create_directories(folder / "state");
    folder.write("another's", "precious\n");
    fs::create_symlink(folder / "another's", current());
    EXPECT_EQ(append(file, {"a\n"}), 0u);
    EXPECT_THAT(linesOf(folder / "another's"), ElementsAre("precious"));

    fs::remove(current());
    ASSERT_EQ(mkfifo(current().c_str(), 0600), 0);
    EXPECT_EQ(append(file, {"a\n"}), 0u);
}

TEST_F(EventFileTest, AStoppedProcessHoldsNobodyUpForGood) {
    append(file, {"a\n"});
    std::FILE* const other = std::fopen((folder / "state" / "events.lock").c_str(), "r");
    ASSERT_NE(other, nullptr);
    ASSERT_EQ(flock(fileno(other), LOCK_EX), 0);
    EXPECT_EQ(append(file, {"b\n"}), 0u);
    std::fclose(other);
    EXPECT_EQ(append(file, {"c\n"}), 1u);
}

/// Forks processes that append `lines` lines each, one at a time; whether all have done.
bool appendFromProcesses(const fs::path& state, std::size_t fileSize, int lines) {
    std::vector<pid_t> processes;
    for (const char letter : {'a', 'b', 'c'}) {
        const pid_t process = fork();
        if (process == 0) {
            EventFile file(state, {fileSize, std::chrono::minutes(1)});
            std::size_t written = 0;
            const std::vector<std::string> line{std::string(99, letter) + "\n"};
            for (int i = 0; i < lines; ++i) written += file.append(line);
            _exit(written == static_cast<std::size_t>(lines) ? 0 : 1);
        }
        processes.push_back(process);
    }
    bool done = true;
    for (const pid_t process : processes) {
        int status = 0;
        done = waitpid(process, &status, 0) == process && status == 0 && done;
    }
    return done;
}

TEST_F(EventFileTest, ProcessesThatWriteAtOnceNeitherMixNorLoseLines) {
    ASSERT_TRUE(appendFromProcesses(folder / "state", 30000, 100));
    EXPECT_EQ(linesOf(current()).size(), 300u);
    EXPECT_FALSE(fs::exists(older()));

    // And while they rotate: the two files stay full, whoever does it.
    ASSERT_TRUE(appendFromProcesses(folder / "state", 1000, 50));
    EXPECT_EQ(linesOf(older()).size(), 10u);
    for (const fs::path& path : {current(), older()}) {
        EXPECT_LE(fs::file_size(path), 1000u);
        for (const std::string& line : linesOf(path)) {
            EXPECT_EQ(line, std::string(99, line.front())) << path;
        }
    }
}

}  // namespace
}  // namespace quillmere
