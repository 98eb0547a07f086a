// Times, sizes and sound of movies that were read and written again.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "Tests/Desktop/AVFoundation/MovieFiles.h"
#include "Tests/Desktop/AVFoundation/OneFrameMovie.h"

namespace quillmere {
namespace {

const std::string pictures = "-f lavfi -i testsrc2=s=160x90:r=25:d=1 ";
const std::string sound = "-f lavfi -i sine=d=1:r=48000 ";

using MovieTimes = MovieFiles;

TEST_F(MovieTimes, EveryFrameKeepsItsTimeWhateverTheContainerAndTheRate) {
    struct Case {
        std::string arguments, name;
        std::size_t frames;
        double origin = 0;  // what ffprobe counts from
    };
    const std::string x264 = "-c:v libx264 ";
    const Case cases[] = {
        {pictures + sound + x264 + "-bf 2 -c:a aac", "b-frames.mp4", 25},
        {pictures + x264 + "-movflags frag_keyframe+empty_moov", "fragments.mp4", 25},
        {"-f lavfi -i testsrc2=s=160x90:r=30000/1001:d=1 " + sound + x264 + "-c:a aac", "ntsc.mkv",
         30},
        {pictures + sound + x264 + "-c:a aac", "broadcast.ts", 25, 1.458667},
        {pictures + "-vf select='lt(n\\,5)+eq(n\\,9)+eq(n\\,20)' -vsync vfr " + x264, "vfr.mp4", 7},
        {"-itsoffset 0.37 " + pictures + sound + "-map 0 -map 1 -vsync passthrough " + x264 +
             "-c:a aac",
         "late.mp4", 25},
        {pictures + "-c:v mpeg4 -bf 2", "packed.avi", 25},
        {pictures + "-c:v mjpeg -pix_fmt yuvj420p", "motion.mov", 25},
        {pictures + "-frames:v 1 " + x264, "one.mp4", 1},
        {"-f lavfi -i testsrc2=s=160x90:r=240:d=0.2 -video_track_timescale 24000 " + x264,
         "fast.mov", 48},
    };
    for (const Case& c : cases) {
        const auto source = make(c.arguments, c.name);
        for (const auto format : {CVPixelFormat::bgra8, CVPixelFormat::yCbCr8Planar420}) {
            const auto target = folder / "out.mov";
            std::filesystem::remove(target);
            MovieCopyOptions options;
            options.format = format;
            const auto result = copy(source, target, options);
            ASSERT_EQ(result.writer, AVAssetWriterStatus::completed)
                << c.name << (result.error ? result.error->localizedDescription : "");
            EXPECT_EQ(result.reader, AVAssetReaderStatus::completed) << c.name;
            std::vector<double> expected = frameTimes(source);
            const std::vector<double> found = frameTimes(target);
            ASSERT_EQ(found.size(), c.frames) << c.name;
            ASSERT_EQ(expected.size(), c.frames) << c.name;
            for (std::size_t i = 0; i < found.size(); ++i) {
                EXPECT_NEAR(found[i], expected[i] - c.origin, 1.1e-6) << c.name << ' ' << i;
            }
        }
    }
}

TEST_F(MovieTimes, TheLastFrameLastsAsLongAsTheOneBefore) {
    const auto source =
        make(pictures + "-vf select='lt(n\\,5)+eq(n\\,9)' -vsync vfr -c:v libx264", "vfr.mp4");
    copy(source, folder / "out.mov");
    EXPECT_NEAR(std::stod(probe(folder / "out.mov", "-show_entries format=duration")), 0.56, 1e-3);
}

TEST_F(MovieTimes, SizesAreRoundedMadeEvenAndFramesScaledToThem) {
    struct Case {
        std::string size, filter;  // of the source
        std::optional<Size> asked;
        std::string natural, coded;  // "natural" as the track tells it
    };
    const Case cases[] = {
        {"161x91", "null", {}, "161x91", "162,92"},
        {"160x90", "null", Size{319.5, 179.2}, "160x90", "320,180"},
        {"160x90", "null", Size{1, 1}, "160x90", "2,2"},
        {"144x90", "setsar=4/3", {}, "192x90", "192,90"},
        {"160x90", "setsar=1/2", {}, "160x180", "160,180"},
    };
    for (const Case& c : cases) {
        const auto source = make("-f lavfi -i testsrc=s=" + c.size + ":r=25:d=0.2 -vf " + c.filter +
                                     " -pix_fmt yuv444p -c:v ffv1",
                                 "in.mkv");
        const Size natural = movies.assetWithURL(source)
                                 ->tracksWithMediaType(AVMediaType::video)
                                 .at(0)
                                 ->naturalSize();
        EXPECT_EQ(std::to_string(int(natural.width)) + "x" + std::to_string(int(natural.height)),
                  c.natural);
        for (const auto format : {CVPixelFormat::bgra8, CVPixelFormat::yCbCr8Planar420}) {
            const auto target = folder / "out.mov";
            std::filesystem::remove(target);
            MovieCopyOptions options;
            options.format = format;
            options.size = c.asked;
            EXPECT_FALSE(copy(source, target, options).error) << c.coded;
            EXPECT_EQ(probe(target,
                            "-show_entries stream=width,height,codec_name,pix_fmt,"
                            "color_space,color_range"),
                      "h264," + c.coded + ",yuv420p,tv,bt709\n");
        }
    }
}

TEST_F(MovieTimes, TheTurnOfATrackIsWrittenAndReadAsItIs) {
    struct Case {
        AffineTransform transform;
        std::string rotation;  // as ffprobe has it, behind a comma
    };
    const Case cases[] = {
        {{}, ""},
        {{0, 1, -1, 0, 90, 0}, ",-90"},
        {{-1, 0, 0, -1, 160, 90}, ",-180"},
        {{0, -1, 1, 0, 0, 160}, ",90"},
        {{-1, 0, 0, 1, 160, 0}, ",-180"},  // mirrored
    };
    const auto still = std::make_shared<CVPixelBuffer>(PixelSize{160, 90}, CVPixelFormat::bgra8);
    std::fill_n(still->baseAddress(), 160 * 90 * 4, std::uint8_t{0});
    for (int y = 0; y < 45; ++y) {  // white in the upper left
        std::fill_n(still->baseAddress() + y * 640, 80 * 4, std::uint8_t{255});
    }
    for (const Case& c : cases) {
        const auto target = folder / "turned.mov";
        writeOneFrame(movies, target, {AVVideoCodecType::h264, 160, 90, 0}, still, c.transform);

        const std::string rotation =
            probe(target, "-show_entries stream_side_data=rotation:stream=index");
        EXPECT_EQ(rotation.substr(0, rotation.find('\n')), "0" + c.rotation);
        const AVAssetRef asset = movies.assetWithURL(target);
        EXPECT_EQ(asset->tracksWithMediaType(AVMediaType::video).at(0)->preferredTransform(),
                  c.transform);

        // Where the white corner lies in the upright picture.
        const auto generator = movies.assetImageGeneratorWithAsset(asset);
        generator->setAppliesPreferredTrackTransform(true);
        Awaited<Result<CGImage>> grabbed;
        generator->generateCGImagesAsynchronouslyForTimes(
            {MediaTime::zero()}, [&](MediaTime, Result<CGImage> image) { grabbed.set(image); });
        const Result<CGImage> image = grabbed.get();
        ASSERT_TRUE(image);
        const auto& t = c.transform;
        const PixelSize size = image->size();
        EXPECT_EQ(size, t.b == 0 ? (PixelSize{160, 90}) : (PixelSize{90, 160}));
        const double x = t.a * 40 + t.c * 22 + t.tx, y = t.b * 40 + t.d * 22 + t.ty;
        EXPECT_GT(image->row(int(y))[4 * int(x)], 240) << c.rotation;
        EXPECT_LT(image->row(size.height - 1 - int(y))[4 * (size.width - 1 - int(x))], 15);
    }
}

/// The first sample of a channel that is loud, and how many samples there are, of the sound as a
/// player decodes it.
struct Heard {
    double onset = -1;  // in seconds
    double length = 0;
    int channels = 0;
};

class MovieSound : public MovieFiles {
protected:
    Heard listen(const std::filesystem::path& movie, int rate) {
        Heard heard;
        heard.channels = std::stoi(probe(movie, "-select_streams a -show_entries stream=channels"));
        const auto raw = make("-i " + movie.string() + " -f f32le -ac 1", "heard.raw");
        std::ifstream file(raw, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), {});
        const std::size_t count = bytes.size() / sizeof(float);
        heard.length = double(count) / rate;
        for (std::size_t i = 0; i < count && heard.onset < 0; ++i) {
            float value = 0;
            std::memcpy(&value, bytes.data() + i * sizeof value, sizeof value);
            if (std::abs(value) > 0.1f) heard.onset = double(i) / rate;
        }
        return heard;
    }
};

TEST_F(MovieSound, SoundKeepsItsPlaceAndLengthThroughEveryRateAndChannelCount) {
    // Silence for half a second, then a tone of the same loudness in all channels.
    const std::string tone = "aevalsrc='if(gte(t\\,0.5)\\,0.5*sin(2*PI*1000*t)\\,0)";
    struct Case {
        std::string arguments, name;
        int rate;                // of the new track
        std::uint32_t channels;  // of the new track
        double onset = 0.5;
        double length = 1;
    };
    const std::string codedAAC = "-c:v libx264 -c:a aac ";
    const auto source = [&](const std::string& channels, int rate) {
        return pictures + "-f lavfi -i " + tone + "':s=" + std::to_string(rate) + ":d=1" + " -ac " +
               channels + " ";
    };
    const Case cases[] = {
        {source("2", 44100) + "-c:a pcm_s16le -c:v libx264", "pcm.mov", 44100, 2},
        {source("1", 48000) + codedAAC, "mono.mp4", 48000, 1},
        {source("2", 44100) + codedAAC, "resampled.mp4", 48000, 2},
        {source("6", 96000) + "-c:v libx264 -c:a flac", "surround.mkv", 96000, 2},
        {source("2", 22050) + codedAAC, "low.mp4", 22050, 2},
        {source("1", 8000) + codedAAC, "lowest.mp4", 8000, 1},
        {source("2", 48000) + codedAAC, "broadcast.ts", 48000, 2, 0.5213, 1.02},
        {pictures + "-itsoffset 0.25 -f lavfi -i " + tone +
             "':s=48000:d=1 -map 0 -map 1 -c:v libx264 -c:a pcm_s16le",
         "late.mov", 48000, 1, 0.75, 1.25},
    };
    for (const Case& c : cases) {
        const auto movie = make(c.arguments, c.name);
        const auto target = folder / "out.mov";
        std::filesystem::remove(target);
        MovieCopyOptions options;
        options.sampleRate = c.rate;
        options.channels = c.channels;
        const auto result = copy(movie, target, options);
        ASSERT_FALSE(result.error) << c.name << result.error->localizedDescription;
        const Heard heard = listen(target, c.rate);
        EXPECT_EQ(heard.channels, int(c.channels)) << c.name;
        EXPECT_NEAR(heard.onset, c.onset, 0.003) << c.name;
        EXPECT_NEAR(heard.length, c.length, 0.03) << c.name;
    }
}

TEST_F(MovieSound, AGapBecomesSilenceAndAnOverlapIsCut) {
    const auto target = folder / "out.mov";
    const auto writer = movies.assetWriterWithURL(target, AVFileType::quickTimeMovie).value();
    const auto input =
        movies.assetWriterInput(AVAudioOutputSettings{AudioFormatID::mpeg4AAC, 1, 48000});
    writer->addInput(input);
    writer->startWriting();
    writer->startSessionAtSourceTime(MediaTime::zero());
    const auto append = [&](double from, double seconds, float value) {
        const auto audio = std::make_shared<CMAudioData>();
        audio->format = {48000, 1};
        for (int i = 0; i < seconds * 48000; ++i) {
            audio->interleaved.push_back(value * std::sin(0.13f * static_cast<float>(i)));
        }
        EXPECT_TRUE(input->appendSampleBuffer(
            std::make_shared<CMSampleBuffer>(MediaTime{std::llround(from * 48000), 48000}, audio)));
    };
    append(0.2, 0.3, 0);    // silence to 0.5, of which 0.2 is the gap at the start
    append(0.4, 0.1, 1);    // all of it is there already
    append(0.505, 0.2, 0);  // near enough to follow on
    append(0.8, 0.2, 1);    // a gap of 0.1
    Awaited<bool> done;
    writer->finishWritingWithCompletionHandler([&] { done.set(true); });
    done.get();
    const Heard heard = listen(target, 48000);
    EXPECT_NEAR(heard.onset, 0.8, 0.003);
    EXPECT_NEAR(heard.length, 1.0, 0.03);
}

}  // namespace
}  // namespace quillmere
