// What every implementation of `CrashLog` owes its callers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <thread>

#include "Desktop/CrashLog/RunFile.h"
#include "Desktop/CrashLog/RunFolder.h"
#include "Tests/Fakes/FakeCrashLog.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

class CrashLogContract : public testing::TestWithParam<bool> {
protected:
    CrashLogContract() {
        if (GetParam()) desktop = std::make_unique<RunFile>(folder.path());
    }

    CrashLog& crashLog() { return desktop ? static_cast<CrashLog&>(*desktop) : fake; }

    /// As another process sees it at this moment.
    std::vector<std::string> lines() const {
        if (!desktop) return fake.lines();
        std::vector<std::string> found;
        for (const PastRun& run : RunFolder(folder.path()).runs()) {
            for (const RunRecord& breadcrumb : run.breadcrumbs) found.push_back(breadcrumb.text);
        }
        return found;
    }

    TemporaryFolder folder;
    FakeCrashLog fake;
    std::unique_ptr<RunFile> desktop;
};

INSTANTIATE_TEST_SUITE_P(Both, CrashLogContract, testing::Values(false, true),
                         [](const auto& desktop) { return desktop.param ? "Desktop" : "Fake"; });

TEST_P(CrashLogContract, ALineIsThereAsSoonAsItIsLogged) {
    crashLog().log("tryFinish A");
    EXPECT_EQ(lines(), (std::vector<std::string>{"tryFinish A"}));
    crashLog().log("");
    crashLog().log("tryFinish B");
    EXPECT_EQ(lines(), (std::vector<std::string>{"tryFinish A", "", "tryFinish B"}));
}

TEST_P(CrashLogContract, ALineStaysOneShortLine) {
    const std::string full(CrashLog::longestLine, 'x');
    const std::string before(CrashLog::longestLine - 2, 'x');
    const std::pair<std::string, std::string> cases[] = {
        {full, full},
        {full + "y", full},
        {std::string(100000, 'x'), full},
        {before + "é", before + "é"},
        {before + "漢", before},  // three bytes, of which two would fit
        {"two\nlines\x1B[2J\x7F", "two lines [2J "},
        {std::string("nul\0nul", 7), "nul nul"},
    };
    for (const auto& [line, kept] : cases) {
        crashLog().log(line);
        EXPECT_EQ(lines().back(), kept);
    }
}

TEST_P(CrashLogContract, TheLastLinesOfALongRunAreKept) {
    for (int i = 0; i < 1000; ++i) crashLog().log(std::to_string(i));
    const auto kept = lines();
    ASSERT_GE(kept.size(), CrashLog::keptLines);
    for (std::size_t i = 0; i < kept.size(); ++i) {
        EXPECT_EQ(kept[i], std::to_string(1000 - kept.size() + i));
    }
}

TEST_P(CrashLogContract, LinesOfSeveralThreadsAreNotMixed) {
    constexpr int threads = 4;
    constexpr int each = CrashLog::keptLines / threads;
    std::multiset<std::string> sent;
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread) {
        const std::string line(CrashLog::longestLine, static_cast<char>('a' + thread));
        for (int i = 0; i < each; ++i) sent.insert(line);
        running.emplace_back([this, line] {
            for (int i = 0; i < each; ++i) crashLog().log(line);
        });
    }
    for (std::thread& thread : running) thread.join();
    const auto kept = lines();
    EXPECT_EQ(std::multiset<std::string>(kept.begin(), kept.end()), sent);
}

}  // namespace
}  // namespace quillmere
