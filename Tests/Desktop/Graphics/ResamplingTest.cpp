// Resampling has no twin to be equal to; these are the properties that make it good.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "Desktop/Graphics/DesktopGraphics.h"
#include "Tests/Contracts/GraphicsPictures.h"
#include "Tests/Fakes/FakeGraphics.h"

namespace quillmere {
namespace {

CGImage painted(int width, int height, const std::function<std::uint32_t(int x, int y)>& colour) {
    std::vector<std::uint32_t> colours;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) colours.push_back(colour(x, y));
    }
    return bitmapOf(width, colours);
}

CGImage stretched(const CGImage& bitmap, PixelSize size, Graphics&& graphics = DesktopGraphics()) {
    const Size points{double(size.width), double(size.height)};
    const auto context = graphics.beginImageContext(points);
    context->drawInRect(UIImage(bitmap), {0, 0, points.width, points.height});
    return *context->imageFromCurrentContext()->cgImage();
}

// Opaque where `opaque`, else with holes; strong contrasts, so that kernels overshoot.
CGImage blocks(int width, int height, bool opaque) {
    return painted(width, height, [=](int x, int y) -> std::uint32_t {
        const unsigned random =
            static_cast<unsigned>((x / 5) * 7919 + (y / 7) * 104729) * 2654435761u;
        const std::uint32_t alpha = opaque ? 255 : (random >> 9) % 3 * 127;
        const std::uint32_t value = random & 1 ? alpha : 0;
        return value << 24 | (alpha - value) << 16 | alpha / 3 << 8 | alpha;
    });
}

std::array<double, 4> means(const CGImage& bitmap) {
    std::array<double, 4> sums{};
    for (int y = 0; y < bitmap.size().height; ++y) {
        for (int i = 0; i < 4 * bitmap.size().width; ++i) sums[i % 4] += bitmap.row(y)[i];
    }
    for (double& sum : sums) sum /= double(bitmap.size().width) * bitmap.size().height;
    return sums;
}

TEST(Resampling, ReducingKeepsTheMeanOfEveryChannel) {
    const CGImage bitmap = blocks(420, 315, true);
    const PixelSize sizes[] = {{419, 314}, {300, 300}, {210, 157}, {100, 75}, {41, 200}, {8, 6}};
    const auto before = means(bitmap);
    for (const PixelSize& size : sizes) {
        const auto after = means(stretched(bitmap, size));
        for (std::size_t c = 0; c < 4; ++c) {
            EXPECT_NEAR(after[c], before[c], 1) << size.width << ", channel " << c;
        }
    }
}

TEST(Resampling, AFineCheckerboardBecomesGreyAndNoPattern) {
    const CGImage board = painted(512, 512, [](int x, int y) -> std::uint32_t {
        return (x + y) % 2 == 0 ? 0xffffffff : 0x000000ff;
    });
    for (const PixelSize& size : {PixelSize{256, 256}, {200, 190}, {171, 171}, {64, 60}, {7, 9}}) {
        const CGImage reduced = stretched(board, size);
        // Within a few pixels of the border a kernel sees the border instead.
        const int margin = size.width > 20 ? 4 : 1;
        for (int y = margin; y < size.height - margin; ++y) {
            for (int x = margin; x < size.width - margin; ++x) {
                ASSERT_NEAR(reduced.row(y)[4 * x], 127.5, 2)
                    << size.width << " at " << x << ',' << y;
            }
        }
    }
}

// Rings that get finer outwards show every frequency at once; what can't be kept must be grey.
TEST(Resampling, RingsTooFineForTheResultLeaveNoGhosts) {
    constexpr int side = 600;
    const CGImage rings = painted(side, side, [](int x, int y) -> std::uint32_t {
        const double r2 = std::pow(x - side / 2, 2) + std::pow(y - side / 2, 2);
        const auto v =
            static_cast<std::uint32_t>(127.5 + 127 * std::cos(r2 * std::acos(-1) / side));
        return v << 24 | v << 16 | v << 8 | 0xff;
    });
    constexpr int small = 222;
    const CGImage reduced = stretched(rings, {small, small});
    for (int y = 4; y < small - 4; ++y) {
        for (int x = 4; x < small - 4; ++x) {
            // From here on the rings are finer than the kernel lets through.
            if (std::hypot(x - small / 2, y - small / 2) < 76) continue;
            ASSERT_NEAR(reduced.row(y)[4 * x], 127, 2) << x << ',' << y;
        }
    }
}

TEST(Resampling, NoColourEverExceedsItsAlpha) {
    const CGImage bitmap = blocks(200, 150, false);
    const PixelSize sizes[] = {{100, 75}, {90, 140}, {37, 31}, {333, 250}, {150, 400}};
    for (const PixelSize& size : sizes) {
        const CGImage result = stretched(bitmap, size);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                const std::uint8_t* p = result.row(y) + 4 * x;
                ASSERT_LE(std::max({p[0], p[1], p[2]}), p[3])
                    << size.width << " at " << x << ',' << y;
            }
        }
    }
}

// A shift by half a pixel is the classic fault; on a straight slope it shows as an offset.
TEST(Resampling, ASlopeStaysWhereItIs) {
    const CGImage slope = painted(256, 64, [](int x, int) -> std::uint32_t {
        const auto value = static_cast<std::uint32_t>(x);
        return value << 24 | value << 16 | value << 8 | 0xff;
    });
    for (const int width : {32, 50, 100, 128, 200, 255, 300, 512, 700}) {
        const CGImage result = stretched(slope, {width, 40});
        const int margin = 3 + 3 * width / 256;
        for (int x = margin; x < width - margin; ++x) {
            const double expected = (x + 0.5) * 256 / width - 0.5;
            ASSERT_NEAR(result.row(20)[4 * x], expected, 1.01) << width << " at " << x;
        }
    }
}

TEST(Resampling, ReducingIsCloseToTheAreaTwinOnASmoothPicture) {
    const CGImage waves = painted(300, 200, [](int x, int y) -> std::uint32_t {
        const auto r = static_cast<std::uint32_t>(127.5 + 120 * std::sin(x / 40.0));
        const auto g = static_cast<std::uint32_t>(127.5 + 120 * std::cos(y / 30.0));
        return r << 24 | g << 16 | (r + g) / 2 << 8 | 0xff;
    });
    CallLog log;
    for (const PixelSize& size : {PixelSize{150, 100}, {133, 71}, {60, 40}, {20, 190}}) {
        const CGImage fast = stretched(waves, size);
        const CGImage twin = stretched(waves, size, FakeGraphics(log));
        for (int y = 0; y < size.height; ++y) {
            for (int i = 0; i < 4 * size.width; ++i) {
                ASSERT_NEAR(fast.row(y)[i], twin.row(y)[i], 3)
                    << size.width << " at " << i / 4 << ',' << y;
            }
        }
    }
}

TEST(Resampling, APartOfAHugeDrawIsThatPartOfTheWhole) {
    const CGImage bitmap = blocks(40, 30, false);
    const UIImage whole(stretched(bitmap, {400, 300}));
    DesktopGraphics graphics;
    const auto context = graphics.beginImageContext({50, 60});
    context->drawInRect(UIImage(bitmap), {-200, -100, 400, 300});
    const CGImage part = *context->imageFromCurrentContext()->cgImage();
    EXPECT_EQ(coloursOf(part),
              coloursOf(*graphics.imageInRect(*whole.cgImage(), {200, 100, 50, 60})));

    // Far beyond what any bitmap could hold: only what is seen may be made.
    const auto enormous = graphics.beginImageContext({8, 8});
    enormous->drawInRect(UIImage(painted(2, 2, [](int, int) { return 0x102030ffu; })),
                         {-1e12, -1e12, 2e12, 2e12});
    EXPECT_EQ(coloursOf(*enormous->imageFromCurrentContext()->cgImage()),
              std::vector<std::uint32_t>(64, 0x102030ff));
}

TEST(Resampling, AVeryLongPictureShrinksToOnePixel) {
    const CGImage line = painted(20000, 1, [](int, int) { return 0x806040ffu; });
    EXPECT_EQ(coloursOf(stretched(line, {1, 1})), std::vector<std::uint32_t>{0x806040ff});
}

TEST(Cutting, SharesThePixelsInsteadOfCopyingThem) {
    const CGImage bitmap = blocks(20, 20, true);
    const auto cut = DesktopGraphics().imageInRect(bitmap, {5, 6, 7, 8});
    EXPECT_EQ(cut->row(0), bitmap.row(6) + 4 * 5);
    EXPECT_EQ(cut->bytesPerRow(), bitmap.bytesPerRow());
}

}  // namespace
}  // namespace quillmere
