#include <gtest/gtest.h>

#include <thread>

#include "Tests/Desktop/ImageIO/PictureFiles.h"

namespace quillmere {
namespace {

struct Turned {
    const char* file;
    UIImageOrientation orientation;
    PixelSize stored;
};

TEST(Reading, EachOrientationInEachFormatShowsTheSamePicture) {
    using enum UIImageOrientation;
    const PixelSize lying{32, 16};
    const PixelSize standing{16, 32};
    const Turned pictures[] = {
        {"orientation-1.jpg", up, lying},
        {"orientation-2.jpg", upMirrored, lying},
        {"orientation-3.jpg", down, lying},
        {"orientation-4.jpg", downMirrored, lying},
        {"orientation-5.jpg", leftMirrored, standing},
        {"orientation-6.jpg", right, standing},
        {"orientation-7.jpg", rightMirrored, standing},
        {"orientation-8.jpg", left, standing},
        {"orientation-6.png", right, standing},
        {"orientation-6.webp", right, standing},
        {"orientation-6.tiff", right, standing},
        // These decoders turn the pixels themselves; turning twice would be the fault.
        {"orientation-6.heic", up, lying},
        {"orientation-6.avif", up, lying},
        {"orientation-6.jxl", up, lying},
        // In HEIC the file's own turn counts (here none), not what Exif says.
        {"upright-exif-6.heic", up, lying},
        {"upright.jxl", up, lying},
    };
    const CGImage expected = *read(pictureFile("upright.png"))->cgImage();
    for (const Turned& turned : pictures) {
        const Result<UIImage> picture = read(pictureFile(turned.file));
        ASSERT_TRUE(picture) << turned.file << ": " << picture.error().localizedDescription;
        EXPECT_EQ(picture->imageOrientation(), turned.orientation) << turned.file;
        EXPECT_EQ(picture->cgImage()->size(), turned.stored) << turned.file;
        EXPECT_EQ(picture->scale(), 1) << turned.file;
        EXPECT_LE(difference(seen(*picture), expected), 2) << turned.file;
    }
}

struct Shown {
    const char* file;
    PixelSize size;
    std::vector<std::uint32_t> colours;  // of the first pixels of the first row
    int tolerance;
};

void expectShown(const Shown& shown) {
    const Result<UIImage> picture = read(pictureFile(shown.file));
    ASSERT_TRUE(picture) << shown.file << ": " << picture.error().localizedDescription;
    const CGImage& bitmap = *picture->cgImage();
    EXPECT_EQ(bitmap.size(), shown.size) << shown.file;
    for (std::size_t x = 0; x < shown.colours.size(); ++x) {
        const std::uint32_t colour = colourAt(bitmap, static_cast<int>(x), 0);
        EXPECT_LE(difference(colour, shown.colours[x]), shown.tolerance)
            << shown.file << " at " << x << ": " << std::hex << colour;
    }
}

TEST(Reading, EveryDepthAndKindOfTransparencyBecomesEightBitsPremultiplied) {
    const Shown files[] = {
        {"one-pixel.png", {1, 1}, {0x0c2238ff}, 0},
        {"grey.png", {2, 1}, {0x303030ff, 0xd0d0d0ff}, 0},
        {"grey1.png", {8, 1}, {0xffffffff, 0x000000ff, 0xffffffff, 0x000000ff}, 0},
        {"grey-alpha.png", {2, 1}, {0x64646480, 0x646464ff}, 0},
        {"grey16-alpha.png", {2, 1}, {0x80808080, 0x808080ff}, 0},
        {"rgb16.png", {2, 1}, {0x0080ffff, 0x40c010ff}, 0},
        {"rgba16.png", {2, 1}, {0x0080ffff, 0x20604080}, 0},
        {"palette-transparent.png", {3, 1}, {0xff0000ff, 0x00800080, 0x00000000}, 0},
        {"transparent-colour.png", {2, 1}, {0x00000000, 0x090807ff}, 0},
        {"interlaced.png", {4, 4}, {0xc86432ff}, 0},
        {"palette.tiff", {2, 2}, {0xc86432ff}, 0},
        {"rgba-associated.tiff", {1, 1}, {0x64320080}, 0},
        {"alpha.webp", {4, 4}, {0x6432197f}, 0},
        // Linear light: a half is 188 of 255.
        {"rgb-float.tiff", {1, 1}, {0x00bcffff}, 1},
        {"grey-float.tiff", {1, 1}, {0xbcbcbcff}, 1},
    };
    for (const Shown& shown : files) expectShown(shown);
}

TEST(Reading, EveryKindOfColourBecomesSRGB) {
    // Display P3 with a gamma of 2.2: (200, 100, 50) is (216.4, 92.6, 23.8) in sRGB.
    const std::uint32_t p3 = 0xd85d18ff;
    const Shown files[] = {
        {"p3.png", {1, 1}, {p3}, 1},
        {"p3.jpg", {8, 8}, {p3}, 2},
        {"p3.heic", {8, 8}, {p3}, 3},
        {"p3-16bit-alpha.png", {1, 1}, {0x6c2f0c80}, 1},
        // A linear grey of 128 is 188; a profile for other colours than there are is left out.
        {"grey-profile.png", {1, 1}, {0xbcbcbcff}, 1},
        {"grey-with-rgb-profile.png", {1, 1}, {0x646464ff}, 0},
        {"lab.tiff", {2, 2}, {0xc86432ff}, 4},
        // Cyan ink as coated print shows it, and through a profile that calls it grey.
        {"cmyk.jpg", {8, 8}, {0x009fe3ff}, 10},
        {"cmyk.tiff", {8, 8}, {0x009fe3ff}, 10},
        {"cmyk-profile.jpg", {8, 8}, {0x777777ff}, 2},
    };
    for (const Shown& shown : files) expectShown(shown);
}

TEST(Reading, OnlyTheFirstFrameOrPageIsRead) {
    expectShown({"animated.gif", {8, 8}, {0xff0000ff}, 0});
    expectShown({"animated.webp", {8, 8}, {0xff0000ff}, 0});
    expectShown({"two-pages.tiff", {4, 4}, {0x090807ff}, 0});
    const Result<UIImage> gif = read(pictureFile("transparent.gif"));
    EXPECT_EQ(colourAt(*gif->cgImage(), 0, 0), 0u);
    EXPECT_EQ(colourAt(*gif->cgImage(), 1, 1), 0xff0000ffu);
}

TEST(Reading, TheSamePhotographIsMuchTheSameInEveryFormat) {
    const CGImage expected = *read(pictureFile("noise.png"))->cgImage();
    const std::pair<const char*, int> files[] = {
        {"noise.tiff", 0},  {"noise.jpg", 90},  {"noise-progressive.jpg", 90},
        {"noise.gif", 40},  {"noise.webp", 90}, {"noise.heic", 90},
        {"noise.avif", 90}, {"noise.jxl", 90}};
    for (const auto& [file, tolerance] : files) {
        EXPECT_LE(difference(*read(pictureFile(file))->cgImage(), expected), tolerance) << file;
    }
}

TEST(Reading, EveryKindOfBMPShowsItsFourPixels) {
    const std::vector<std::uint32_t> four{0xff0000ff, 0x00ff00ff, 0x0000ffff, 0xffffffff};
    for (const char* file : {"24.bmp", "24-top-down.bmp", "24-os2.bmp", "32.bmp", "16-555.bmp",
                             "16-565.bmp", "8.bmp", "4.bmp", "8-rle.bmp", "4-rle.bmp"}) {
        const Result<UIImage> picture = read(pictureFile(file));
        ASSERT_TRUE(picture) << file << ": " << picture.error().localizedDescription;
        EXPECT_EQ(picture->cgImage()->size(), (PixelSize{2, 2})) << file;
        EXPECT_EQ(coloursOf(*picture->cgImage()), four) << file;
    }
    EXPECT_EQ(coloursOf(*read(pictureFile("32-alpha.bmp"))->cgImage()),
              (std::vector<std::uint32_t>{0xff0000ff, 0, 0x0000ffff, 0x80808080}));
    EXPECT_EQ(coloursOf(*read(pictureFile("8-rle-skip.bmp"))->cgImage()),
              (std::vector<std::uint32_t>{0, 0, 0, 0, 0xff0000ff, 0x00ff00ff, 0x0000ffff, 0}));
    const std::uint32_t on = 0xffffffff;
    const std::uint32_t off = 0x000000ff;
    EXPECT_EQ(coloursOf(*read(pictureFile("1.bmp"))->cgImage()),
              (std::vector<std::uint32_t>{on, off, on, off, off, off, off, off, on}));
}

TEST(Reading, ThreadsThatReadAtOnceGetWhatOneThreadGets) {
    const std::vector<std::string> files{"p3.jpg",     "noise.png",  "noise.webp",
                                         "noise.heic", "noise.avif", "noise.jxl"};
    std::vector<std::thread> threads;
    for (const std::string& file : files) {
        threads.emplace_back([file] {
            const Bytes data = pictureFile(file);
            const CGImage expected = *read(data)->cgImage();
            for (int i = 0; i < 10; ++i) {
                EXPECT_EQ(difference(*read(data)->cgImage(), expected), 0) << file;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace quillmere
