// What the command line does apart from running networks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "Tests/CommandLine/EnhanceProgram.h"

namespace quillmere {
namespace {

using testing::HasSubstr;
using Json = nlohmann::json;
using Names = std::set<std::string>;
namespace fs = std::filesystem;

TEST_F(EnhanceProgram, WritesWhatTheNameOrTheFormatAsksFor) {
    writePicture("p.png", {3, 2});
    const std::string jpegMagic = "\xFF\xD8\xFF", pngMagic = "\x89PNG";
    const auto startOf = [&](const std::string& name) {
        std::ifstream file(folder / name, std::ios::binary);
        std::string start(12, '\0');
        file.read(start.data(), 12);
        return start;
    };
    using Arguments = std::vector<std::string>;
    for (const Arguments& asked : {Arguments{"-o", "a.png"}, {"-o", "b"}, {"--format", "heic"}}) {
        Arguments arguments = {"p.png", "--style", "original"};
        arguments.insert(arguments.end(), asked.begin(), asked.end());
        const auto result = enhance(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
    }
    EXPECT_THAT(startOf("a.png"), testing::StartsWith(pngMagic));
    EXPECT_THAT(startOf("b"), testing::StartsWith(jpegMagic));
    EXPECT_THAT(startOf("p_original.heic"), HasSubstr("ftyp"));
}

TEST_F(EnhanceProgram, OneFailedInputDoesNotStopTheOthers) {
    writePicture("a.png", {2, 2});
    folder.write("b.png", "broken");
    writePicture("c.png", {3, 3});
    const auto result = enhance({"a.png", "b.png", "c.png", "--style", "original", "--json"});
    EXPECT_EQ(result.exitCode, 1);
    expectOneLine(result.err, "b.png", "not a picture");
    const auto objects = objectsOf(result.out);
    ASSERT_EQ(objects.size(), 3u);
    EXPECT_EQ(objects[0]["ok"], true);
    EXPECT_EQ(objects[0]["width"], 2);
    EXPECT_EQ(objects[0]["output"], "a_original.jpg");
    EXPECT_EQ(objects[1]["ok"], false);
    EXPECT_EQ(objects[1]["input"], "b.png");
    EXPECT_EQ(objects[2]["ok"], true);
    EXPECT_EQ(folder.names(),
              (Names{"a.png", "a_original.jpg", "b.png", "c.png", "c_original.jpg"}));
}

// The first takes long to encode, the second can't be encoded, the third can't be read: all while
// another is already under way.
TEST_F(EnhanceProgram, TellsOfResultsThatAreSavedBehindTheNextPictureInTheirOrder) {
    writePicture("slow.png", {2000, 1500});
    writePicture("long.png", {16384, 1});
    folder.write("broken.png", "broken");
    writePicture("quick.png", {2, 2});
    const std::vector<std::string> inputs = {"slow.png", "long.png", "broken.png", "quick.png"};
    std::vector<std::string> arguments = inputs;
    arguments.insert(arguments.end(), {"--style", "original", "--format", "heic", "--json"});
    const auto result = enhance(arguments);
    EXPECT_EQ(result.exitCode, 1);
    const auto objects = objectsOf(result.out);
    ASSERT_EQ(objects.size(), inputs.size());
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        EXPECT_EQ(objects[i]["input"], inputs[i]);
        EXPECT_EQ(objects[i]["ok"], i == 0 || i == 3) << inputs[i];
    }
    EXPECT_LT(result.err.find("too large for HEIC"), result.err.find("not a picture"));
    EXPECT_EQ(folder.names(), (Names{"slow.png", "slow_original.heic", "long.png", "broken.png",
                                     "quick.png", "quick_original.heic"}));
}

TEST_F(EnhanceProgram, AResultMayBeALaterInput) {
    writePicture("a.png", {2000, 1500});
    const auto result = enhance({"a.png", "a_original.jpg", "--style", "original"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(read(folder / "a_original_original.jpg").size(), (Size{2000, 1500}));
}

TEST_F(EnhanceProgram, QuietSaysNothingButErrors) {
    writePicture("a.png", {2, 2});
    const auto good = enhance({"a.png", "--style", "original", "--quiet"});
    EXPECT_EQ(good.out + good.err, "");
    const auto again = enhance({"a.png", "--style", "original", "--quiet"});
    EXPECT_EQ(again.exitCode, 1);
    expectOneLine(again.err, "a.png", "already exists");
}

TEST_F(EnhanceProgram, ReplacesOnlyWhenForced) {
    writePicture("a.png", {2, 2});
    folder.write("out.jpg", "precious");
    EXPECT_EQ(enhance({"a.png", "--style", "original", "-o", "out.jpg"}).exitCode, 1);
    EXPECT_EQ(fs::file_size(folder / "out.jpg"), 8u);
    EXPECT_EQ(enhance({"a.png", "--style", "original", "-o", "out.jpg", "--force"}).exitCode, 0);
    EXPECT_EQ(read(folder / "out.jpg").size(), (Size{2, 2}));
}

TEST_F(EnhanceProgram, AFolderThatRefusesWritingIsToldBeforeTheWork) {
    writePicture("a.png", {2, 2});
    fs::create_directory(folder / "locked");
    chmod((folder / "locked").c_str(), 0555);
    chmod(folder.path().c_str(), 0755);
    ProgramOptions options;
    options.unprivileged = true;
    const auto result =
        enhance({"a.png", "--style", "speedAnime", "-o", "locked/out.png"}, options);
    EXPECT_EQ(result.exitCode, 1);
    expectOneLine(result.err, "a.png", "refuses writing");
    EXPECT_TRUE(fs::is_empty(folder / "locked"));
}

TEST_F(EnhanceProgram, ShowsProgressOnATerminalAndEndsCleanlyOnCtrlC) {
    writePicture("large.png", {1024, 1024});
    ProgramOptions options;
    options.terminal = true;
    bool sent = false;
    options.onError = [&](const std::string& err, pid_t process) {
        if (sent || err.find(" 0 %") == std::string::npos) return;
        kill(process, SIGINT);
        sent = true;
    };
    const auto result = enhance({"large.png", "--style", "godHigh"}, options);
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_THAT(result.err, HasSubstr("large.png [----"));
    EXPECT_EQ(folder.names(), Names{"large.png"});
}

TEST_F(EnhanceProgram, SaysWhatToDoAboutANetworkThatIsNotThere) {
    const fs::path program = fs::path(QUILLMERE_CLI);
    fs::create_directories(folder / "bin");
    fs::create_directories(folder / "share/quillmere/Models");
    fs::copy_file(program, folder / "bin/quillmere-cli");
    fs::copy(program.parent_path().parent_path() / "share/quillmere/Strings",
             folder / "share/quillmere/Strings");
    writePicture("a.png", {2, 2});
    ProgramOptions options;
    options.program = folder / "bin/quillmere-cli";
    const auto result = enhance({"a.png"}, options);
    EXPECT_EQ(result.exitCode, 1);
    expectOneLine(result.err, "a.png", "could not be loaded. Call ./run");
    EXPECT_FALSE(fs::exists(folder / "a_high.jpg"));
}

TEST(StylesProgram, ListsEveryStyleOnce) {
    const auto plain = runProgram({"styles"}, "/");
    EXPECT_EQ(plain.exitCode, 0);
    EXPECT_EQ(std::count(plain.out.begin(), plain.out.end(), '\n'), 10);
    EXPECT_THAT(plain.out, HasSubstr("rapidHQ"));

    const auto json = runProgram({"styles", "--json"}, "/");
    std::vector<std::string> styles;
    for (const Json& object : objectsOf(json.out)) styles.push_back(object["style"]);
    EXPECT_EQ(styles.size(), 10u);
    EXPECT_EQ(styles[1], "high");
}

}  // namespace
}  // namespace quillmere
