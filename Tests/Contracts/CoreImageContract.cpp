// What every answer to the Core Image port has to do, shown on the fake and on the desktop's.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Base/WorkerPool.h"
#include "Desktop/CoreImage/DesktopCoreImage.h"
#include "Tests/Contracts/GraphicsPictures.h"
#include "Tests/Fakes/FakeCoreImage.h"

namespace quillmere {
namespace {

enum class Answer { fake, desktop };

class CoreImageContract : public testing::TestWithParam<Answer> {
protected:
    // A picture of `colours`, one 32-bit 0xRRGGBBAA a pixel, `width` in a row, top row first.
    CIImageRef image(int width, const std::vector<std::uint32_t>& colours) {
        return coreImage().imageWithImage(UIImage(bitmapOf(width, colours)));
    }

    std::vector<std::uint32_t> render(const CIImageRef& picture, const Rect& rect) {
        const auto bitmap = coreImage().makeContext({})->createCGImage(*picture, rect);
        return bitmap ? coloursOf(*bitmap) : std::vector<std::uint32_t>{};
    }

    CoreImage& coreImage() {
        if (GetParam() == Answer::fake) return fake_;
        return desktop_;
    }

private:
    CallLog log_;
    FakeCoreImage fake_{log_};
    WorkerPool pool_{1};  // a death test forks, and wants no threads beside it
    DesktopCoreImage desktop_{pool_};
};

using Colours = std::vector<std::uint32_t>;

constexpr std::uint32_t red = 0xff0000ff;
constexpr std::uint32_t green = 0x00ff00ff;
constexpr std::uint32_t blue = 0x0000ffff;
constexpr std::uint32_t white = 0xffffffff;
constexpr std::uint32_t clear = 0;

TEST_P(CoreImageContract, APictureComesBackWithItsFirstRowAtTheTop) {
    const Colours colours{red, green, blue, white, clear, 0x10203040};
    const CIImageRef picture = image(2, colours);
    EXPECT_EQ(picture->extent(), (Rect{0, 0, 2, 3}));
    EXPECT_EQ(render(picture, {0, 0, 2, 3}), colours);
    EXPECT_EQ(render(picture, {1, 2, 1, 1}), Colours{green}) << "y must point up";
}

TEST_P(CoreImageContract, APaddedBitmapAndAPixelBufferAreReadRowByRow) {
    const Colours colours{red, green, blue, white};
    const CGImage padded = bitmapOf(2, colours, 12);
    EXPECT_EQ(render(coreImage().imageWithImage(UIImage(padded)), {0, 0, 2, 2}), colours);

    const auto buffer = std::make_shared<CVPixelBuffer>(PixelSize{2, 2}, CVPixelFormat::rgba8);
    std::copy_n(bitmapOf(2, colours).row(0), 16, buffer->baseAddress());
    const CIImageRef picture = coreImage().imageWithCVPixelBuffer(buffer);
    EXPECT_EQ(picture->extent(), (Rect{0, 0, 2, 2}));
    EXPECT_EQ(render(picture, {0, 0, 2, 2}), colours);
}

TEST_P(CoreImageContract, ABGRABufferIsReadAndWrittenInItsOwnOrderOnBlack) {
    const auto buffer = std::make_shared<CVPixelBuffer>(PixelSize{1, 2}, CVPixelFormat::bgra8);
    std::copy_n(bitmapOf(1, {red, 0x10203040}).row(0), 8, buffer->baseAddress());
    const CIImageRef picture = coreImage().imageWithCVPixelBuffer(buffer);
    EXPECT_EQ(render(picture, {0, 0, 1, 2}), (Colours{blue, 0x30201040}));
    EXPECT_EQ(coreImage().imageWithCVPixelBuffer(
                  std::make_shared<CVPixelBuffer>(PixelSize{2, 2}, CVPixelFormat::yCbCr8Planar420)),
              nullptr);

    // The picture's part lies at the top left of a larger buffer, and is cut by a smaller one.
    for (const PixelSize size : {PixelSize{2, 3}, PixelSize{1, 1}}) {
        CVPixelBuffer target(size, CVPixelFormat::bgra8);
        std::fill_n(target.baseAddress(), 4 * size.width * size.height, std::uint8_t{7});
        ASSERT_TRUE(
            coreImage().makeContext({})->renderToCVPixelBuffer(*picture, target, {0, 0, 1, 2}));
        Colours expected{0xff0000ff};  // blue
        if (size.width == 2) expected = {red, 0xff, 0x102030ff, 0xff, 0xff, 0xff};
        Colours found;
        for (int i = 0; i < size.width * size.height; ++i) {
            const std::uint8_t* p = target.baseAddress() + 4 * i;
            found.push_back(static_cast<std::uint32_t>(p[0] << 24 | p[1] << 16 | p[2] << 8 | p[3]));
        }
        EXPECT_EQ(found, expected) << size.width;
    }
}

/// Green, and counts how often it was asked.
class GreenBacking final : public CVPixelBufferBacking {
public:
    void fill(CVPixelBuffer& buffer) const override {
        ++fills;
        for (int i = 0; i < buffer.size().width * buffer.size().height; ++i) {
            std::copy_n(bitmapOf(1, {green}).row(0), 4, buffer.baseAddress() + 4 * i);
        }
    }
    mutable int fills = 0;
};

TEST_P(CoreImageContract, ABuffersBackingGivesItsPixelsOnceAndGoesWhenTheyAreWritten) {
    const auto backing = std::make_shared<GreenBacking>();
    const auto source = std::make_shared<CVPixelBuffer>(PixelSize{2, 1}, CVPixelFormat::bgra8);
    source->setBacking(backing);
    const CIImageRef picture = coreImage().imageWithCVPixelBuffer(source);
    CVPixelBuffer target(source->size(), source->format());
    ASSERT_TRUE(
        coreImage().makeContext({})->renderToCVPixelBuffer(*picture, target, picture->extent()));
    EXPECT_EQ(std::as_const(target).baseAddress()[5], 255);
    const int fills = backing->fills;
    EXPECT_EQ(std::as_const(target).baseAddress()[1], 255);
    EXPECT_EQ(backing->fills, fills);
    target.baseAddress()[1] = 7;
    EXPECT_EQ(target.backing(), nullptr);
    EXPECT_EQ(target.baseAddress()[1], 7);
    EXPECT_EQ(target.baseAddress()[5], 255) << "the rest is as it was";

    EXPECT_EQ(render(picture, {0, 0, 2, 1}), (Colours{green, green}));
    ASSERT_TRUE(coreImage().makeContext({})->renderToCVPixelBuffer(*picture, target, {1, 0, 1, 1}));
    EXPECT_EQ(target.backing(), nullptr) << "a part isn't the whole";
    EXPECT_EQ(std::as_const(target).baseAddress()[5], 0);
}

TEST_P(CoreImageContract, APictureWithoutABitmapGivesNullAndTheOrientationIsNotApplied) {
    EXPECT_EQ(coreImage().imageWithImage(UIImage::withoutBitmap({2, 2})), nullptr);
    const UIImage turned(bitmapOf(2, {red, green}), 1, UIImageOrientation::left);
    EXPECT_EQ(coreImage().imageWithImage(turned)->extent(), (Rect{0, 0, 2, 1}));
}

TEST_P(CoreImageContract, ACropKeepsItsPlace) {
    const CIImageRef cropped =
        image(2, {red, green, blue, white})->imageByCroppingToRect({1, -5, 9, 6});
    EXPECT_EQ(cropped->extent(), (Rect{1, 0, 1, 1}));
    EXPECT_EQ(render(cropped, {0, 0, 2, 2}), (Colours{clear, clear, clear, white}));
}

TEST_P(CoreImageContract, ACropBesideTheImageIsEmptyAndHarmless) {
    const CIImageRef picture = image(1, {red});
    const CIImageRef nothing = picture->imageByCroppingToRect({5, 5, 2, 2});
    EXPECT_TRUE(nothing->extent().isEmpty());
    EXPECT_EQ(render(nothing, {5, 5, 1, 1}), Colours{clear});
    const CIImageRef moved = nothing->imageByApplyingTransform(AffineTransform::translation(9, 9));
    EXPECT_TRUE(moved->extent().isEmpty());
    EXPECT_EQ(picture->imageByCompositingOverImage(moved)->extent(), picture->extent());
}

TEST_P(CoreImageContract, ATranslationMovesUpAndRight) {
    const CIImageRef moved =
        image(1, {red, blue})->imageByApplyingTransform(AffineTransform::translation(-1, 3));
    EXPECT_EQ(moved->extent(), (Rect{-1, 3, 1, 2}));
    EXPECT_EQ(render(moved, {-1, 3, 1, 3}), (Colours{clear, red, blue}));
}

TEST_P(CoreImageContract, AReductionIsTheMeanOfEachBlockWithHalvesUp) {
    const CIImageRef halved = image(4, {0x00000000, 0x01000000, 0x0a0000ff, 0x0a0000ff,  //
                                        0x00000000, 0x01000000, 0x0b0000ff, 0x0c0000ff})
                                  ->imageByApplyingTransform(AffineTransform::scale(0.5, 0.5));
    EXPECT_EQ(halved->extent(), (Rect{0, 0, 2, 1}));
    EXPECT_EQ(render(halved, {0, 0, 2, 1}), (Colours{0x01000000, 0x0b0000ff}));

    const CIImageRef third =
        image(3, {0, 0, 0, 0, 0x24, 0, 0, 0, 5})
            ->imageByApplyingTransform(AffineTransform::scale(1.0 / 3, 1.0 / 3));
    EXPECT_EQ(render(third, {0, 0, 1, 1}), Colours{5});  // 41 / 9 = 4.6
}

TEST_P(CoreImageContract, AReductionsBlocksStartAtTheOriginWhereverTheImageLies) {
    const CIImageRef halved = image(2, {red, red, red, red})
                                  ->imageByApplyingTransform(AffineTransform::translation(6, -4))
                                  ->imageByApplyingTransform(AffineTransform::scale(0.5, 0.5));
    EXPECT_EQ(halved->extent(), (Rect{3, -2, 1, 1}));
    EXPECT_EQ(render(halved, {2, -2, 2, 1}), (Colours{clear, red}));
}

TEST_P(CoreImageContract, CompositingIsSourceOverAndCoversTheUnion) {
    const CIImageRef top = image(2, {0x40000080, red});
    const CIImageRef background =
        image(1, {0x0000c8ff})->imageByApplyingTransform(AffineTransform::translation(0, 0));
    const CIImageRef far =
        image(1, {white})->imageByApplyingTransform(AffineTransform::translation(4, 1));
    const CIImageRef all =
        top->imageByCompositingOverImage(background)->imageByCompositingOverImage(far);
    EXPECT_EQ(all->extent(), (Rect{0, 0, 5, 2}));
    // 200 * 127 / 255 = 99.6
    EXPECT_EQ(render(all, {0, 0, 5, 2}), (Colours{clear, clear, clear, clear, white,  //
                                                  0x400064ff, red, clear, clear, clear}));
}

TEST_P(CoreImageContract, TilesLaidOverEachOtherLeaveNoSeam) {
    // Tiles of 8 that overlap by 2, the later one on top, as an enlarged picture is put together.
    CIImageRef accumulated;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const auto shade = static_cast<std::uint32_t>(row * 3 + column) * 0x10101000 + 0xff;
            const CIImageRef tile = image(8, Colours(64, shade))
                                        ->imageByCroppingToRect({column == 0 ? 0.0 : 1.0, 1, 7, 7})
                                        ->imageByApplyingTransform(AffineTransform::translation(
                                            column * 6, (3 - row) * 6));
            accumulated = accumulated ? tile->imageByCompositingOverImage(accumulated) : tile;
        }
    }
    const Rect extent = accumulated->extent();
    EXPECT_EQ(extent, (Rect{0, 7, 20, 19}));
    const Colours colours = render(accumulated, extent);
    ASSERT_EQ(colours.size(), 20u * 19u);
    for (std::uint32_t y = 0; y < 19; ++y) {
        for (std::uint32_t x = 0; x < 20; ++x) {
            // A later tile's left and top edges win.
            const std::uint32_t column = x < 7 ? 0 : x < 13 ? 1 : 2;
            const std::uint32_t row = y < 6 ? 0 : y < 12 ? 1 : 2;
            ASSERT_EQ(colours[y * 20 + x], (row * 3 + column) * 0x10101000 + 0xff) << x << ',' << y;
        }
    }
}

TEST_P(CoreImageContract, RenderingNothingOrFarTooMuchGivesNull) {
    const CIImageRef picture = image(1, {red});
    const auto context = coreImage().makeContext({true, false});
    EXPECT_FALSE(context->createCGImage(*picture, {}));
    EXPECT_FALSE(context->createCGImage(*picture, {0, 0, 5, 0}));
    EXPECT_FALSE(context->createCGImage(*picture, {0, 0, 2147483647, 2147483647}));
    EXPECT_FALSE(context->createCGImage(*picture, {0, 0, 1e12, 1}));
}

TEST_P(CoreImageContract, AnImageOutlivesWhatItWasMadeFrom) {
    CIImageRef picture = image(1, {red});
    picture = picture->imageByApplyingTransform(AffineTransform::translation(1, 0))
                  ->imageByCompositingOverImage(image(1, {blue}));
    EXPECT_EQ(render(picture, {0, 0, 2, 1}), (Colours{blue, red}));
}

using CoreImageContractDeathTest = CoreImageContract;

TEST_P(CoreImageContractDeathTest, OtherTransformsAndFractionsOfPixelsEndTheProcess) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const CIImageRef picture = image(2, {red, green, blue, white});
    const AffineTransform wrong[] = {AffineTransform::scale(2, 2),      // enlarging
                                     AffineTransform::scale(0.4, 0.4),  // not 1/n
                                     AffineTransform::scale(0.5, 0.25),
                                     AffineTransform::scale(-0.5, -0.5),
                                     AffineTransform::scale(0, 0),
                                     AffineTransform::scale(1.0 / 3, 1.0 / 3),  // 2 is no multiple
                                     AffineTransform::scale(nan, nan),
                                     AffineTransform::translation(0.5, 0),
                                     AffineTransform::translation(nan, 0),
                                     {0.5, 0, 0, 0.5, 1, 0},
                                     {0, 1, -1, 0, 0, 0}};
    for (const AffineTransform& transform : wrong) {
        EXPECT_EXIT(picture->imageByApplyingTransform(transform), testing::KilledBySignal(SIGABRT),
                    "")
            << transform.a << ' ' << transform.tx;
    }
    EXPECT_EXIT(picture->imageByCroppingToRect({0.5, 0, 1, 1}), testing::KilledBySignal(SIGABRT),
                "");
    EXPECT_EXIT(render(picture, {0, 0, 1.5, 1}), testing::KilledBySignal(SIGABRT), "");
}

std::string nameOf(const testing::TestParamInfo<Answer>& info) {
    return info.param == Answer::fake ? "Fake" : "Desktop";
}
INSTANTIATE_TEST_SUITE_P(Port, CoreImageContract, testing::Values(Answer::fake, Answer::desktop),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Port, CoreImageContractDeathTest,
                         testing::Values(Answer::fake, Answer::desktop), nameOf);

}  // namespace
}  // namespace quillmere
