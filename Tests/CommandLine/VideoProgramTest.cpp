// The road of a video: a file in, a file out, with every frame and the sound in their place.
#include <signal.h>

#include <cmath>

#include "Tests/CommandLine/VideoProgram.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;
using Json = nlohmann::json;

const std::string pictures = "-f lavfi -i testsrc2=s=160x90:r=25:d=1.2 ";
const std::string x264 = " -c:v libx264 -b:v 700k ";

/// A tone from 0.3 to 0.7 seconds, in silence of a second or so.
std::string tone(const std::string& channels, int rate, double seconds = 1.2) {
    return "-f lavfi -i aevalsrc=exprs='if(between(t\\,0.3\\,0.7)\\,0.5*sin(6283*t)\\,0)':d=" +
           std::to_string(seconds) + ":s=" + std::to_string(rate) +
           ",aformat=channel_layouts=" + channels + " ";
}

struct Sound {
    double length = 0, begin = -1, end = -1;  // of all of it, and of the tone in it; in seconds
};

Sound soundOf(const fs::path& movie) {
    constexpr double rate = 48000;
    const std::string bytes =
        saidBy("ffmpeg -nostdin -v error -i " + movie.string() +
               " -map 0:a:0 -af aresample=async=1:first_pts=0 -f s16le -ac 1 -ar 48000 -");
    Sound sound;
    sound.length = static_cast<double>(bytes.size() / 2) / rate;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto value = static_cast<std::int16_t>(static_cast<unsigned char>(bytes[i]) |
                                                     static_cast<unsigned char>(bytes[i + 1]) << 8);
        if (std::abs(value) < 2000) continue;
        if (sound.begin < 0) sound.begin = static_cast<double>(i / 2) / rate;
        sound.end = static_cast<double>(i / 2) / rate;
    }
    return sound;
}

TEST_F(VideoProgram, EveryFrameAndTheSoundStayInTheirPlaceWhateverTheSource) {
    struct Case {
        std::string arguments, name;
        std::size_t frames;
        std::string coded;             // the result's
        int width = 160, height = 90;  // upright
        int channels = 0;              // the result's; 0 for no sound
        bool looksAlike = true;
    };
    const std::string plain = make(pictures + tone("stereo", 48000) + x264, "plain.mp4").string();
    const auto rotated = [&](int degrees) {
        // Kept as it is stored, and told to be shown turned.
        const std::string file =
            make("-i " + plain + " -c copy -metadata:s:v rotate=" + std::to_string(degrees),
                 "turned" + std::to_string(degrees) + ".mov")
                .string();
        return "-i " + file + " -c copy";
    };
    const Case cases[] = {
        {"-i " + plain + " -c copy", "turn0.mov", 30, "160,90", 160, 90, 2},
        {rotated(90), "turn90.mov", 30, "160,90", 90, 160, 2},
        {rotated(180), "turn180.mov", 30, "160,90", 160, 90, 2},
        {rotated(270), "turn270.mov", 30, "160,90", 90, 160, 2},
        {pictures + tone("mono", 44100) + "-vf select='lt(n\\,5)+eq(n\\,9)+eq(n\\,20)' -vsync vfr" +
             x264,
         "changing-rate.mp4", 7, "160,90", 160, 90, 1},
        {pictures + tone("5.1", 96000) + x264 + "-c:a pcm_s16le", "surround.mov", 30, "160,90", 160,
         90, 2},
        {pictures + x264, "silent.mkv", 30, "160,90"},
        {pictures + tone("stereo", 44100, 2.5) + x264, "long-sound.mp4", 30, "160,90", 160, 90, 2},
        {"-f lavfi -i mandelbrot=s=161x91:r=25 -t 1.2 -c:v ffv1 -pix_fmt yuv420p", "odd.mkv", 30,
         "162,92", 161, 91},
        {pictures +
             "-c:v libx265 -x265-params log-level=error -pix_fmt yuv420p10le -color_trc smpte2084 "
             "-color_primaries bt2020 -colorspace bt2020nc",
         "high-range.mp4", 30, "160,90", 160, 90, 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const fs::path source = make(c.arguments, c.name);
        const auto result = video({c.name, "--style", "original", "-o", "out.mov", "--force"});
        ASSERT_EQ(result.exitCode, 0) << result.err;
        EXPECT_THAT(result.err, IsEmpty());
        const fs::path made = folder / "out.mov";
        EXPECT_EQ(codedSize(made), c.coded);
        const auto expected = frameTimes(source), found = frameTimes(made);
        ASSERT_EQ(found.size(), c.frames);
        ASSERT_EQ(expected.size(), c.frames);
        for (std::size_t i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i], expected[i], 1.1e-6);
        if (c.looksAlike) {
            EXPECT_GT(likeness(made, source, {c.width, c.height}), 27);
        }
        const std::string channels = probe(made, "-select_streams a -show_entries stream=channels");
        EXPECT_EQ(channels, c.channels == 0 ? "" : std::to_string(c.channels) + "\n");
        if (c.channels == 0) continue;
        const Sound is = soundOf(made), was = soundOf(source);
        EXPECT_NEAR(is.length, was.length, 1024.0 / 44100);
        EXPECT_NEAR(is.begin, 0.3, 0.01);
        EXPECT_NEAR(is.end, 0.7, 0.01);
    }
}

TEST_F(VideoProgram, WhatCanNotBecomeAVideoGetsOneLineAndLeavesNoFile) {
    make(pictures + x264 + "-movflags faststart", "whole.mp4");
    std::ifstream file(folder / "whole.mp4", std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(file), {}};
    folder.write("cut.mp4", whole.substr(0, whole.size() * 6 / 10));
    folder.write("text.mp4", "no movie at all");
    make(pictures + "-c:v libx264", "frames.mkv");
    fs::resize_file(folder / "frames.mkv", 700);
    make(tone("mono", 48000), "sound.m4a");
    folder.write("taken.mov", "mine");
    ProgramOptions withoutModule;
    withoutModule.environment["QUILLMERE_LIBRARY_FOLDER"] = folder.path();
    struct Case {
        std::vector<std::string> arguments;
        std::string says;
        ProgramOptions options = {};
    };
    const auto before = folder.names();
    for (const Case& c : {
             Case{{"cut.mp4"}, "The video is damaged, incomplete"},
             Case{{"text.mp4"}, "The video is damaged, incomplete or of an unknown kind"},
             Case{{"frames.mkv"}, "The video holds no frames."},
             Case{{"sound.m4a"}, "There is no video in this file."},
             Case{{"gone.mp4"}, "There is no file gone.mp4."},
             Case{{"whole.mp4", "-o", "taken.mov"}, "already exists; --force replaces it."},
             Case{{"taken.mov", "-o", "taken.mov", "--force"}, "would replace the input"},
             Case{{"whole.mp4", "-o", "none/a.mov"}, "There is no folder none."},
             Case{{"whole.mp4"}, "came without its part for videos", withoutModule},
         }) {
        SCOPED_TRACE(c.says);
        auto arguments = c.arguments;
        arguments.insert(arguments.end(), {"--style", "original", "--quiet"});
        const auto result = video(arguments, c.options);
        EXPECT_EQ(result.exitCode, 1);
        expectOneLine(result.err, c.arguments[0], c.says);
        EXPECT_THAT(result.out, IsEmpty());
        EXPECT_EQ(folder.names(), before);
    }
    const auto large = video({"whole.mp4", "-o", "out.avi"});
    EXPECT_EQ(large.exitCode, 2);
    EXPECT_THAT(large.err, HasSubstr("end the name out.avi in .mov"));
}

TEST_F(VideoProgram, SaysBeforehandWhatComesOutAndWhatStaysBehind) {
    folder.write("text.srt", "1\n00:00:00,100 --> 00:00:00,900\nHello\n");
    folder.write("chapters.txt",
                 ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=500\ntitle=One\n");
    make(pictures + tone("5.1", 48000) + tone("mono", 48000) + "-i " +
             (folder / "text.srt").string() + " -i " + (folder / "chapters.txt").string() +
             " -map 0 -map 1 -map 2 -map 3 -map_metadata 4 "
             "-metadata creation_time=2020-05-06T07:08:09Z -c:s srt -c:v ffv1 -pix_fmt yuva420p "
             "-c:a flac",
         "rich.mkv");
    const auto told = video({"rich.mkv"});
    EXPECT_EQ(told.exitCode, 0) << told.err;
    EXPECT_THAT(told.out, StartsWith("rich.mkv: 160 by 90, 30 frames, 1 s\n"
                                     "becomes rich_rapidHQ.mov: 640 by 360\n"
                                     "not kept: 1 further audio track, 1 subtitle track, "
                                     "1 chapter mark, sound of 6 channels (it becomes stereo), "
                                     "transparency, the date\n"));
    const auto listed = video({"rich.mkv", "--json", "--force"});
    const Json object = objectsOf(listed.out).at(0);
    EXPECT_EQ(object["notKept"].size(), 6u);
    EXPECT_EQ(object["width"], 640);
    EXPECT_EQ(object["failedFrames"], 0);
    EXPECT_EQ(codedSize(folder / "rich_rapidHQ.mov"), "640,360");
    EXPECT_EQ(frameTimes(folder / "rich_rapidHQ.mov"), frameTimes(folder / "rich.mkv"));
}

TEST_F(VideoProgram, ASignalCancelsTheJobAndLeavesNothing) {
    make("-f lavfi -i testsrc2=s=640x360:r=30:d=60 -c:v libx264 -preset ultrafast", "long.mp4");
    const auto before = folder.names();
    ProgramOptions options;
    options.terminal = true;
    bool sent = false;
    options.onError = [&](const std::string& err, pid_t process) {
        if (sent || err.find("frames/s") == std::string::npos) return;
        kill(process, SIGINT);
        sent = true;
    };
    const auto result = video({"long.mp4"}, options);
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_THAT(result.err, HasSubstr("Interrupted."));
    EXPECT_EQ(folder.names(), before);
}

TEST_F(VideoProgram, AResultKeepsToTheRateOfItsSourceUnlessQualityIsAskedFor) {
    make(
        "-f lavfi -i testsrc2=s=160x90:r=25:d=5,noise=alls=40:allf=t -c:v libx264 -crf 30 "
        "-pix_fmt yuv420p",
        "noisy.mp4");
    const auto rateOf = [](const fs::path& movie) {
        return std::stod(probe(movie, "-select_streams v -show_entries stream=bit_rate"));
    };
    ASSERT_EQ(video({"noisy.mp4", "-o", "kept.mov"}).exitCode, 0);
    EXPECT_NEAR(rateOf(folder / "kept.mov") / rateOf(folder / "noisy.mp4"), 1, 0.15);
    ASSERT_EQ(video({"noisy.mp4", "-o", "fine.mov", "--quality", "66"}).exitCode, 0);
    EXPECT_GT(rateOf(folder / "fine.mov"), 3 * rateOf(folder / "noisy.mp4"));
    EXPECT_EQ(video({"noisy.mp4", "-o", "none.mov", "--quality", "0"}).exitCode, 2);
}

TEST_F(VideoProgram, EncodingLosesNoMoreOfTheLumaThanThePeerDoesAtTheSameRate) {
    make(
        "-f lavfi -i mandelbrot=s=320x180:r=25:end_scale=0.2 -t 4 -vf scale=out_color_matrix=bt709 "
        "-c:v libx264 -crf 12 -pix_fmt yuv420p -color_primaries bt709 -color_trc bt709 "
        "-colorspace bt709",
        "fine.mp4");
    ASSERT_EQ(video({"fine.mp4", "--style", "original"}).exitCode, 0);
    const fs::path made = folder / "fine_original.mov", source = folder / "fine.mp4";
    const auto rateOf = [](const fs::path& movie) {
        return std::stod(probe(movie, "-select_streams v -show_entries stream=bit_rate"));
    };
    // Both miss the rate that they are asked for, each in its own way; the second try meets ours.
    double asked = rateOf(source);
    for (int i = 0; i < 2; ++i) {
        make("-i " + source.string() + " -c:v libx264 -preset veryfast -b:v " +
                 std::to_string(std::lround(asked)),
             "peer.mov");
        asked *= rateOf(made) / rateOf(folder / "peer.mov");
    }
    ASSERT_NEAR(rateOf(folder / "peer.mov") / rateOf(made), 1, 0.02);
    const double ours = likeness(made, source, {320, 180}, "y");
    EXPECT_GT(ours, likeness(folder / "peer.mov", source, {320, 180}, "y") - 0.3);
}

}  // namespace
}  // namespace quillmere
