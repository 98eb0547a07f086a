// What a run of the engine does when something fails: the table of codes, and the states that
// only a bug can produce.
#include <gmock/gmock.h>

#include "Tests/Quillmere/Enhance/EngineFixture.h"

namespace quillmere {
namespace {

using testing::ElementsAre;

const std::string memoryHint =
    "\nThere is a possibility of insufficient memory."
    "\n*iPhone 7 and earlier devices are not supported.\n";

/// One way to fail, on a picture of four tiles.
struct Failure {
    const char* cause;
    std::function<void(FakeGraphics&, FakeCoreImage&, FakeVision&)> arrange;
    std::vector<int> codes;          // recorded, in order
    std::vector<std::string> texts;  // given to the completion, in order
    bool endsWithAPicture;
    std::vector<float> fractions;
};

const Error networkError{"fake", 9, "No memory."};

const Failure failures[] = {
    {"1: a tile's canvas gives no image",
     [](auto& graphics, auto&, auto&) { graphics.refusedImages = {1}; },
     {1},
     {"Failed 1."},
     true,
     {0.25f, 0.5f, 0.75f}},

    {"2: no lazy image from a tile",
     [](auto&, auto& coreImage, auto&) { coreImage.refusedImages = {0}; },
     {2},
     {"Failed 2."},
     true,
     {0.25f, 0.5f, 0.75f}},

    {"3: nothing to render, after every tile failed",
     [](auto& graphics, auto&, auto&) {
         graphics.refusedImages = {0, 1, 2, 3};
     },
     {1, 1, 1, 1, 3},
     {"Failed 1.", "Failed 1.", "Failed 1.", "Failed 1.", "Failed 3."},
     false,
     {}},

    {"4: the stitched picture can't be rendered",
     [](auto&, auto& coreImage, auto& vision) {
         vision.network = [&coreImage, tiles = 0](const CGImage& tile) mutable {
             coreImage.refuseRender = ++tiles == 4;
             return FakeVision::enlargePixels(tile);
         };
     },
     {4},
     {"Failed 4."},
     false,
     {0.25f, 0.5f, 0.75f, 1.0f}},

    {"5: the network fails on tiles",
     [](auto&, auto&, auto& vision) {
         vision.performErrors = {{0, networkError}, {3, networkError}};
     },
     {5, 5},
     {"Failed 5." + memoryHint + "No memory.", "Failed 5." + memoryHint + "No memory."},
     true,
     {0.25f, 0.5f}},

    {"6: the model is not one for pictures",
     [](auto&, auto&, auto& vision) { vision.modelError = networkError; },
     {6},
     {"Failed 6.No memory."},
     false,
     {}},
};

class TileEngineFailure : public EngineFixture {};

TEST_F(TileEngineFailure, EachCauseHasItsCodeTextEventAndEnd) {
    for (const Failure& failure : failures) {
        SCOPED_TRACE(failure.cause);
        CallLog ownLog;
        FakeGraphics ownGraphics(ownLog);
        FakeCoreImage ownCoreImage(ownLog);
        FakeVision ownVision(ownLog, ownCoreImage);
        FakeAnalytics ownAnalytics(ownLog);
        FakeConsole ownConsole(ownLog);
        failure.arrange(ownGraphics, ownCoreImage, ownVision);
        TileEngine own({userDefaults, ownGraphics, ownCoreImage, ownVision, catalogue, dispatch,
                        ownAnalytics, localization, ownConsole});

        std::vector<std::string> texts;
        std::vector<bool> pictures;
        std::vector<float> seen;
        own.enhanceImage(
            EnhanceStyle::superHigh, makePicture({300, 300}),
            [&](float fraction) { seen.push_back(fraction); },
            [&](const auto& picture, const auto& text) {
                EXPECT_NE(picture.has_value(), text.has_value());
                pictures.push_back(picture.has_value());
                if (text) texts.push_back(*text);
            });
        dispatch.mainQueue().runPending();

        EXPECT_EQ(texts, failure.texts);
        EXPECT_EQ(pictures.back(), failure.endsWithAPicture) << "the end comes last";
        EXPECT_EQ(pictures.size(), texts.size() + (failure.endsWithAPicture ? 1 : 0));
        EXPECT_EQ(seen, failure.fractions);
        std::vector<int> codes;
        std::vector<std::string> consoleLines;
        for (const std::string& line : ownLog.lines()) {
            constexpr std::string_view event = "event ConvertFailed ErrorCode=";
            if (line.starts_with(event)) codes.push_back(std::stoi(line.substr(event.size())));
            if (line.starts_with("console ")) consoleLines.push_back(line);
        }
        EXPECT_EQ(codes, failure.codes);
        if (failure.codes.back() == 4) {
            EXPECT_THAT(consoleLines, ElementsAre("console Image processing failed."
                                                  "Please try with another image."));
        } else {
            EXPECT_TRUE(consoleLines.empty());
        }
    }
}

TEST_F(TileEngineFailure, AFailedTileLeavesAHoleWhereItWouldLie) {
    vision.performErrors = {{3, networkError}};
    const auto completions = enhance(EnhanceStyle::godHigh, makePicture({300, 300}));
    ASSERT_EQ(completions.size(), 2u);
    const CGImage& result = *completions[1].picture->cgImage();
    EXPECT_EQ(result.size(), (PixelSize{1200, 1200}));
    EXPECT_EQ(result.row(1199)[4 * 1199 + 3], 0) << "the last tile's place is transparent";
    EXPECT_EQ(result.row(0)[3], 255);
}

TEST_F(TileEngineFailure, APictureWithoutPixelsHasNothingToRender) {
    const auto completions = enhance(EnhanceStyle::godHigh, UIImage::withoutBitmap({0, 0}));
    ASSERT_EQ(completions.size(), 1u);
    EXPECT_EQ(completions[0].text, "Failed 3.");
}

TEST_F(TileEngineFailure, TheEventGoesOutBeforeTheTextIsMade) {
    EXPECT_EQ(engine.failedToConvertMessage(7), "Failed 7.");
    const auto lines = log.lines();
    EXPECT_EQ(lines[lines.size() - 2], "event ConvertFailed ErrorCode=7");
    EXPECT_EQ(lines.back(), "localized FailedToConvertMessage");
}

/// A state that no adapter may leave the engine in.
struct Broken {
    const char* what;
    std::function<void(FakeGraphics&, FakeVision&)> arrange;
    std::function<UIImage()> picture = [] { return makePicture({300, 300}); };
};

TEST(TileEngineDeathTest, WhatOnlyABugCanCauseEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto observing = [](std::optional<std::vector<VNObservationRef>> found) {
        return [found](auto&, FakeVision& vision) {
            vision.observe = [found](auto) { return found; };
        };
    };
    const Broken cases[] = {
        {"no picture from turning upright",
         [](auto& graphics, auto&) { graphics.refusedImages = {0}; },
         [] {
             return makePicture({30, 30}, 1, UIImageOrientation::left);
         }},
        {"no picture from resizing", [](auto& graphics, auto&) { graphics.refusedImages = {0}; },
         [] {
             return makePicture({1100, 2});
         }},
        {"no bitmap behind the working picture", [](auto&, auto&) {},
         [] {
             return UIImage::withoutBitmap({30, 30});
         }},
        {"a tile can't be cut", [](auto& graphics, auto&) { graphics.refusedCuts = {2}; }},
        {"the result can't be cut", [](auto& graphics, auto&) { graphics.refusedCuts = {4}; }},
        {"no results", observing(std::nullopt)},
        {"empty results", observing(std::vector<VNObservationRef>{})},
        {"a result that is no picture",
         observing(std::vector<VNObservationRef>{std::make_shared<VNObservation>()})},
    };
    for (const Broken& broken : cases) {
        const auto run = [&] {
            CallLog log;
            FakeUserDefaults userDefaults(log);
            FakeGraphics graphics(log);
            FakeCoreImage coreImage(log);
            FakeVision vision(log, coreImage);
            FakeCoreML coreML(log);
            FakeBundles bundles(log);
            FakeAnalytics analytics(log);
            FakeLocalization localization(log);
            FakeConsole console(log);
            DesktopDispatch dispatch(std::make_unique<ManualClock>());
            ModelCatalogue catalogue(coreML, bundles);
            broken.arrange(graphics, vision);
            TileEngine engine({userDefaults, graphics, coreImage, vision, catalogue, dispatch,
                               analytics, localization, console});
            engine.enhanceImage(EnhanceStyle::godHigh, broken.picture(), nullptr,
                                [](const auto&, const auto&) {});
        };
        EXPECT_EXIT(run(), testing::KilledBySignal(SIGABRT), "^$") << broken.what;
    }
}

}  // namespace
}  // namespace quillmere
