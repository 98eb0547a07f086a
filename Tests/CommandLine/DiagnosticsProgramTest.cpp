#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "Desktop/CrashLog/RunFile.h"
#include "Tests/CommandLine/EnhanceProgram.h"

namespace quillmere {
namespace {

using testing::HasSubstr;
using testing::Not;

class DiagnosticsProgram : public EnhanceProgram {
protected:
    std::filesystem::path state() const { return folder / "state" / "quillmere"; }
    ProgramOptions kept() const {
        ProgramOptions options;
        options.environment["XDG_STATE_HOME"] = folder / "state";
        return options;
    }
    ProgramResult diagnostics(std::vector<std::string> arguments = {}) const {
        arguments.insert(arguments.begin(), "diagnostics");
        return runProgram(arguments, folder.path(), kept());
    }
};

TEST_F(DiagnosticsProgram, BeforeAnyRunThereIsNothingToShowAndNothingIsMade) {
    const auto result = diagnostics();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.out, HasSubstr((state() / "events.jsonl").string() + " (none"));
    EXPECT_THAT(result.out, HasSubstr("No run has been recorded."));
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(DiagnosticsProgram, ARunIsShownWithItsStepsButNotWithNamesOfFiles) {
    writePicture("private.png", {2, 2});
    ASSERT_EQ(enhance({"private.png", "--style", "original"}, kept()).exitCode, 0);
    const auto text = diagnostics();
    EXPECT_THAT(text.out, HasSubstr("quillmere-cli, process "));
    EXPECT_THAT(text.out, HasSubstr("ended in order"));
    EXPECT_THAT(text.out, HasSubstr("enhance original, input 1 of 1"));
    EXPECT_THAT(text.out, Not(HasSubstr("private")));

    const auto objects = objectsOf(diagnostics({"--json"}).out);
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_EQ(objects[0]["events"], (state() / "events.jsonl").string());
    EXPECT_EQ(objects[1]["state"], "endedInOrder");
    EXPECT_EQ(objects[1]["program"], "quillmere-cli");
    EXPECT_EQ(objects[1]["breadcrumbs"].size(), 1u);
}

TEST_F(DiagnosticsProgram, AKilledRunIsNotTakenForAnOrderlyOne) {
    writePicture("a.png", {2, 2});
    ProgramOptions killed = kept();
    killed.environment["LD_PRELOAD"] = QUILLMERE_FILE_FAULTS;
    killed.environment["QUILLMERE_FAULT"] = "linkat:1:KILL";
    enhance({"a.png", "--style", "original", "-o", "out.jpg"}, killed);
    EXPECT_THAT(diagnostics().out, HasSubstr("did not end in order"));
    EXPECT_EQ(objectsOf(diagnostics({"--json"}).out).at(1)["state"], "broken");
}

TEST_F(DiagnosticsProgram, AnInterruptedRunIsNotTakenForABrokenOne) {
    writePicture("large.png", {300, 300});
    ProgramOptions interrupted = kept();
    interrupted.terminal = true;
    bool sent = false;
    interrupted.onError = [&](const std::string& err, pid_t process) {
        if (sent || err.find(" 0 %") == std::string::npos) return;
        kill(process, SIGTERM);
        sent = true;
    };
    ASSERT_EQ(enhance({"large.png", "--style", "godHigh"}, interrupted).exitCode, 130);
    EXPECT_EQ(objectsOf(diagnostics({"--json"}).out).at(1)["state"], "endedInOrder");
}

TEST_F(DiagnosticsProgram, AUserWithoutAHomeIsToldWhatToSet) {
    ProgramOptions homeless;
    homeless.environment["HOME"] = "";
    const auto result = runProgram({"diagnostics"}, folder.path(), homeless);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("set HOME or XDG_STATE_HOME"));
    writePicture("a.png", {2, 2});
    EXPECT_EQ(enhance({"a.png", "--style", "original"}, homeless).exitCode, 0);
}

}  // namespace
}  // namespace quillmere
