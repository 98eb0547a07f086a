// The photo library through the command line.
#include <signal.h>

#include "Tests/CommandLine/EnhanceProgram.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class LibraryProgram : public EnhanceProgram {
protected:
    LibraryProgram() {
        home.environment = {{"HOME", folder.path()}, {"TZ", "Asia/Tokyo"}};
        writePicture("small.png", {40, 20});
    }

    ProgramResult saveToLibrary(const ProgramOptions& options,
                                std::vector<std::string> inputs = {"small.png"}) const {
        inputs.insert(inputs.end(), {"--style", "original", "--library", "--json"});
        return enhance(inputs, options);
    }
    std::vector<json> listed() const {
        const auto result = runProgram({"library", "--json"}, folder.path(), home);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return objectsOf(result.out);
    }
    /// Hidden ones included.
    std::vector<fs::path> filesInLibrary() const {
        std::vector<fs::path> files;
        std::error_code ignored;
        for (const auto& entry : fs::recursive_directory_iterator(folder / "Pictures", ignored)) {
            if (entry.is_regular_file()) files.push_back(entry.path());
        }
        return files;
    }

    ProgramOptions home;
};

TEST_F(LibraryProgram, ResultsBecomeAssetsThatCanBeListedAndShown) {
    writePicture("second.png", {20, 30});
    folder.write("broken.png", "no picture");
    const auto result = saveToLibrary(home, {"small.png", "broken.png", "second.png"});
    EXPECT_EQ(result.exitCode, 1);
    expectOneLine(result.err, "broken.png", "not a picture");
    EXPECT_THAT(folder.names(), testing::Not(testing::Contains("small_original.jpg")));

    const auto assets = listed();
    ASSERT_THAT(assets, SizeIs(2));
    EXPECT_THAT(filesInLibrary(), SizeIs(2));
    for (const json& asset : assets) {
        EXPECT_EQ(asset["kind"], "picture");
        EXPECT_EQ(asset["type"], "public.jpeg");
        EXPECT_EQ(read(asset["path"].get<std::string>()).size().width, asset["width"]);
    }
    const std::string identifier = assets[0]["identifier"];
    const auto shown = runProgram({"library", "show", identifier}, folder.path(), home);
    EXPECT_THAT(shown.out, HasSubstr(assets[0]["path"].get<std::string>()));
    const auto unknown = runProgram({"library", "show", "X"}, folder.path(), home);
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_THAT(unknown.err, HasSubstr("nothing with the identifier X"));
}

TEST_F(LibraryProgram, WhatTheUserAddsAndRemovesIsSeenAtTheNextCall) {
    EXPECT_THAT(listed(), IsEmpty());
    fs::create_directories(folder / "Pictures/2024");
    fs::rename(folder / "small.png", folder / "Pictures/2024/a.png");
    ASSERT_THAT(listed(), SizeIs(1));
    EXPECT_EQ(runProgram({"library", "scan"}, folder.path(), home).out, "1 pictures, 0 videos\n");
    fs::remove(folder / "Pictures/2024/a.png");
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(LibraryProgram, AFullDiskAndARefusalHaveTheirOwnMessages) {
    ProgramOptions full = home;
    full.environment["LD_PRELOAD"] = QUILLMERE_FILE_FAULTS;
    full.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    full.environment["QUILLMERE_FAULT"] = "write:1:ENOSPC";
    const auto noSpace = saveToLibrary(full);
    EXPECT_EQ(noSpace.exitCode, 1);
    expectOneLine(noSpace.err, "small.png", "not enough space");

    ProgramOptions refused = home;
    refused.unprivileged = true;
    refused.environment["XDG_DATA_HOME"] = folder / "data";
    fs::create_directories(folder / "Pictures");
    fs::create_directories(folder / "data");
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(folder / "Pictures", fs::perms(0755));
    fs::permissions(folder / "data", fs::perms(0777));
    const auto notAllowed = saveToLibrary(refused);
    EXPECT_EQ(notAllowed.exitCode, 1);
    expectOneLine(notAllowed.err, "small.png", "not allowed");
    EXPECT_THAT(filesInLibrary(), IsEmpty());
}

TEST_F(LibraryProgram, AKilledSaveLeavesAWholeAssetOrNothing) {
    std::size_t kept = 0, killed = 0;
    for (const char* noTemporary : {"0", "1"}) {
        for (const std::string call : {"write", "fsync", "linkat", "rename"}) {
            for (int number = 1; number <= 8; ++number) {
                SCOPED_TRACE(call + " " + std::to_string(number) + " named: " + noTemporary);
                ProgramOptions options = home;
                options.environment["LD_PRELOAD"] = QUILLMERE_FILE_FAULTS;
                options.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
                options.environment["QUILLMERE_FAULT"] =
                    call + ":" + std::to_string(number) + ":KILL";
                if (*noTemporary == '1') options.environment["QUILLMERE_NO_TMPFILE"] = "1";
                const auto result = saveToLibrary(options);
                killed += result.exitCode == -SIGKILL;

                const auto assets = listed();
                const auto files = filesInLibrary();
                EXPECT_EQ(assets.size(), files.size());
                EXPECT_GE(files.size(), kept) << "an older asset is gone";
                EXPECT_LE(files.size(), kept + 1);
                EXPECT_TRUE(result.exitCode != 0 || files.size() == kept + 1);
                for (const json& asset : assets) {
                    EXPECT_EQ(read(asset["path"].get<std::string>()).size().width, 40);
                }
                kept = files.size();
                if (result.exitCode == 0) break;  // no more such calls
            }
        }
    }
    EXPECT_GT(killed, 10u);
}

}  // namespace
}  // namespace quillmere
