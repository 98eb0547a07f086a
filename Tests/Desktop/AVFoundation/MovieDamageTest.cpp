// Files that are no whole movies.
#include <random>

#include "Desktop/AudioToolbox/DesktopAudioToolbox.h"
#include "Tests/Desktop/AVFoundation/MovieFiles.h"

namespace quillmere {
namespace {

class MovieDamage : public MovieFiles {
protected:
    static std::string contentsOf(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::string clip =
        "-f lavfi -i testsrc2=s=160x90:r=25:d=1 -f lavfi -i sine=d=1:r=48000 -c:a aac -c:v libx264 "
        "-threads 1 -movflags faststart";
};

TEST_F(MovieDamage, AFileThatWasCutOffIsAnErrorAndLeavesNothing) {
    const std::string whole = contentsOf(make(clip, "whole.mp4"));
    for (const double part : {0.0, 0.02, 0.5, 0.9}) {
        const auto source =
            folder.write("cut.mp4", whole.substr(0, std::size_t(part * double(whole.size()))));
        const auto result = copy(source, folder / "out.mov");
        ASSERT_TRUE(result.error) << part;
        EXPECT_EQ(result.error->domain, AVFoundation::errorDomain);
        EXPECT_FALSE(result.error->localizedDescription.empty());
        EXPECT_FALSE(std::filesystem::exists(folder / "out.mov")) << part;
    }
    EXPECT_EQ(folder.names(), (std::set<std::string>{"cut.mp4", "whole.mp4"}));
}

TEST_F(MovieDamage, ScatteredDamageEndsWithAMovieOrAnErrorAndNeverACrash) {
    const std::string whole = contentsOf(make(clip, "whole.mp4"));
    const std::string other = contentsOf(make(clip, "whole.mkv"));
    std::mt19937 random(7);
    int movieCount = 0, errorCount = 0;
    for (int round = 0; round < 60; ++round) {
        std::string bytes = round % 2 == 0 ? whole : other;
        for (int i = 0; i < 1 + round % 12; ++i) bytes[random() % bytes.size()] ^= char(random());
        const auto source = folder.write("damaged", bytes);
        const auto target = folder / "out.mov";
        std::filesystem::remove(target);
        const auto result = copy(source, target);
        EXPECT_EQ(std::filesystem::exists(target), !result.error) << round;
        ++(result.error ? errorCount : movieCount);
    }
    EXPECT_GT(errorCount, 0);
    EXPECT_GT(movieCount, 0);
}

TEST_F(MovieDamage, WhatHasNoPicturesInMotionHasNoVideoTrack) {
    struct Case {
        std::string arguments, name;
        std::size_t soundTracks;
    };
    const Case cases[] = {
        {"-f lavfi -i sine=d=1:r=48000 -c:a aac", "sound.mp4", 1},
        {"-f lavfi -i sine=d=1:r=48000 -f lavfi -i color=red:s=32x32:r=1:d=1 -map 0 -map 1 -c:v "
         "png "
         "-disposition:v attached_pic -c:a libmp3lame",
         "cover.mp3", 1},
        {"-f lavfi -i color=red:s=32x32:r=25:d=1 -c:v libx264 -frames:v 0 -movflags "
         "frag_keyframe+empty_moov",
         "none.mp4", 0},
    };
    for (const Case& c : cases) {
        const auto asset = movies.assetWithURL(make(c.arguments, c.name));
        EXPECT_EQ(asset->tracksWithMediaType(AVMediaType::audio).size(), c.soundTracks) << c.name;
        if (c.soundTracks == 0) {
            // A track without frames: the copy has nothing to write.
            EXPECT_TRUE(copy(folder / c.name, folder / "out.mov").error) << c.name;
        } else {
            EXPECT_TRUE(asset->tracksWithMediaType(AVMediaType::video).empty()) << c.name;
        }
    }
}

TEST_F(MovieDamage, AFileThatIsThereIsNotReplacedAndAFolderThatIsNotIsAnError) {
    const auto source = make(clip, "whole.mp4");
    const auto there = folder.write("there.mov", "mine");
    const auto refused = copy(source, there);
    ASSERT_TRUE(refused.error);
    EXPECT_EQ(refused.error->code, static_cast<int>(AVErrorCode::fileAlreadyExists));
    EXPECT_EQ(contentsOf(there), "mine");
    EXPECT_TRUE(copy(source, folder / "no" / "out.mov").error);

    // One that appears while the movie is written.
    const auto writer =
        movies.assetWriterWithURL(folder / "late.mov", AVFileType::quickTimeMovie).value();
    const auto input =
        movies.assetWriterInput(AVVideoOutputSettings{AVVideoCodecType::h264, 16, 16, 0});
    writer->addInput(input);
    writer->startWriting();
    writer->startSessionAtSourceTime(MediaTime::zero());
    input->appendSampleBuffer(std::make_shared<CMSampleBuffer>(
        MediaTime::zero(), MediaTime{},
        std::make_shared<CVPixelBuffer>(PixelSize{16, 16}, CVPixelFormat::bgra8)));
    folder.write("late.mov", "mine");
    Awaited<bool> done;
    writer->finishWritingWithCompletionHandler([&] { done.set(true); });
    done.get();
    EXPECT_EQ(writer->error()->code, static_cast<int>(AVErrorCode::fileAlreadyExists));
    EXPECT_EQ(contentsOf(folder / "late.mov"), "mine");
}

TEST_F(MovieDamage, SettingsThatCanNotBeEncodedAreRefused) {
    struct Case {
        AVWriterOutputSettings settings;
        bool isTaken;
    };
    const double nan = std::nan("");
    const auto video = [](double width, double height) {
        return AVVideoOutputSettings{AVVideoCodecType::h264, width, height, 1000};
    };
    const auto sound = [](std::uint32_t channels, double rate) {
        return AVAudioOutputSettings{AudioFormatID::mpeg4AAC, channels, rate};
    };
    const Case cases[] = {{video(0.4, 90), false},
                          {video(nan, 90), false},
                          {video(90, 1e9), false},
                          {video(0.5, 90), true},
                          {sound(0, 48000), false},
                          {sound(3, 48000), false},
                          {sound(2, 46050), false},
                          {sound(2, 0), false},
                          {sound(1, 8000), true},
                          {sound(2, 96000), true},
                          {AVAudioOutputSettings{AudioFormatID::linearPCM, 2, 48000}, false}};
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto writer =
            movies.assetWriterWithURL(folder / "out.mov", AVFileType::quickTimeMovie).value();
        EXPECT_EQ(writer->canAddInput(*movies.assetWriterInput(cases[i].settings)),
                  cases[i].isTaken)
            << i;
    }
}

TEST(DesktopAudioToolboxTest, TellsTheRatesOfAACInOrderAndNothingElse) {
    DesktopAudioToolbox toolbox;
    const auto property = AudioFormatPropertyID::availableEncodeSampleRates;
    const auto bytes = toolbox.audioFormatGetPropertyInfo(property, AudioFormatID::mpeg4AAC);
    ASSERT_TRUE(bytes);
    const auto all = toolbox.audioFormatGetProperty(property, AudioFormatID::mpeg4AAC, 100);
    ASSERT_TRUE(all);
    EXPECT_EQ(*bytes, all->size() * 16);
    EXPECT_NE(std::find(all->begin(), all->end(), AudioValueRange{44100, 44100}), all->end());
    EXPECT_TRUE(std::is_sorted(all->begin(), all->end(), [](const auto& a, const auto& b) {
        return a.mMinimum < b.mMinimum;
    }));
    EXPECT_EQ(toolbox.audioFormatGetProperty(property, AudioFormatID::mpeg4AAC, 2)->size(), 2u);
    EXPECT_FALSE(toolbox.audioFormatGetPropertyInfo(property, AudioFormatID::linearPCM));
}

}  // namespace
}  // namespace quillmere
