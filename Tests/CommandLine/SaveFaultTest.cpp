// Saving while the disk fills up, or the process dies: the old file or the new one, never a part.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <set>

#include "Desktop/FileManager/DesktopFileManager.h"
#include "Tests/CommandLine/Program.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

enum class TemporaryFiles { unnamed, named };
enum class Target { fresh, replaced };

class SaveFaults : public testing::Test {
protected:
    /// With no fault where the text is empty.
    ProgramResult save(const std::string& fault, TemporaryFiles files, Target target) const {
        ProgramOptions options;
        options.environment["LD_PRELOAD"] = QUILLMERE_FILE_FAULTS;
        // A sanitized program wants its own library first, and lives without that.
        options.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
        if (!fault.empty()) options.environment["QUILLMERE_FAULT"] = fault;
        if (files == TemporaryFiles::named) options.environment["QUILLMERE_NO_TMPFILE"] = "1";
        std::vector<std::string> arguments = {"enhance",  "in.bmp", "--style",
                                              "original", "-o",     "out.png"};
        if (target == Target::replaced) arguments.push_back("--force");
        return runProgram(arguments, folder.path(), options);
    }

    std::string out() const {
        std::ifstream file(folder / "out.png", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    TemporaryFolder folder;
    fs::path input = folder.write("in.bmp", smallBMP());

private:
    /// Two pixels side by side, 24 bits each.
    static std::string smallBMP() {
        std::string bytes(
            "BM\x3E\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x02\0\0\0\x01\0\0\0\x01\0\x18\0", 30);
        bytes += std::string("\0\0\0\0\x08\0\0\0", 8) + std::string(16, '\0');
        bytes += std::string("\x10\x20\x30\x40\x50\x60\0\0", 8);
        return bytes;
    }
};

TEST_F(SaveFaults, LeaveTheOldFileOrTheNewOneAndNothingElse) {
    ASSERT_EQ(save("", TemporaryFiles::unnamed, Target::fresh).exitCode, 0);
    const std::string whole = out();
    ASSERT_GT(whole.size(), 8u);

    for (const TemporaryFiles files : {TemporaryFiles::unnamed, TemporaryFiles::named}) {
        for (const Target target : {Target::fresh, Target::replaced}) {
            for (const std::string call : {"write", "fsync", "linkat", "rename"}) {
                for (const std::string what : {"ENOSPC", "EIO", "KILL"}) {
                    const std::string fault = call + ":1:" + what;
                    SCOPED_TRACE(fault + (files == TemporaryFiles::named ? " named" : " unnamed") +
                                 (target == Target::fresh ? " fresh" : " replaced"));
                    fs::remove(folder / "out.png");
                    if (target == Target::replaced) folder.write("out.png", "old");

                    const auto result = save(fault, files, target);
                    const std::string after = out();
                    if (result.exitCode == 0) {
                        EXPECT_EQ(after, whole) << "the call was not needed";
                    } else {
                        EXPECT_EQ(result.exitCode, what == "KILL" ? -SIGKILL : 1);
                        EXPECT_EQ(after, target == Target::replaced ? "old" : "");
                        EXPECT_EQ(fs::exists(folder / "out.png"), target == Target::replaced);
                    }
                    if (what == "ENOSPC" && result.exitCode != 0) {
                        EXPECT_THAT(result.err, testing::HasSubstr("no space left"));
                    }

                    Names left = folder.names();
                    left.erase("in.bmp");
                    left.erase("out.png");
                    // A named file that its killed writer left is all that may stay, ...
                    const bool mayStay =
                        what == "KILL" && (files == TemporaryFiles::named || call == "rename");
                    EXPECT_LE(left.size(), mayStay ? 1u : 0u);
                    // ... until the next write of the same name.
                    ASSERT_EQ(save("", files, Target::replaced).exitCode, 0);
                    EXPECT_EQ(folder.names(), (Names{"in.bmp", "out.png"}));
                    EXPECT_EQ(out(), whole);
                }
            }
        }
    }
}

}  // namespace
}  // namespace quillmere
