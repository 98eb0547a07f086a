// The command line with real networks on real files.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>

#include "Tests/CommandLine/EnhanceProgram.h"

namespace quillmere {
namespace {

using testing::IsEmpty;
using testing::MatchesRegex;
using Names = std::set<std::string>;
using Json = nlohmann::json;
namespace fs = std::filesystem;

using EnlargeProgram = EnhanceProgram;

/// In levels of 0 to 255, over all channels of two bitmaps of one size.
double meanDifference(const CGImage& a, const CGImage& b) {
    double sum = 0;
    const int bytes = a.size().width * 4;
    for (int y = 0; y < a.size().height; ++y) {
        for (int i = 0; i < bytes; ++i) sum += std::abs(a.row(y)[i] - b.row(y)[i]);
    }
    return sum / bytes / a.size().height;
}

TEST_F(EnlargeProgram, WritesTheResultBesideTheInput) {
    writePicture("photo.png", {30, 26});
    const auto result = enhance({"photo.png", "--style", "speedGeneral"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.out, MatchesRegex("photo_speedGeneral.jpg: 120 by 104, made in .* s\n"));
    EXPECT_THAT(result.err, IsEmpty());
    EXPECT_EQ(folder.names(), (Names{"photo.png", "photo_speedGeneral.jpg"}));
    EXPECT_EQ(read(folder / "photo_speedGeneral.jpg").size(), (Size{120, 104}));
}

// What a file of the user may be, and what comes of it.
TEST_F(EnlargeProgram, OddInputsGiveARightResultOrOneClearLine) {
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
TEST_F(EnlargeProgram, FilesOfEveryKindComeOutFourTimesAsLarge) {
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

}  // namespace
}  // namespace quillmere
