#include "Desktop/CrashLog/RunFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "Desktop/CrashLog/RunFile.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using State = PastRun::State;
using Lines = std::vector<std::string>;

Lines linesOf(const PastRun& run) {
    Lines lines;
    for (const RunRecord& breadcrumb : run.breadcrumbs) lines.push_back(breadcrumb.text);
    return lines;
}

class RunFolderTest : public testing::Test {
protected:
    std::vector<PastRun> runs() const { return RunFolder(folder.path()).runs(); }

    /// In a process of its own, which ends without destroying anything.
    void runProcess(const std::function<void(RunFile&)>& work) const {
        const pid_t process = fork();
        if (process == 0) {
            auto* const run = new RunFile(folder.path());
            work(*run);
            _exit(0);
        }
        waitpid(process, nullptr, 0);
    }

    /// Puts `bytes` at `offset` into the file of the only run.
    void damage(std::streamoff offset, const std::string& bytes) const {
        std::fstream file(runs().at(0).file, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(offset).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    TemporaryFolder folder;
};

TEST_F(RunFolderTest, ABreadcrumbSurvivesAnyEndOfItsProcess) {
    const std::function<void()> ends[] = {[] { raise(SIGKILL); }, [] { _exit(0); },
                                          [] {
                                              signal(SIGABRT, SIG_DFL);
                                              abort();
                                          }};
    for (const auto& end : ends) {
        TemporaryFolder another;
        const pid_t process = fork();
        if (process == 0) {
            auto* const run = new RunFile(another.path());
            run->log("tryFinish A");
            end();
        }
        waitpid(process, nullptr, 0);
        const auto left = RunFolder(another.path()).runs();
        ASSERT_EQ(left.size(), 1u);
        EXPECT_EQ(left[0].state, State::broken);
        EXPECT_EQ(left[0].start->process, static_cast<std::uint32_t>(process));
        EXPECT_EQ(linesOf(left[0]), Lines{"tryFinish A"});
    }
}

TEST_F(RunFolderTest, AnOrderlyEndIsToldFromACrashAndFromALivingRun) {
    runProcess([](RunFile& run) { run.log("crashed"); });
    runProcess([](RunFile& run) { run.end(); });
    const RunFile alive(folder.path());
    const auto left = runs();
    ASSERT_EQ(left.size(), 3u);
    EXPECT_EQ(left[0].state, State::broken);
    EXPECT_EQ(left[1].state, State::endedInOrder);
    EXPECT_GE(left[1].end->time, left[1].start->time);
    EXPECT_EQ(left[2].state, State::running);
}

TEST_F(RunFolderTest, OnlyTheLastRunsAreKeptAndNoLivingOneIsRemoved) {
    RunFile alive(folder.path());
    alive.log("alive");
    for (int i = 0; i < 30; ++i) {
        runProcess([i](RunFile& run) { run.log(std::to_string(i)); });
    }
    const auto left = runs();
    ASSERT_EQ(left.size(), 1 + RunFile::keptRuns + 1);
    EXPECT_EQ(linesOf(left.front()), Lines{"alive"});
    EXPECT_EQ(linesOf(left[1]), Lines{"19"});
    EXPECT_EQ(linesOf(left.back()), Lines{"29"});
    for (const PastRun& run : left) {
        EXPECT_LE(fs::file_size(run.file), runSlotCount * runSlotSize);
        struct stat status {};
        ASSERT_EQ(stat(run.file.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600u);
    }
}

TEST_F(RunFolderTest, ATornRecordHidesNoOther) {
    for (std::size_t torn = 0; torn < runSlotSize; ++torn) {
        TemporaryFolder another;
        {
            RunFile run(another.path());
            for (const char* line : {"a", "b", "c"}) run.log(line);
        }
        const fs::path file = RunFolder(another.path()).runs().at(0).file;
        std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
        const auto at = static_cast<std::streamoff>((firstBreadcrumbSlot + 1) * runSlotSize + torn);
        bytes.seekg(at);
        const char flipped = static_cast<char>(bytes.get() ^ 0x10);
        bytes.seekp(at).put(flipped).flush();
        const auto left = RunFolder(another.path()).runs();
        EXPECT_EQ(linesOf(left.at(0)), (Lines{"a", "c"})) << "byte " << torn;
    }
}

TEST_F(RunFolderTest, AFileOfAnyLengthCanBeRead) {
    {
        RunFile run(folder.path());
        for (std::size_t i = 0; i < CrashLog::keptLines; ++i) run.log("x");
    }
    const fs::path file = runs().at(0).file;
    fs::resize_file(file, 1000000);
    EXPECT_EQ(runs().at(0).breadcrumbs.size(), CrashLog::keptLines);
    for (const std::size_t size :
         {std::size_t{1300}, runSlotSize + 1, std::size_t{1}, std::size_t{0}}) {
        fs::resize_file(file, size);
        const auto left = runs();
        ASSERT_EQ(left.size(), 1u);
        EXPECT_EQ(left[0].start.has_value(), size > runSlotSize);
        EXPECT_EQ(left[0].breadcrumbs.size(),
                  size / runSlotSize < firstBreadcrumbSlot ? 0 : size / runSlotSize - 2);
    }
}

TEST_F(RunFolderTest, WhatIsNoRunIsLeftAlone) {
    { const RunFile run(folder.path()); }
    damage(0, std::string(runSlotSize, 'x'));
    fs::create_directory(folder / "runs" / "folder.run");
    fs::create_symlink("/dev/zero", folder / "runs" / "link.run");
    ASSERT_EQ(mkfifo((folder / "runs" / "pipe.run").c_str(), 0600), 0);
    const auto left = runs();
    ASSERT_EQ(left.size(), 1u);
    EXPECT_FALSE(left[0].start);
    RunFolder(folder.path()).removeAllButTheLast(0);
    EXPECT_TRUE(runs().empty());
    EXPECT_TRUE(fs::exists(folder / "runs" / "folder.run"));
}

TEST_F(RunFolderTest, ARunThatCannotBeRecordedGoesOn) {
    folder.write("file", "");
    for (const std::optional<fs::path>& nowhere :
         {std::optional<fs::path>(), std::optional<fs::path>(folder / "file" / "state")}) {
        RunFile run(nowhere);
        run.log("nobody hears it");
        run.end();
    }
    EXPECT_TRUE(runs().empty());
}

}  // namespace
}  // namespace quillmere
