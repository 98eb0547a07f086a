// The command line as a user meets it: files in, files out, one line for what went wrong.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/ImageIO/DesktopImageIO.h"
#include "Tests/CommandLine/Program.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using Json = nlohmann::json;
using Names = std::set<std::string>;
namespace fs = std::filesystem;

class EnhanceProgram : public testing::Test {
protected:
    /// A PNG of one colour, or of none where `alpha` is 0.
    fs::path writePicture(const std::string& name, PixelSize size, std::uint8_t alpha = 255) const {
        const std::size_t bytes = static_cast<std::size_t>(size.width) * size.height * 4;
        const std::shared_ptr<std::uint8_t> pixels(new std::uint8_t[bytes],
                                                   std::default_delete<std::uint8_t[]>());
        for (std::size_t i = 0; i < bytes; ++i) {
            pixels.get()[i] = i % 4 == 3 ? alpha : static_cast<std::uint8_t>(alpha / 2);
        }
        DesktopImageIO imageIO;
        const auto png = imageIO.pngRepresentation(
            UIImage(CGImage(size, static_cast<std::size_t>(size.width) * 4, pixels)));
        return folder.write(name,
                            std::string(reinterpret_cast<const char*>(png->data()), png->size()));
    }

    static UIImage read(const fs::path& file) {
        DesktopImageIO imageIO;
        DesktopFileManager files;
        const auto data = files.contentsOfFile(file);
        EXPECT_TRUE(data) << data.error().localizedDescription;
        auto picture = imageIO.imageWithData(*data);
        EXPECT_TRUE(picture) << picture.error().localizedDescription;
        return *std::move(picture);
    }

    ProgramResult enhance(std::vector<std::string> arguments,
                          const ProgramOptions& options = {}) const {
        arguments.insert(arguments.begin(), "enhance");
        return runProgram(arguments, folder.path(), options);
    }

    TemporaryFolder folder;
};

/// One JSON object a line.
std::vector<Json> objectsOf(const std::string& out) {
    std::istringstream lines(out);
    std::vector<Json> objects;
    for (std::string line; std::getline(lines, line);) objects.push_back(Json::parse(line));
    return objects;
}

/// In levels of 0 to 255, over all channels of two bitmaps of one size.
double meanDifference(const CGImage& a, const CGImage& b) {
    double sum = 0;
    const int bytes = a.size().width * 4;
    for (int y = 0; y < a.size().height; ++y) {
        for (int i = 0; i < bytes; ++i) sum += std::abs(a.row(y)[i] - b.row(y)[i]);
    }
    return sum / bytes / a.size().height;
}

/// What a user is told of one input: a single line that names it.
void expectOneLine(const std::string& err, const std::string& input, const std::string& says) {
    EXPECT_THAT(err, HasSubstr(says));
    EXPECT_THAT(err, testing::StartsWith("quillmere-cli: " + input + ": "));
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
}

TEST_F(EnhanceProgram, WritesTheResultBesideTheInput) {
    writePicture("photo.png", {30, 26});
    const auto result = enhance({"photo.png", "--style", "speedGeneral"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.out, MatchesRegex("photo_speedGeneral.jpg: 120 by 104, made in .* s\n"));
    EXPECT_THAT(result.err, IsEmpty());
    EXPECT_EQ(folder.names(), (Names{"photo.png", "photo_speedGeneral.jpg"}));
    EXPECT_EQ(read(folder / "photo_speedGeneral.jpg").size(), (Size{120, 104}));
}

TEST_F(EnhanceProgram, WritesWhatTheNameOrTheFormatAsksFor) {
    writePicture("p.png", {3, 2});
    const std::string jpegMagic = "\xFF\xD8\xFF", pngMagic = "\x89PNG";
    const auto startOf = [&](const std::string& name) {
        std::ifstream file(folder / name, std::ios::binary);
        std::string start(12, '\0');
        file.read(start.data(), 12);
        return start;
    };
    EXPECT_EQ(enhance({"p.png", "--style", "original", "-o", "a.png"}).exitCode, 0);
    EXPECT_EQ(enhance({"p.png", "--style", "original", "-o", "b"}).exitCode, 0);
    EXPECT_EQ(enhance({"p.png", "--style", "original", "--format", "heic"}).exitCode, 0);
    EXPECT_THAT(startOf("a.png"), testing::StartsWith(pngMagic));
    EXPECT_THAT(startOf("b"), testing::StartsWith(jpegMagic));
    EXPECT_THAT(startOf("p_original.heic"), HasSubstr("ftyp"));
}

// What a file of the user may be, and what comes of it.
TEST_F(EnhanceProgram, OddInputsGiveARightResultOrOneClearLine) {
    writePicture("good.png", {5, 4});
    std::ifstream file(folder / "good.png", std::ios::binary);
    const std::string good{std::istreambuf_iterator<char>(file), {}};
    writePicture("dot.png", {1, 1});
    writePicture("line.png", {5000, 1});
    writePicture("strip.png", {20000, 50});
    writePicture("clear.png", {6, 6}, 0);
    folder.write("empty.png", "");
    folder.write("cut.png", good.substr(0, good.size() / 2));
    folder.write("text.jpg", "not a picture at all");
    fs::create_directory(folder / "folder.png");

    struct Case {
        std::string input;
        Size size;         // of the result
        std::string says;  // or what the one line says
    };
    const Case cases[] = {
        {"dot.png", {4, 4}, ""},
        {"line.png", {4096, 4}, ""},
        {"strip.png", {4096, 12}, ""},
        {"clear.png", {24, 24}, ""},
        {"empty.png", {}, "empty"},
        {"cut.png", {}, "damaged"},
        {"text.jpg", {}, "not a picture"},
        {"folder.png", {}, "folder"},
        {"missing.png", {}, "missing.png"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.input);
        const Names before = folder.names();
        const auto result = enhance({c.input, "--style", "speedAnime", "-o", "out.png"});
        if (c.says.empty()) {
            EXPECT_EQ(result.exitCode, 0) << result.err;
            EXPECT_EQ(read(folder / "out.png").size(), c.size);
            fs::remove(folder / "out.png");
        } else {
            EXPECT_EQ(result.exitCode, 1);
            expectOneLine(result.err, c.input, c.says);
        }
        EXPECT_EQ(folder.names(), before) << "a file was left behind";
    }
}

// Real files of every kind, all in one run; the turned ones must come out upright.
TEST_F(EnhanceProgram, FilesOfEveryKindComeOutFourTimesAsLarge) {
    const fs::path files = QUILLMERE_SOURCE_DIR "/Tests/Files/Pictures";
    std::vector<std::string> arguments = {"--style", "speedAnime", "--format", "png",
                                          "--json",  "-o",         "out"};
    fs::create_directory(folder / "out");
    std::map<std::string, Size> expected;
    for (const std::string name :
         {"rgb16.png", "cmyk-profile.jpg", "grey-alpha.png", "p3.jpg", "24.bmp", "noise.heic",
          "noise.avif", "noise.jxl", "two-pages.tiff", "animated.webp", "animated.gif",
          "orientation-1.jpg", "orientation-2.jpg", "orientation-3.jpg", "orientation-4.jpg",
          "orientation-5.jpg", "orientation-6.jpg", "orientation-7.jpg", "orientation-8.jpg"}) {
        // Results are named by the input's stem, so each needs one of its own.
        std::string copy = name;
        std::replace(copy.begin(), copy.end(), '.', '-');
        copy += fs::path(name).extension();
        fs::copy_file(files / name, folder / copy);
        arguments.push_back(copy);
        expected[copy] = read(files / name).size();
    }
    const auto result = enhance(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const auto objects = objectsOf(result.out);
    ASSERT_EQ(objects.size(), expected.size());
    const CGImage upright = *read(folder / "out/orientation-1-jpg_speedAnime.png").cgImage();
    for (const Json& object : objects) {
        SCOPED_TRACE(object["input"]);
        const Size size = expected.at(object["input"]);
        EXPECT_EQ(object["width"], size.width * 4);
        EXPECT_EQ(object["height"], size.height * 4);
        const std::string output = object["output"];
        if (output.find("orientation") == std::string::npos) continue;
        // The eight show one picture; JPEG turns its blocks with it, so a little may differ.
        const CGImage turned = *read(folder / output).cgImage();
        ASSERT_EQ(turned.size(), upright.size());
        EXPECT_LT(meanDifference(turned, upright), 4);
    }
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
