// What every answer to the Graphics port has to do, shown on the fake and on the desktop's.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "Desktop/Graphics/DesktopGraphics.h"
#include "Tests/Contracts/GraphicsPictures.h"
#include "Tests/Fakes/FakeGraphics.h"

namespace quillmere {
namespace {

using Colours = std::vector<std::uint32_t>;

constexpr std::uint32_t red = 0xff0000ff;
constexpr std::uint32_t green = 0x00ff00ff;
constexpr std::uint32_t blue = 0x0000ffff;
constexpr std::uint32_t white = 0xffffffff;
constexpr std::uint32_t clear = 0;

enum class Answer { fake, desktop };

class GraphicsContract : public testing::TestWithParam<Answer> {
protected:
    Graphics& graphics() {
        if (GetParam() == Answer::fake) return fake_;
        return desktop_;
    }

    /// What a transparent canvas of `size` shows after one draw.
    CGImage drawn(Size size, const UIImage& picture, const Rect& rect) {
        const auto context = graphics().beginImageContext(size);
        context->drawInRect(picture, rect);
        return *context->imageFromCurrentContext()->cgImage();
    }

private:
    CallLog log_;
    FakeGraphics fake_{log_};
    DesktopGraphics desktop_;
};

TEST_P(GraphicsContract, ACanvasStartsTransparentOrBlack) {
    const auto context = graphics().beginImageContext({2, 1});
    EXPECT_EQ(coloursOf(*context->imageFromCurrentContext()->cgImage()), (Colours{clear, clear}));
    const auto opaque = graphics().beginImageContextWithOptions({1, 1}, true, 1);
    EXPECT_EQ(coloursOf(*opaque->imageFromCurrentContext()->cgImage()), Colours{0x000000ff});
}

struct Side {
    Size points;
    double scale;
    PixelSize pixels;
};

TEST_P(GraphicsContract, ACanvasHasWholePixelsAndNeverNone) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Side sides[] = {{{3, 2}, 1, {3, 2}},
                          {{3, 2}, 2, {6, 4}},
                          {{1000 / 3.0, 700 / 3.0}, 3, {1000, 700}},  // what a 3x picture says
                          {{2.4, 2.5}, 1, {2, 3}},
                          {{0.2, 0}, 1, {1, 1}},
                          {{-5, nan}, 1, {1, 1}}};
    for (const Side& side : sides) {
        const auto context =
            graphics().beginImageContextWithOptions(side.points, false, side.scale);
        const auto picture = context->imageFromCurrentContext();
        EXPECT_EQ(picture->cgImage()->size(), side.pixels) << side.points.width;
        EXPECT_EQ(picture->scale(), side.scale);
    }
}

TEST_P(GraphicsContract, ACanvasThatNoMemoryHoldsIsOpenAndGivesNoPicture) {
    const auto context = graphics().beginImageContext({2e9, 2e9});
    ASSERT_NE(context, nullptr);
    context->drawInRect(UIImage(bitmapOf(1, {red})), {0, 0, 5, 5});
    EXPECT_FALSE(context->imageFromCurrentContext());
}

TEST_P(GraphicsContract, ADrawAtItsOwnSizeIsAnExactCopyClippedToTheCanvas) {
    const UIImage picture(bitmapOf(2, {red, 0x11223344, 0x0a0b0c7f, white}, 20));
    EXPECT_EQ(coloursOf(drawn({2, 2}, picture, {0, 0, 2, 2})),
              (Colours{red, 0x11223344, 0x0a0b0c7f, white}));
    EXPECT_EQ(coloursOf(drawn({2, 2}, picture, {1, -1, 2, 2})),
              (Colours{clear, 0x0a0b0c7f, clear, clear}));
    EXPECT_EQ(coloursOf(drawn({2, 2}, picture, {-1, 1, 2, 2})),
              (Colours{clear, clear, 0x11223344, clear}));
    EXPECT_EQ(coloursOf(drawn({2, 2}, picture, {2, 0, 2, 2})), Colours(4, clear));
}

TEST_P(GraphicsContract, ADrawIsSourceOverWhatIsThere) {
    const auto context = graphics().beginImageContext({2, 1});
    context->drawInRect(UIImage(bitmapOf(2, {0x0000c8ff, blue})), {0, 0, 2, 1});
    context->drawInRect(UIImage(bitmapOf(2, {0x40000080, clear})), {0, 0, 2, 1});
    EXPECT_EQ(coloursOf(*context->imageFromCurrentContext()->cgImage()),
              (Colours{0x400064ff, blue}));
}

TEST_P(GraphicsContract, EdgesAreSmearedByDrawsThatAreOffByAPixel) {
    // How a tile that is cut short gets one more line on its right, below and at the corner.
    const UIImage picture(bitmapOf(2, {red, green, blue, white}));
    const auto context = graphics().beginImageContext({4, 4});
    for (const Point& at : {Point{1, 0}, Point{0, 1}, Point{1, 1}, Point{0, 0}}) {
        context->drawInRect(picture, {at.x, at.y, 2, 2});
    }
    EXPECT_EQ(coloursOf(*context->imageFromCurrentContext()->cgImage()),
              (Colours{red, green, green, clear, blue, white, green, clear,  //
                       blue, blue, white, clear, clear, clear, clear, clear}));
}

TEST_P(GraphicsContract, APictureTakenKeepsItsPixelsWhenDrawingGoesOn) {
    const auto context = graphics().beginImageContext({1, 1});
    context->drawInRect(UIImage(bitmapOf(1, {red})), {0, 0, 1, 1});
    const auto before = context->imageFromCurrentContext();
    context->drawInRect(UIImage(bitmapOf(1, {blue})), {0, 0, 1, 1});
    const auto after = context->imageFromCurrentContext();
    EXPECT_EQ(coloursOf(*before->cgImage()), Colours{red});
    EXPECT_EQ(coloursOf(*after->cgImage()), Colours{blue});
}

TEST_P(GraphicsContract, EachOrientationIsDrawnUpright) {
    struct Case {
        UIImageOrientation orientation;
        int storedWidth;
        Colours stored;
    };
    // All show, upright:  red  green
    //                     blue white
    //                     clear red
    using enum UIImageOrientation;
    const Colours upright{red, green, blue, white, clear, red};
    const Case cases[] = {{up, 2, upright},
                          {down, 2, {red, clear, white, blue, green, red}},
                          {left, 3, {clear, blue, red, red, white, green}},
                          {right, 3, {green, white, red, red, blue, clear}},
                          {upMirrored, 2, {green, red, white, blue, red, clear}},
                          {downMirrored, 2, {clear, red, blue, white, red, green}},
                          {leftMirrored, 3, {red, blue, clear, green, white, red}},
                          {rightMirrored, 3, {red, white, green, clear, blue, red}}};
    for (const Case& c : cases) {
        for (const std::size_t bytesPerRow : {0, 40}) {
            const UIImage picture(bitmapOf(c.storedWidth, c.stored, bytesPerRow), 1, c.orientation);
            EXPECT_EQ(picture.size(), (Size{2, 3}));
            EXPECT_EQ(coloursOf(drawn({2, 3}, picture, {0, 0, 2, 3})), upright)
                << static_cast<int>(c.orientation) << " at " << bytesPerRow;
        }
    }
}

TEST_P(GraphicsContract, TheScaleOfACanvasMultipliesPositionsAndTheSizeOfAPicture) {
    const UIImage picture(bitmapOf(2, {red, green, blue, white}), 2);  // one point by one
    const auto context = graphics().beginImageContextWithOptions({2, 2}, false, 2);
    context->drawInRect(picture, {0.5, 1, 1, 1});
    EXPECT_EQ(coloursOf(*context->imageFromCurrentContext()->cgImage()),
              (Colours{clear, clear, clear, clear, clear, clear, clear, clear,  //
                       clear, red, green, clear, clear, blue, white, clear}));
}

TEST_P(GraphicsContract, ALineThinnerThanAPixelStaysVisible) {
    const UIImage picture(bitmapOf(1, Colours(8, red)));
    EXPECT_EQ(coloursOf(drawn({3, 1}, picture, {1, 0, 0.1, 1})), (Colours{clear, red, clear}));
    EXPECT_EQ(coloursOf(drawn({3, 1}, picture, {1, 0, 0, 0})), (Colours{clear, red, clear}));
    EXPECT_EQ(coloursOf(drawn({3, 1}, picture, {1, 0, -7, 1})), (Colours{clear, red, clear}));
}

TEST_P(GraphicsContract, APlainColourStaysPlainAtEverySize) {
    const std::uint32_t colour = 0x30201080;
    const UIImage picture(bitmapOf(7, Colours(35, colour)));
    const Size sizes[] = {{1, 1}, {3, 2}, {6, 5}, {7, 4}, {20, 5}, {5, 20}, {31, 33}, {64, 1}};
    for (const Size& size : sizes) {
        const Colours colours = coloursOf(drawn(size, picture, {0, 0, size.width, size.height}));
        EXPECT_EQ(colours, Colours(colours.size(), colour)) << size.width << 'x' << size.height;
    }
}

TEST_P(GraphicsContract, NothingIsDrawnOfNoBitmapOrNowhere) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const UIImage picture(bitmapOf(1, {red}));
    EXPECT_EQ(coloursOf(drawn({1, 1}, UIImage::withoutBitmap({1, 1}), {0, 0, 1, 1})),
              Colours{clear});
    EXPECT_EQ(coloursOf(drawn({1, 1}, picture, {nan, 0, 1, 1})), Colours{clear});
    EXPECT_EQ(coloursOf(drawn({1, 1}, picture, {0, 0, infinity, 1})), Colours{clear});
    EXPECT_EQ(coloursOf(drawn({1, 1}, picture, {1e300, 0, 1, 1})), Colours{clear});
}

TEST_P(GraphicsContract, ACutIsRoundedOutwardsAndLimitedToTheBitmap) {
    const CGImage bitmap = bitmapOf(3, {0x1ff, 0x2ff, 0x3ff, 0x4ff, 0x5ff, 0x6ff}, 16);
    struct Case {
        Rect rect;
        PixelSize size;
        Colours colours;
    };
    const double huge = 1e300;
    const Case cases[] = {{{1, 0, 2, 1}, {2, 1}, {0x2ff, 0x3ff}},
                          {{0.9, 0.2, 0.2, 0.1}, {2, 1}, {0x1ff, 0x2ff}},
                          {{2, 1, 256, 256}, {1, 1}, {0x6ff}},
                          {{-5, -5, 6, 7}, {1, 2}, {0x1ff, 0x4ff}},
                          {{-huge, 1, 2 * huge, huge}, {3, 1}, {0x4ff, 0x5ff, 0x6ff}}};
    for (const Case& c : cases) {
        const auto cut = graphics().imageInRect(bitmap, c.rect);
        ASSERT_TRUE(cut) << c.rect.x;
        EXPECT_EQ(cut->size(), c.size) << c.rect.x;
        EXPECT_EQ(coloursOf(*cut), c.colours) << c.rect.x;
    }
}

TEST_P(GraphicsContract, ACutWithNoPixelIsNothing) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const CGImage bitmap = bitmapOf(2, {red, green});
    const Rect rects[] = {{2, 0, 1, 1}, {0, 1, 1, 1},  {-3, 0, 3, 1},  {0, 0, 0, 1},
                          {1, 0, 1, 0}, {1, 0, -1, 1}, {nan, 0, 1, 1}, {0, 0, nan, 1}};
    for (const Rect& rect : rects) EXPECT_FALSE(graphics().imageInRect(bitmap, rect)) << rect.x;
}

TEST_P(GraphicsContract, ACutOutlivesTheBitmapAndCanBeDrawn) {
    std::optional<CGImage> cut;
    {
        const CGImage bitmap = bitmapOf(3, {red, green, blue, white, clear, red});
        cut = graphics().imageInRect(bitmap, {1, 0, 2, 2});
    }
    EXPECT_EQ(coloursOf(drawn({2, 2}, UIImage(*cut), {0, 0, 2, 2})),
              (Colours{green, blue, clear, red}));
}

std::string nameOf(const testing::TestParamInfo<Answer>& info) {
    return info.param == Answer::fake ? "Fake" : "Desktop";
}
INSTANTIATE_TEST_SUITE_P(Port, GraphicsContract, testing::Values(Answer::fake, Answer::desktop),
                         nameOf);

}  // namespace
}  // namespace quillmere
