#include <gtest/gtest.h>

#include <functional>

#include "Desktop/ImageIO/ImageIOError.h"
#include "Tests/Desktop/ImageIO/PictureFiles.h"

namespace quillmere {
namespace {

using Encoded = Result<Bytes>;
using Encoder = std::function<Encoded(const UIImage&)>;

Encoded jpeg(const UIImage& picture) { return imageIO().jpegRepresentation(picture, 0.9); }
Encoded png(const UIImage& picture) { return imageIO().pngRepresentation(picture); }
Encoded heic(const UIImage& picture) { return imageIO().heicRepresentation(picture, 0.9); }

bool contains(const Bytes& data, std::string_view text) {
    const auto wanted = std::as_bytes(std::span(text));
    return std::search(data.begin(), data.end(), wanted.begin(), wanted.end()) != data.end();
}

UIImage plain(int width, int height, std::uint32_t colour) {
    return UIImage(
        bitmapOf(width, std::vector<std::uint32_t>(std::size_t(width) * height, colour)));
}

TEST(Writing, APNGComesBackExactly) {
    const UIImage opaque(*read(pictureFile("noise.png"))->cgImage());
    EXPECT_EQ(difference(*read(*png(opaque))->cgImage(), *opaque.cgImage()), 0);

    // Every pair of a premultiplied value and its alpha.
    std::vector<std::uint32_t> colours;
    for (std::uint32_t alpha = 0; alpha < 256; ++alpha) {
        for (std::uint32_t value = 0; value < 256; ++value) {
            const std::uint32_t c = std::min(value, alpha);
            colours.push_back(c << 24 | (alpha - c) << 16 | c / 2 << 8 | alpha);
        }
    }
    const UIImage transparent(bitmapOf(256, colours, 1100));
    EXPECT_EQ(difference(*read(*png(transparent))->cgImage(), *transparent.cgImage()), 0);
}

TEST(Writing, AnOpaquePNGHasNoAlphaChannel) {
    constexpr std::size_t colourType = 25;
    EXPECT_EQ((*png(plain(3, 3, 0x102030ff)))[colourType], std::byte{2});
    EXPECT_EQ((*png(plain(3, 3, 0x10203080)))[colourType], std::byte{6});
}

TEST(Writing, JPEGAndHEICComeBackAlmostTheSame) {
    const CGImage picture = *read(pictureFile("upright.png"))->cgImage();
    EXPECT_LE(difference(*read(*jpeg(UIImage(picture)))->cgImage(), picture), 4);
    // Half the colour resolution blurs the borders of the quarters; their middles stay.
    const CGImage heif = *read(*heic(UIImage(picture)))->cgImage();
    ASSERT_EQ(heif.size(), picture.size());
    for (const auto& [x, y] : {std::pair{6, 3}, {25, 3}, {6, 12}, {25, 12}}) {
        EXPECT_LE(difference(colourAt(heif, x, y), colourAt(picture, x, y)), 8) << x << ',' << y;
    }
}

TEST(Writing, EveryFormatHoldsTheUprightPicture) {
    const CGImage upright = *read(pictureFile("upright.png"))->cgImage();
    const UIImage turned = *read(pictureFile("orientation-6.png"));
    const UIImage mirrored = *read(pictureFile("orientation-5.jpg"));
    for (const Encoder& encode : {Encoder(jpeg), Encoder(png), Encoder(heic)}) {
        for (const UIImage& stored : {turned, mirrored}) {
            const Result<UIImage> picture = read(*encode(stored));
            ASSERT_TRUE(picture);
            EXPECT_EQ(picture->imageOrientation(), UIImageOrientation::up);
            ASSERT_EQ(picture->cgImage()->size(), upright.size());
            EXPECT_LE(difference(colourAt(*picture->cgImage(), 25, 3), colourAt(upright, 25, 3)),
                      8);
            EXPECT_LE(difference(colourAt(*picture->cgImage(), 6, 12), colourAt(upright, 6, 12)),
                      8);
        }
    }
}

TEST(Writing, TransparentPlacesAreOnBlackWhereAFormatHasNone) {
    for (const Encoder& encode : {Encoder(jpeg), Encoder(heic)}) {
        const Result<UIImage> half = read(*encode(plain(32, 32, 0x64320080)));
        EXPECT_LE(difference(colourAt(*half->cgImage(), 9, 9), 0x643200ff), 4);
        const Result<UIImage> none = read(*encode(plain(32, 32, 0)));
        EXPECT_LE(difference(colourAt(*none->cgImage(), 9, 9), 0x000000ff), 2);
    }
}

TEST(Writing, EveryFormatCarriesAProfile) {
    const UIImage picture = plain(16, 16, 0x80a0c0ff);
    EXPECT_TRUE(contains(*jpeg(picture), "ICC_PROFILE"));
    EXPECT_TRUE(contains(*png(picture), "iCCP"));
    EXPECT_TRUE(contains(*heic(picture), "colrrICC"));
}

// What 4:2:0 would turn into one muddy colour.
TEST(Writing, AJPEGKeepsColoursThatChangeWithEveryPixel) {
    std::vector<std::uint32_t> stripes;
    for (int i = 0; i < 32 * 32; ++i) stripes.push_back(i % 2 == 0 ? 0xc83c3cff : 0x3c64c8ff);
    const CGImage picture = bitmapOf(32, stripes);
    EXPECT_LE(difference(*read(*jpeg(UIImage(picture)))->cgImage(), picture), 12);
}

// Of several strips, and of more than there are numbers of restart markers; the last one partial.
TEST(Writing, AJPEGsStripsAreInAnotherOrderOrLost) {
    for (const int height : {256, 257, 2500}) {
        std::vector<std::uint32_t> rows;
        for (int i = 0; i < 20 * height; ++i) {
            const auto y = static_cast<std::uint32_t>(i / 20);
            rows.push_back(y * 255 / height << 24 | y / 16 % 2 * 200 << 16 | 0x40ff);
        }
        const CGImage picture = bitmapOf(20, rows);
        EXPECT_LE(difference(*read(*jpeg(UIImage(picture)))->cgImage(), picture), 12) << height;
    }
}

TEST(Writing, QualityTradesSizeForFaithfulnessAndIsCutToItsRange) {
    const UIImage picture(*read(pictureFile("noise.png"))->cgImage());
    for (const auto write : {&ImageIO::jpegRepresentation, &ImageIO::heicRepresentation}) {
        DesktopImageIO files = imageIO();
        const auto size = [&](double quality) { return (files.*write)(picture, quality)->size(); };
        EXPECT_LT(size(0.3), size(0.9));
        EXPECT_LT(size(0.9), size(1));
        EXPECT_EQ(size(7), size(1));
        EXPECT_EQ(size(-1), size(0));
    }
}

TEST(Writing, WhatAFormatCannotHoldIsAClearError) {
    const struct {
        Encoded result;
        ImageIOErrorCode code;
        const char* text;
    } failures[] = {
        {jpeg(plain(65501, 1, 0xff)), ImageIOErrorCode::tooLarge, "65501 by 1 pixels"},
        {heic(plain(1, 16384, 0xff)), ImageIOErrorCode::tooLarge, "1 by 16384 pixels"},
        {png(plain(1000001, 1, 0xff)), ImageIOErrorCode::tooLarge, "1000001 by 1 pixels"},
        {jpeg(UIImage::withoutBitmap({2, 2})), ImageIOErrorCode::noBitmap, "no picture"},
        {png(UIImage::withoutBitmap({2, 2})), ImageIOErrorCode::noBitmap, "no picture"},
        {heic(UIImage::withoutBitmap({2, 2})), ImageIOErrorCode::noBitmap, "no picture"},
    };
    for (const auto& failure : failures) {
        ASSERT_FALSE(failure.result) << failure.text;
        EXPECT_EQ(failure.result.error().code, static_cast<int>(failure.code)) << failure.text;
        EXPECT_NE(failure.result.error().localizedDescription.find(failure.text), std::string::npos)
            << failure.result.error().localizedDescription;
        expectSentence(failure.result.error());
    }
}

TEST(Writing, TheLongestAndTheSmallestPicturesAreWritten) {
    EXPECT_EQ(read(*jpeg(plain(65500, 1, 0x204060ff)))->cgImage()->size(), (PixelSize{65500, 1}));
    for (const Encoder& encode : {Encoder(jpeg), Encoder(png), Encoder(heic)}) {
        const Result<UIImage> pixel = read(*encode(plain(1, 1, 0x204060ff)));
        ASSERT_TRUE(pixel);
        EXPECT_EQ(pixel->cgImage()->size(), (PixelSize{1, 1}));
        EXPECT_LE(difference(colourAt(*pixel->cgImage(), 0, 0), 0x204060ff), 4);
    }
}

// The encoder works on even sides and whole blocks: what it adds must not show.
TEST(Writing, AHEICOfAnySizeComesBackWithThatSizeAndItsEdges) {
    for (const PixelSize size :
         {PixelSize{1, 2}, {2, 1}, {7, 65}, {15, 16}, {63, 64}, {129, 3}, {16383, 1}, {1, 16383}}) {
        const Result<UIImage> picture = read(*heic(plain(size.width, size.height, 0x204060ff)));
        ASSERT_TRUE(picture) << size.width << " by " << size.height;
        const CGImage& bitmap = *picture->cgImage();
        ASSERT_EQ(bitmap.size(), size);
        for (const auto& [x, y] : {std::pair{0, 0}, {size.width - 1, size.height - 1}}) {
            EXPECT_LE(difference(colourAt(bitmap, x, y), 0x204060ff), 4)
                << size.width << " by " << size.height << " at " << x << ',' << y;
        }
    }
}

TEST(Writing, NothingIsPrinted) {
    testing::internal::CaptureStderr();
    const UIImage picture(*read(pictureFile("noise.png"))->cgImage());
    for (const Encoder& encode : {Encoder(jpeg), Encoder(png), Encoder(heic)}) {
        EXPECT_TRUE(encode(picture));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace quillmere
