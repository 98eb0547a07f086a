#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "Desktop/Graphics/DesktopGraphics.h"
#include "Quillmere/Views/Home/CropViewController.h"

namespace quillmere {
namespace {

/// Its red is 1, 2, 3... from the top left corner, row by row.
UIImage numbered(PixelSize size, UIImageOrientation orientation = UIImageOrientation::up) {
    const std::size_t count = static_cast<std::size_t>(size.width) * size.height;
    const std::shared_ptr<std::uint8_t> pixels(new std::uint8_t[count * 4],
                                               std::default_delete<std::uint8_t[]>());
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t pixel[4] = {static_cast<std::uint8_t>(i + 1), 0, 0, 255};
        std::memcpy(pixels.get() + i * 4, pixel, 4);
    }
    return UIImage(CGImage(size, static_cast<std::size_t>(size.width) * 4, pixels), 1, orientation);
}

std::string cropped(const CropViewController& crop) {
    DesktopGraphics graphics;
    const auto image = crop.croppedImage(graphics);
    if (!image) return "nothing";
    std::string text;
    const CGImage& bitmap = *image->cgImage();
    for (int y = 0; y < bitmap.size().height; ++y) {
        if (y > 0) text += "/";
        for (int x = 0; x < bitmap.size().width; ++x) {
            text += (x > 0 ? " " : "") + std::to_string(bitmap.row(y)[x * 4]);
        }
    }
    return text;
}

TEST(CropTest, TurningAndFlippingTakeThePixelsAlong) {
    // 1 2 3
    // 4 5 6
    const auto after = [](const char* steps) {
        CropViewController crop(numbered({3, 2}));
        for (const char* step = steps; *step; ++step) {
            if (*step == 'r') crop.rotateClockwise();
            if (*step == 'l') crop.rotateCounterclockwise();
            if (*step == 'f') crop.flip();
        }
        return cropped(crop);
    };
    EXPECT_EQ(after(""), "1 2 3/4 5 6");
    EXPECT_EQ(after("r"), "4 1/5 2/6 3");
    EXPECT_EQ(after("l"), "3 6/2 5/1 4");
    EXPECT_EQ(after("rr"), "6 5 4/3 2 1");
    EXPECT_EQ(after("f"), "3 2 1/6 5 4");
    EXPECT_EQ(after("rf"), "1 4/2 5/3 6");
    EXPECT_EQ(after("fr"), "6 3/5 2/4 1");
    EXPECT_EQ(after("frrfrr"), "1 2 3/4 5 6");
    EXPECT_EQ(cropped(CropViewController(numbered({3, 2}, UIImageOrientation::right))),
              "4 1/5 2/6 3")
        << "a file's own orientation";
    EXPECT_EQ(cropped(CropViewController(UIImage::withoutBitmap({0, 0}))), "nothing");
}

TEST(CropTest, TheKeptPartStaysOnTheSamePixelsWhenThePictureIsTurned) {
    CropViewController crop(numbered({12, 20}));
    crop.cropRect.set({1, 2, 3, 2});
    const std::string kept = cropped(crop);
    EXPECT_EQ(kept, "26 27 28/38 39 40");
    crop.rotateClockwise();
    EXPECT_EQ(cropped(crop), "38 26/39 27/40 28");
    crop.flip();
    EXPECT_EQ(cropped(crop), "26 38/27 39/28 40");
    crop.flip();
    crop.rotateCounterclockwise();
    EXPECT_EQ(cropped(crop), kept);
    crop.reset();
    EXPECT_FALSE(crop.isChanged());
}

TEST(CropTest, AHandleMovesItsEdgesAndStopsAtThePictureAndAtTheSmallestSide) {
    struct Case {
        CropViewController::Handle handle;
        Point to;
        Rect left;
    };
    for (const Case& c : {
             Case{{1, 1}, {60, 50}, {20, 20, 40, 30}},
             Case{{-1, -1}, {5, 8}, {5, 8, 55, 52}},
             Case{{1, 0}, {500, 0}, {20, 20, 80, 40}},
             Case{{0, -1}, {0, -9}, {20, 0, 40, 60}},
             Case{{-1, 0}, {500, 0}, {44, 20, 16, 40}},
         }) {
        CropViewController crop(numbered({100, 80}));
        crop.cropRect.set({20, 20, 40, 40});
        crop.drag(c.handle, c.to);
        EXPECT_EQ(crop.cropRect.get(), c.left) << c.left.x << " " << c.left.width;
    }
}

TEST(CropTest, AFixedRatioHoldsThroughEveryDragAndTurn) {
    std::mt19937 random(7);
    const auto upTo = [&](double bound) {
        return std::uniform_real_distribution<>(-0.2 * bound, 1.2 * bound)(random);
    };
    for (const Size ratio : CropViewController::aspectRatios) {
        CropViewController crop(numbered({300, 200}));
        crop.setAspectRatio(ratio);
        for (int i = 0; i < 500; ++i) {
            const auto handle = [&] { return static_cast<int>(random() % 3) - 1; };
            if (i % 50 == 0) crop.rotateClockwise();
            crop.drag({handle(), handle()}, {upTo(crop.size().width), upTo(crop.size().height)});
            crop.moveBy(upTo(50), upTo(50));
            const Rect rect = crop.cropRect.get();
            ASSERT_GE(rect.x, -1e-9);
            ASSERT_GE(rect.y, -1e-9);
            ASSERT_LE(rect.maxX(), crop.size().width + 1e-9);
            ASSERT_LE(rect.maxY(), crop.size().height + 1e-9);
            ASSERT_GE(rect.width, 15.9);
            ASSERT_GE(rect.height, 15.9);
            if (const auto kept = crop.aspectRatio.get()) {
                ASSERT_NEAR(rect.width / rect.height, *kept, 1e-6);
            }
        }
    }
}

}  // namespace
}  // namespace quillmere
