// What every answer to the frame scaler's port has to do, shown on the fake and on the desktop's.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "Desktop/VideoToolbox/DesktopVideoToolbox.h"
#include "Tests/Fakes/FakeVideoToolbox.h"

namespace quillmere {
namespace {

enum class Answer { fake, desktop };

constexpr PixelSize kFrame{31, 18};
constexpr PixelSize kDouble{62, 36};
constexpr auto kPlanar = CVPixelFormat::yCbCr8Planar420;

/// Even: every plane has one level, which goes up from plane to plane.
std::shared_ptr<CVPixelBuffer> evenBuffer(PixelSize size, int level,
                                          CVPixelFormat format = kPlanar) {
    const auto buffer = std::make_shared<CVPixelBuffer>(size, format);
    for (std::size_t plane = 0; plane < buffer->planeCount(); ++plane) {
        std::fill_n(buffer->baseAddressOfPlane(plane),
                    buffer->bytesPerRowOfPlane(plane) *
                        static_cast<std::size_t>(buffer->sizeOfPlane(plane).height),
                    static_cast<std::uint8_t>(level + 20 * static_cast<int>(plane)));
    }
    return buffer;
}

VTFrameProcessorFrameRef frameOf(const std::shared_ptr<CVPixelBuffer>& buffer) {
    return VTFrameProcessorFrame::initWithBuffer(buffer, MediaTime{1, 30});
}

class VideoToolboxContract : public testing::TestWithParam<Answer> {
protected:
    VideoToolbox& port() {
        if (GetParam() == Answer::fake) return fake_;
        return desktop_;
    }

    /// Whether the processor scaled without an error.
    static bool process(VTFrameProcessor& processor,
                        const VTSuperResolutionScalerParameters& parameters) {
        int completions = 0;
        bool isDone = false;
        processor.process(parameters, [&](const auto& same, const std::optional<Error>& error) {
            ++completions;
            isDone = !error && same.destinationFrame == parameters.destinationFrame;
            EXPECT_FALSE(error && error->localizedDescription.empty());
        });
        EXPECT_EQ(completions, 1);
        return isDone;
    }

    static VTSuperResolutionScalerParameters parameters(VTFrameProcessorFrameRef source,
                                                        VTFrameProcessorFrameRef previous,
                                                        VTFrameProcessorFrameRef previousOutput,
                                                        VTFrameProcessorFrameRef destination) {
        return VTSuperResolutionScalerParameters::init(
                   std::move(source), std::move(previous), std::move(previousOutput),
                   VTSuperResolutionScalerParameters::kSequential, std::move(destination))
            .value();
    }

private:
    WorkerPool pool_{2};
    FakeVideoToolbox fake_;
    DesktopVideoToolbox desktop_{pool_};
};

TEST_P(VideoToolboxContract, ASizeOrFactorIsTakenThatCanNotBeScaled) {
    struct Case {
        PixelSize frame;
        int factor;
        bool isTaken;
    };
    for (const Case& c :
         {Case{{640, 360}, 4, true}, Case{{1920, 1080}, 2, true}, Case{{1920, 1080}, 4, false},
          Case{{2048, 2048}, 2, true}, Case{{2049, 16}, 2, false}, Case{{1, 1}, 4, true},
          Case{{0, 360}, 2, false}, Case{{640, -1}, 2, false}, Case{{640, 360}, 3, false},
          Case{{640, 360}, 0, false}}) {
        const auto configuration = port().makeConfiguration({c.frame, c.factor});
        ASSERT_EQ(configuration != nullptr, c.isTaken)
            << c.frame.width << " by " << c.frame.height << " times " << c.factor;
        if (!configuration) continue;
        EXPECT_EQ(configuration->frameSize(), c.frame);
        EXPECT_EQ(configuration->scaleFactor(), c.factor);
        EXPECT_EQ(configuration->sourcePixelBufferAttributes().pixelFormatType, kPlanar);
        bool isFetched = false;
        configuration->downloadConfigurationModel([&](const auto& error) { isFetched = !error; });
        EXPECT_TRUE(isFetched);
    }
    EXPECT_FALSE(port().makeConfiguration({kFrame, 2, 1, true}));
}

TEST_P(VideoToolboxContract, EvenFramesComeOutUneven) {
    const auto processor = port().makeFrameProcessor();
    ASSERT_TRUE(processor->startSession(*port().makeConfiguration({kFrame, 2})));
    VTFrameProcessorFrameRef previous, previousOutput;
    for (const int level : {40, 40, 180}) {
        const auto source = frameOf(evenBuffer(kFrame, level));
        const auto output = frameOf(evenBuffer(kDouble, 0));
        ASSERT_TRUE(process(*processor, parameters(source, previous, previousOutput, output)));
        const CVPixelBuffer& result = *output->buffer();
        for (std::size_t plane = 0; plane < result.planeCount(); ++plane) {
            const auto pixels = result.baseAddressOfPlane(plane);
            const int expected = level + 20 * static_cast<int>(plane);
            EXPECT_NEAR(pixels[0], expected, 1) << plane;
            const PixelSize size = result.sizeOfPlane(plane);
            EXPECT_NEAR(
                pixels[result.bytesPerRowOfPlane(plane) * static_cast<std::size_t>(size.height) -
                       1],
                expected, 1)
                << plane;
        }
        previous = source;
        previousOutput = output;
    }
}

TEST_P(VideoToolboxContract, AnUnsuitableFrameOrAMissingSessionIsTaken) {
    const auto processor = port().makeFrameProcessor();
    const auto good = parameters(frameOf(evenBuffer(kFrame, 9)), nullptr, nullptr,
                                 frameOf(evenBuffer(kDouble, 9)));
    EXPECT_FALSE(process(*processor, good)) << "before a session";
    ASSERT_TRUE(processor->startSession(*port().makeConfiguration({kFrame, 2})));
    const auto rgba = CVPixelFormat::rgba8;
    const auto with = [&](const std::shared_ptr<CVPixelBuffer>& source,
                          const std::shared_ptr<CVPixelBuffer>& target) {
        return process(*processor, parameters(frameOf(source), nullptr, nullptr, frameOf(target)));
    };
    EXPECT_FALSE(with(evenBuffer({30, 18}, 9), evenBuffer(kDouble, 9)));
    EXPECT_FALSE(with(evenBuffer(kFrame, 9), evenBuffer({62, 37}, 9)));
    EXPECT_FALSE(with(evenBuffer(kFrame, 9, rgba), evenBuffer(kDouble, 9)));
    EXPECT_FALSE(with(evenBuffer(kFrame, 9), evenBuffer(kDouble, 9, rgba)));
    EXPECT_TRUE(process(*processor, good));
    processor->endSession();
    EXPECT_FALSE(process(*processor, good)) << "after it";
}

TEST(VTFrameProcessorFrame, IncompleteFramesOrParametersAreTaken) {
    const auto buffer = evenBuffer(kFrame, 1);
    const MediaTime time{1, 30};
    EXPECT_FALSE(VTFrameProcessorFrame::initWithBuffer(CVPixelBufferRef{}, time));
    EXPECT_FALSE(VTFrameProcessorFrame::initWithBuffer(buffer, MediaTime{}));
    const auto written = frameOf(buffer);
    const auto read = VTFrameProcessorFrame::initWithBuffer(CVPixelBufferRef(buffer), time);
    using P = VTSuperResolutionScalerParameters;
    EXPECT_TRUE(P::init(read, nullptr, nullptr, 2, written));
    EXPECT_TRUE(P::init(read, read, written, 2, written));
    EXPECT_FALSE(P::init(nullptr, nullptr, nullptr, 2, written));
    EXPECT_FALSE(P::init(read, nullptr, nullptr, 2, nullptr));
    EXPECT_FALSE(P::init(read, nullptr, nullptr, 2, read)) << "can't be written";
    EXPECT_FALSE(P::init(read, read, nullptr, 2, written));
}

INSTANTIATE_TEST_SUITE_P(Answers, VideoToolboxContract,
                         testing::Values(Answer::fake, Answer::desktop), [](const auto& answer) {
                             return std::string(answer.param == Answer::fake ? "Fake" : "Desktop");
                         });

}  // namespace
}  // namespace quillmere
