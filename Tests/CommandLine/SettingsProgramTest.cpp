// Settings as a user of the command line meets them, and what `enhance` makes of them.
#include <signal.h>
#include <sys/stat.h>

#include "Desktop/UserDefaults/DesktopUserDefaults.h"
#include "Tests/CommandLine/EnhanceProgram.h"
#include "Tests/Fakes/FakeConsole.h"

namespace quillmere {
namespace {

using testing::HasSubstr;
using Json = nlohmann::json;
using Names = std::set<std::string>;
namespace fs = std::filesystem;

class SettingsProgram : public EnhanceProgram {
protected:
    SettingsProgram() { options.environment["XDG_DATA_HOME"] = home.path(); }

    ProgramResult settings(std::vector<std::string> arguments) const {
        return settingsWith(options, std::move(arguments));
    }
    ProgramResult settingsWith(const ProgramOptions& with,
                               std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "settings");
        return runProgram(arguments, folder.path(), with);
    }
    void set(const std::string& key, const std::string& value) const {
        const auto result = settings({key, value});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.out + result.err, "");
    }

    TemporaryFolder home;
    ProgramOptions options;
};

TEST_F(SettingsProgram, ListsReadsAndWritesInOneForm) {
    struct Row {
        const char* key;
        Json fresh, changed;
    };
    const Row rows[] = {
        {"imageFormatKey", "jpg", "heic"},
        {"resolutionLimitIndexKey", 1024, 2048},
        {"preserveCreationDateKey", false, true},
        {"preserveLocationKey", false, true},
        {"enableCropKey", false, true},
        {"reviewCountKey", 0, 12},
        {"launchCountKey", 0, 3},
    };
    const auto listed = [&] { return objectsOf(settings({"--json"}).out); };
    std::vector<Json> expected;
    for (const Row& row : rows) expected.push_back({{"key", row.key}, {"value", row.fresh}});
    EXPECT_EQ(listed(), expected);
    EXPECT_EQ(home.names(), Names()) << "reading makes a file";

    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const Row& row = rows[i];
        const std::string text =
            row.changed.is_string() ? row.changed.get<std::string>() : row.changed.dump();
        set(row.key, text);
        EXPECT_EQ(settings({row.key}).out, text + "\n");
        expected[i]["value"] = row.changed;
        EXPECT_EQ(listed(), expected);
    }
    const auto plain = settings({});
    EXPECT_EQ(std::count(plain.out.begin(), plain.out.end(), '\n'), 7);
    EXPECT_THAT(plain.out, HasSubstr("imageFormatKey           heic "));
    const auto told = settings({"preserveLocationKey", "false", "--json"});
    EXPECT_EQ(told.out, "{\"key\":\"preserveLocationKey\",\"value\":false}\n");
}

TEST_F(SettingsProgram, LieInTheHomeWhereNoOtherPlaceIsNamed) {
    ProgramOptions plain;
    plain.environment["HOME"] = home.path();
    EXPECT_EQ(settingsWith(plain, {"enableCropKey", "true"}).exitCode, 0);
    EXPECT_TRUE(fs::exists(home / ".local/share/quillmere/Settings.sqlite"));
    plain.environment["XDG_DATA_HOME"] = "relative";
    EXPECT_EQ(settingsWith(plain, {"enableCropKey"}).out, "true\n");
}

TEST_F(SettingsProgram, EnhanceTakesTheFormatThatNothingElseAsksFor) {
    writePicture("p.png", {3, 2});
    set("imageFormatKey", "png");
    using Arguments = std::vector<std::string>;
    for (const Arguments& asked : {Arguments{}, {"--format", "jpg"}, {"-o", "named.heic"}}) {
        Arguments arguments = {"p.png", "--style", "original"};
        arguments.insert(arguments.end(), asked.begin(), asked.end());
        EXPECT_EQ(enhance(arguments, options).exitCode, 0);
    }
    EXPECT_EQ(folder.names(), (Names{"named.heic", "p.png", "p_original.jpg", "p_original.png"}));
    EXPECT_EQ(settings({"imageFormatKey"}).out, "png\n") << "an option was stored";
}

TEST_F(SettingsProgram, AFolderThatRefusesWritingIsToldOnceAndFailsTheCommand) {
    fs::create_directory(home / "quillmere");
    chmod((home / "quillmere").c_str(), 0555);
    chmod(home.path().c_str(), 0755);
    options.unprivileged = true;
    const auto result = settings({"imageFormatKey", "png"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("its folder refuses writing"));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_EQ(settings({"imageFormatKey"}).err, "") << "reading loses nothing";
}

TEST_F(SettingsProgram, WhatIsStoredCanBeReadWhereNothingCanBeWritten) {
    set("imageFormatKey", "png");
    chmod((home / "quillmere/Settings.sqlite").c_str(), 0444);
    chmod((home / "quillmere").c_str(), 0555);
    chmod(home.path().c_str(), 0755);
    options.unprivileged = true;
    const auto read = settings({"imageFormatKey"});
    EXPECT_EQ(read.out, "png\n");
    EXPECT_EQ(read.err, "");
    EXPECT_EQ(settings({"imageFormatKey", "heic"}).exitCode, 1);
    EXPECT_EQ(settings({"imageFormatKey"}).out, "png\n");
}

// A full disk, or the end of the process, at each single step of a write.
TEST_F(SettingsProgram, AFaultCostsAtMostTheWriteThatMetIt) {
    CallLog log;
    FakeConsole console(log);
    options.environment["LD_PRELOAD"] = QUILLMERE_FILE_FAULTS;
    options.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    for (const std::string call : {"write", "fsync"}) {
        for (const std::string what : {"ENOSPC", "KILL"}) {
            int failures = 0;
            for (const std::int64_t old : {0, 1}) {
                bool met = true;
                for (int number = 1; met; ++number) {
                    ASSERT_LT(number, 100);
                    fs::remove_all(home / "quillmere");
                    if (old != 0) {
                        DesktopUserDefaults(home / "quillmere", console)
                            .setInteger(old, "launchCountKey");
                    }
                    const std::string fault = call + ":" + std::to_string(number) + ":" + what;
                    SCOPED_TRACE(fault + " after " + std::to_string(old));
                    options.environment["QUILLMERE_FAULT"] = fault;
                    const auto result = settings({"launchCountKey", "2"});
                    met = result.exitCode != 0;
                    if (met) {
                        ++failures;
                        EXPECT_EQ(result.exitCode, what == "KILL" ? -SIGKILL : 1);
                        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'),
                                  what == "KILL" ? 0 : 1);
                    }
                    DesktopUserDefaults left(home / "quillmere", console);
                    const std::int64_t after = left.integerForKey("launchCountKey");
                    EXPECT_TRUE(after == 2 || (met && after == old)) << after;
                    left.setInteger(3, "launchCountKey");
                    EXPECT_EQ(left.integerForKey("launchCountKey"), 3);
                    EXPECT_THAT(log.lines(), testing::IsEmpty());
                }
            }
            EXPECT_GE(failures, 2) << "a write goes without " << call;
        }
    }
}

}  // namespace
}  // namespace quillmere
