#include "Desktop/VideoToolbox/DesktopVideoToolbox.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace quillmere {
namespace {

constexpr PixelSize kFrame{64, 48};

class Session {
public:
    Session() { EXPECT_TRUE(processor_->startSession(*port_.makeConfiguration({kFrame, 2}))); }

    /// Noise over a slope, so that a frame before it shows in the result.
    static VTFrameProcessorFrameRef source(unsigned seed) {
        const auto buffer = std::make_shared<CVPixelBuffer>(kFrame, CVPixelFormat::yCbCr8Planar420);
        for (std::size_t plane = 0; plane < buffer->planeCount(); ++plane) {
            const PixelSize size = buffer->sizeOfPlane(plane);
            for (int n = 0; n < size.width * size.height; ++n) {
                seed = seed * 1664525 + 1013904223;
                buffer->baseAddressOfPlane(plane)[n] =
                    static_cast<std::uint8_t>(100 + n % size.width + (seed >> 28));
            }
        }
        return VTFrameProcessorFrame::initWithBuffer(buffer, MediaTime{1, 30});
    }

    VTFrameProcessorFrameRef scaled(const VTFrameProcessorFrameRef& source,
                                    const VTFrameProcessorFrameRef& previous,
                                    const VTFrameProcessorFrameRef& previousOutput) {
        const PixelSize large{2 * kFrame.width, 2 * kFrame.height};
        const auto output = VTFrameProcessorFrame::initWithBuffer(
            std::make_shared<CVPixelBuffer>(large, CVPixelFormat::yCbCr8Planar420),
            MediaTime{1, 30});
        const auto parameters = VTSuperResolutionScalerParameters::init(
            source, previous, previousOutput, VTSuperResolutionScalerParameters::kSequential,
            output);
        processor_->process(*parameters,
                            [](const auto&, const auto& error) { EXPECT_FALSE(error); });
        return output;
    }

private:
    WorkerPool pool_{2};
    DesktopVideoToolbox port_{pool_};
    std::unique_ptr<VTFrameProcessor> processor_ = port_.makeFrameProcessor();
};

bool sameLuma(const VTFrameProcessorFrameRef& a, const VTFrameProcessorFrameRef& b) {
    return std::memcmp(a->buffer()->baseAddress(), b->buffer()->baseAddress(),
                       4 * kFrame.width * kFrame.height) == 0;
}

TEST(DesktopVideoToolbox, TheFrameBeforeIsNotUsedOrAForeignOneIs) {
    const auto first = Session::source(1), second = Session::source(2);
    Session fresh;
    const auto alone = fresh.scaled(second, nullptr, nullptr);

    Session session;
    const auto output = session.scaled(first, nullptr, nullptr);
    EXPECT_FALSE(sameLuma(session.scaled(second, first, output), alone)) << "not used";

    session.scaled(first, nullptr, nullptr);
    EXPECT_TRUE(sameLuma(session.scaled(second, nullptr, nullptr), alone)) << "used unasked";

    session.scaled(first, nullptr, nullptr);
    EXPECT_TRUE(sameLuma(session.scaled(second, first, output), alone)) << "not its last output";
}

}  // namespace
}  // namespace quillmere
