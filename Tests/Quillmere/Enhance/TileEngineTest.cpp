// What a run of the engine does when nothing fails.
#include <gmock/gmock.h>

#include <thread>

#include "Tests/Quillmere/Enhance/EngineFixture.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TileEngineRun : public EngineFixture {
protected:
    std::size_t count(std::string_view prefix) const {
        std::size_t found = 0;
        for (const std::string& line : log.lines()) found += line.starts_with(prefix);
        return found;
    }
};

const std::uint8_t* pixelAt(const UIImage& picture, int x, int y) {
    return picture.cgImage()->row(y) + 4 * x;
}

/// The result by the rules of the tiles alone: which tile shows at each place, counted from the
/// picture's top left corner, and what a network that only enlarges pixels makes of it.
void expectStitchedBySeams(const UIImage& source, const UIImage& result) {
    const PixelSize size = result.cgImage()->size();
    ASSERT_EQ(size.width, 4 * source.cgImage()->size().width);
    ASSERT_EQ(size.height, 4 * source.cgImage()->size().height);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const std::uint8_t* expected = pixelAt(source, x / 4, y / 4);
            const std::uint8_t* got = pixelAt(result, x, y);
            ASSERT_TRUE(std::equal(expected, expected + 3, got) && got[3] == 255)
                << "at " << x << ", " << y;
        }
    }
}

TEST_F(TileEngineRun, PutsEachPixelWhereItBelongsAcrossSeamsAndEdges) {
    for (const PixelSize size : {PixelSize{1, 1}, PixelSize{244, 244}, PixelSize{245, 30},
                                 PixelSize{256, 30}, PixelSize{30, 490}, PixelSize{500, 260}}) {
        SCOPED_TRACE(testing::Message() << size.width << " by " << size.height);
        const UIImage source = makePicture(size);
        const auto completions = enhance(EnhanceStyle::superHigh, source);
        ASSERT_EQ(completions.size(), 1u);
        ASSERT_TRUE(completions[0].picture);
        EXPECT_FALSE(completions[0].text);
        expectStitchedBySeams(source, *completions[0].picture);
    }
}

// A network that marks its tile shows which tile covers which part of the result.
TEST_F(TileEngineRun, SeamsLieWhereTheLaterTileTakesOver) {
    vision.network = [n = 0](const CGImage&) mutable {
        auto buffer = std::make_shared<CVPixelBuffer>(PixelSize{1024, 1024}, CVPixelFormat::rgba8);
        std::fill_n(buffer->baseAddress(), buffer->bytesPerRow() * 1024,
                    static_cast<std::uint8_t>(255));
        for (std::size_t i = 0; i < 1024u * 1024u; ++i) {
            buffer->baseAddress()[4 * i] = static_cast<std::uint8_t>(n);
        }
        ++n;
        return buffer;
    };
    const auto completions = enhance(EnhanceStyle::godHigh, makePicture({500, 600}));  // 3 by 3
    const UIImage& result = *completions.at(0).picture;
    const auto tileAt = [&](int x, int y) { return static_cast<int>(pixelAt(result, x, y)[0]); };
    struct Case {
        int x, y, tile;
    };
    const Case cases[] = {
        {0, 0, 0},       {981, 0, 0},   {982, 0, 1},     {1957, 0, 1},    {1958, 0, 2},
        {1999, 2399, 8}, {0, 993, 0},   {0, 994, 3},     {0, 1969, 3},    {0, 1970, 6},
        {982, 994, 4},   {981, 993, 0}, {1958, 1970, 8}, {1957, 1969, 4},
    };
    for (const Case& c : cases) EXPECT_EQ(tileAt(c.x, c.y), c.tile) << c.x << ", " << c.y;
}

TEST_F(TileEngineRun, HighIsTheMeanOfTwoByTwoOfTheFullEnlargement) {
    vision.network = [](const CGImage&) {
        auto buffer = std::make_shared<CVPixelBuffer>(PixelSize{1024, 1024}, CVPixelFormat::rgba8);
        for (int y = 0; y < 1024; ++y) {
            for (int x = 0; x < 1024; ++x) {
                std::uint8_t* pixel = buffer->baseAddress() + (y * 1024 + x) * 4;
                pixel[0] = static_cast<std::uint8_t>(x % 2 * 10 + y % 2);  // mean 5.5
                pixel[1] = static_cast<std::uint8_t>(x % 2 + y % 2 * 2);   // mean 1.5
                pixel[2] = static_cast<std::uint8_t>(x % 2);               // mean 0.5
                pixel[3] = 255;
            }
        }
        return buffer;
    };
    const auto completions = enhance(EnhanceStyle::high, makePicture({300, 20}));
    const UIImage& result = *completions.at(0).picture;
    EXPECT_EQ(result.cgImage()->size(), (PixelSize{600, 40}));
    for (const auto& [x, y] : {std::pair{0, 0}, {599, 39}, {490, 7}, {491, 8}}) {
        const std::uint8_t* pixel = pixelAt(result, x, y);
        EXPECT_THAT(std::vector(pixel, pixel + 4), ElementsAre(6, 2, 1, 255)) << x << ", " << y;
    }
}

TEST_F(TileEngineRun, AsksThePlatformInThisOrder) {
    enhance(EnhanceStyle::superSpeed, makePicture({100, 50}));
    const auto lines = log.lines();
    EXPECT_THAT(
        std::vector(lines.begin() + 1, lines.end()),  // the first is the fake's own context
        ElementsAre(
            "integerForKey resolutionLimitIndexKey", "bundleForClass fast_srgan",
            "urlForResource fast-srgan.mlmodelc", "load /bundle/fast-srgan.mlmodelc",
            "modelForMLModel", "requestWithModel", "beginImageContext 256x256 opaque=0 scale=1",
            "imageInRect 0,0 100x50", "drawInRect 100x50 at 1,0", "drawInRect 100x50 at 0,1",
            "drawInRect 100x50 at 1,1", "drawInRect 100x50 at 0,0", "imageFromCurrentContext",
            "endImageContext", "imageWithImage", "handler", "perform", "createCGImage 0,0 256,256",
            "imageWithCVPixelBuffer", "crop 0,24 1000,1000", "translate 0,976",
            "makeContext software=0 cacheIntermediates=0", "createCGImage 0,1000 1000,1000",
            "imageInRect 0,0 400x200", "completion"));
}

TEST_F(TileEngineRun, MakesOneRequestAndOneContextForAllTilesAndRuns) {
    enhance(EnhanceStyle::speedAnime, makePicture({500, 260}));
    EXPECT_EQ(count("requestWithModel"), 1u);
    EXPECT_EQ(count("perform"), 6u);
    EXPECT_EQ(count("scale"), 0u);
    enhance(EnhanceStyle::high, makePicture({20, 20}));
    EXPECT_EQ(count("scale 0.5"), 1u);
    EXPECT_EQ(count("makeContext software=0 cacheIntermediates=0"), 1u);
    EXPECT_EQ(count("load"), 2u) << "each run loads its own model";
    EXPECT_EQ(coreML.modelsAlive, 0);
}

TEST_F(TileEngineRun, ReportsEachTileOnTheMainQueueInOrder) {
    const UIImage picture = makePicture({300, 300});
    const auto done = dispatch.makeSemaphore(0);
    std::vector<std::thread::id> threads;
    dispatch.globalQueue(QualityOfService::userInitiated).async([&] {
        engine.enhanceImage(
            EnhanceStyle::godHigh, picture,
            [&](float fraction) {
                fractions.push_back(fraction);
                threads.push_back(std::this_thread::get_id());
            },
            [&](const auto&, const auto&) {});
        done->signal();
    });
    done->wait();
    EXPECT_THAT(fractions, IsEmpty()) << "progress came before the main queue was pumped";
    dispatch.mainQueue().runPending();
    EXPECT_THAT(fractions, ElementsAre(0.25f, 0.5f, 0.75f, 1.0f));
    EXPECT_EQ(threads, std::vector(4, std::this_thread::get_id()));
}

TEST_F(TileEngineRun, RunsWithoutAProgressClosure) {
    bool ended = false;
    engine.enhanceImage(EnhanceStyle::oniHigh, makePicture({2, 2}), nullptr,
                        [&](const auto& picture, const auto&) { ended = picture.has_value(); });
    dispatch.mainQueue().runPending();
    EXPECT_TRUE(ended);
}

TEST_F(TileEngineRun, OriginalIsGivenBackUntouched) {
    const UIImage picture = makePicture({3000, 10}, 2, UIImageOrientation::right);
    const auto completions = enhance(EnhanceStyle::original, picture);
    ASSERT_EQ(completions.size(), 1u);
    EXPECT_EQ(completions[0].picture->cgImage()->row(0), picture.cgImage()->row(0));
    EXPECT_EQ(completions[0].picture->imageOrientation(), UIImageOrientation::right);
    EXPECT_EQ(count("integerForKey") + count("beginImageContext"), 0u);
    EXPECT_THAT(fractions, IsEmpty());
}

TEST_F(TileEngineRun, AStyleWithoutANetworkEndsInSilenceAfterTheWorkingPictureIsMade) {
    coreML.loadError = Error{"model", 1, "damaged"};
    for (const EnhanceStyle style : {EnhanceStyle::rapidHQ, EnhanceStyle::godHigh}) {
        const auto before = count("drawInRect");
        const auto completions =
            enhance(style, makePicture({1030, 4}, 1, UIImageOrientation::down));
        ASSERT_EQ(completions.size(), 1u);
        EXPECT_FALSE(completions[0].picture);
        EXPECT_FALSE(completions[0].text);
        EXPECT_EQ(count("drawInRect") - before, 2u) << "turned upright, then resized";
        EXPECT_EQ(count("event"), 0u);
    }
}

TEST_F(TileEngineRun, TurnsThePictureUprightAtItsOwnScaleFirst) {
    for (const auto orientation :
         {UIImageOrientation::down, UIImageOrientation::left, UIImageOrientation::right,
          UIImageOrientation::upMirrored, UIImageOrientation::downMirrored,
          UIImageOrientation::leftMirrored, UIImageOrientation::rightMirrored}) {
        const auto completions =
            enhance(EnhanceStyle::godHigh, makePicture({40, 20}, 1, orientation));
        const PixelSize expected =
            swapsSides(orientation) ? PixelSize{80, 160} : PixelSize{160, 80};
        EXPECT_EQ(completions.at(0).picture->cgImage()->size(), expected)
            << static_cast<int>(orientation);
        EXPECT_EQ(completions[0].picture->imageOrientation(), UIImageOrientation::up);
    }
    enhance(EnhanceStyle::rapidHQ, makePicture({40, 20}, 2, UIImageOrientation::left));
    EXPECT_EQ(count("beginImageContext 10x20 opaque=0 scale=2"), 1u);
}

TEST_F(TileEngineRun, TransparencyGoesNoFurtherThanTheTile) {
    const std::shared_ptr<std::uint8_t> pixels(new std::uint8_t[4 * 4]{},
                                               std::default_delete<std::uint8_t[]>());
    const UIImage clear{CGImage({2, 2}, 8, pixels)};
    const auto completions = enhance(EnhanceStyle::superHigh, clear);
    const std::uint8_t* pixel = pixelAt(*completions.at(0).picture, 3, 3);
    EXPECT_THAT(std::vector(pixel, pixel + 4), ElementsAre(0, 0, 0, 255));
}

TEST_F(TileEngineRun, OnlyAStoredZeroMeansTheSmallLimit) {
    struct Case {
        std::int64_t stored;
        int width;
    };
    for (const Case& c : {Case{0, 1024}, Case{1, 2048}, Case{5, 2048}, Case{-1, 2048}}) {
        userDefaults.integers["resolutionLimitIndexKey"] = c.stored;
        const auto completions = enhance(EnhanceStyle::superHigh, makePicture({2500, 3}));
        EXPECT_EQ(completions.at(0).picture->cgImage()->size().width, 4 * c.width) << c.stored;
    }
}

TEST_F(TileEngineRun, ResizeKeepsWhatFitsAndRoundsHalvesUp) {
    struct Case {
        PixelSize size;
        double limit;
        PixelSize expected;
    };
    const Case cases[] = {
        {{1024, 1024}, 1024, {1024, 1024}}, {{1, 1}, 1024, {1, 1}},
        {{4000, 3000}, 2048, {2048, 1536}}, {{3000, 4000}, 1024, {768, 1024}},
        {{2048, 5}, 1024, {1024, 3}},  // 2.5 rounds away from zero
        {{1025, 1}, 1024, {1024, 1}},
    };
    for (const Case& c : cases) {
        const UIImage source = makePicture(c.size);
        const UIImage resized = engine.resizeImage(source, c.limit);
        EXPECT_EQ(resized.cgImage()->size(), c.expected);
        const bool untouched = resized.cgImage()->row(0) == source.cgImage()->row(0);
        EXPECT_EQ(untouched, c.size == c.expected);
    }
}

}  // namespace
}  // namespace quillmere
