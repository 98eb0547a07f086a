// Factors, rates and names: the numbers that a video job starts from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "Quillmere/Models/Video/AudioSampleRate.h"
#include "Quillmere/Models/Video/SuperResolutionFactor.h"
#include "Quillmere/Models/Video/VideoFileManager.h"
#include "Tests/Fakes/FakeAudioToolbox.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeDateFormatter.h"
#include "Tests/Fakes/FakeFileManager.h"
#include "Tests/Fakes/FakeVideoToolbox.h"
#include "Tests/Fakes/FirstBytes.h"

namespace quillmere {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

TEST(SuperResolutionFactor, TheLargestThatFitsAndIsNotRefused) {
    struct Case {
        double width, height;
        std::vector<int> factors;
        std::optional<PixelSize> limit;
        std::set<int> refused;
        std::optional<int> expected;
    };
    const PixelSize large{4096, 4096};
    const std::vector<Case> cases{
        {1920, 1080, {4, 2}, large, {}, 2},
        {1000, 1000, {2, 4}, large, {}, 4},
        {1000, 1000, {2, 4}, large, {4}, 2},
        {1000, 1000, {2, 4}, large, {2, 4}, std::nullopt},
        {1024, 1024, {2, 4}, std::nullopt, {}, 4},
        {1024.5, 1024, {2, 4}, std::nullopt, {}, 2},
        {1024, 1024.5, {2, 4}, std::nullopt, {}, 2},
        {0, 0, {2}, large, {}, 2},
        {5000, 10, {2}, large, {}, std::nullopt},
        {10, 10, {}, large, {}, std::nullopt},
    };
    for (const Case& c : cases) {
        CallLog log;
        FakeConsole console(log);
        FakeVideoToolbox scaler;
        scaler.state.factors = c.factors;
        scaler.state.limit = c.limit;
        scaler.state.refusedFactors = c.refused;
        EXPECT_EQ(resolveSuperResolutionFactor(scaler, console, c.width, c.height), c.expected)
            << c.width << " by " << c.height;
        const bool sourceFits = c.width <= 4096 && !c.factors.empty();
        const auto none = Contains(HasSubstr("No valid factor found for width: "));
        if (sourceFits && !c.expected) {
            EXPECT_THAT(log.lines(), none);
        } else {
            EXPECT_THAT(log.lines(), Not(none));
        }
    }
}

TEST(AudioSampleRate, TheNearestThatTheEncoderTakes) {
    struct Case {
        std::optional<std::size_t> size;
        std::optional<std::vector<AudioValueRange>> ranges;
        double source, expected;
    };
    const std::vector<AudioValueRange> some{{8000, 8000}, {44100, 44100}, {60000, 70000}};
    const std::vector<Case> cases{
        {48, some, 44100, 44100},
        {48, some, 65000, 65000},
        {48, some, 96000, 70000},
        {32, some, 96000, 44100},
        {47, some, 96000, 44100},
        {15, some, 96000, 96000},
        {32, {{{100, 100}, {300, 300}}}, 200, 100},
        {std::nullopt, some, 96000, 48000},
        {0, some, 6000, 8000},
        {48, std::nullopt, 46050, 44100},
    };
    for (const Case& c : cases) {
        FakeAudioToolbox audio;
        audio.size = c.size;
        audio.ranges = c.ranges;
        EXPECT_EQ(resolveOutputSampleRate(audio, c.source), c.expected) << c.source;
    }
}

class VideoFiles : public testing::Test {
protected:
    CallLog log;
    FakeConsole console{log};
    FakeFileManager files;
    FakeDateFormatter dates;
    VideoFileManager manager{{files, dates, console, firstBytes, [] { return Date(); }}};
};

TEST_F(VideoFiles, NamesKeepTwentyCharactersButNoMoreThanAFileSystemTakes) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"a.mp4", "a"},
        {"123456789012345678901234567890.mp4", "12345678901234567890"},
    };
    for (const auto& [name, kept] : cases) {
        EXPECT_EQ(manager.makeOutputUrl(name, ".mov"),
                  "/temporary/Videos/" + kept + "_1970_01_01_000000.mov");
    }
    EXPECT_TRUE(files.folders.contains("/temporary/Videos"));
    const VideoFileManager::Ports longOnes{
        files, dates, console, [](std::string_view, std::size_t count) {
            return std::string(count * 25, 'x');  // as many bytes as a family of emoji has
        }};
    EXPECT_EQ(VideoFileManager(longOnes).makeOutputUrl("a.mp4", ".mov").stem().string().size(),
              8 * 25 + std::strlen("_1970_01_01_000000"));
}

TEST_F(VideoFiles, ClearingEmptiesTheTemporaryFolderAndStopsAtTheFirstFailure) {
    files.folders.insert("/elsewhere");
    const auto put = [this] {
        for (const char* path : {"/temporary/a", "/temporary/Videos/b", "/elsewhere/c"}) {
            files.files[path] = {};
        }
    };
    manager.videosDirectory();
    put();
    files.refused = {"/temporary/Videos/b"};
    manager.clearTemporaryVideos();
    EXPECT_EQ(files.files.size(), 3U);
    EXPECT_THAT(log.lines(), Contains(HasSubstr("/temporary/Videos/b")));
    files.refused.clear();
    manager.clearTemporaryVideos();
    EXPECT_THAT(*files.contentsOfDirectory("/temporary"), testing::IsEmpty());
    EXPECT_TRUE(files.files.contains("/elsewhere/c"));
}

}  // namespace
}  // namespace quillmere
