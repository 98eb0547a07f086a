// Colours of movies, as they are decoded and as they are written.
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "Tests/Desktop/AVFoundation/MovieFiles.h"
#include "Tests/Desktop/AVFoundation/OneFrameMovie.h"

namespace quillmere {
namespace {

using Colour = std::array<int, 3>;  // R, G, B

class MovieColours : public MovieFiles {
protected:
    CVPixelBufferRef firstFrame(const std::filesystem::path& movie, CVPixelFormat format) {
        const auto asset = movies.assetWithURL(movie);
        const auto reader = movies.assetReaderWithAsset(asset).value();
        const auto output = movies.assetReaderTrackOutput(
            asset->tracksWithMediaType(AVMediaType::video).at(0), CVPixelBufferAttributes{format});
        reader->addOutput(output);
        reader->startReading();
        const auto sample = output->copyNextSampleBuffer();
        EXPECT_TRUE(sample) << movie;
        return sample ? sample->imageBuffer()
                      : std::make_shared<CVPixelBuffer>(PixelSize{64, 48}, format);
    }

    /// The first frame of a movie of `frame` alone.
    CVPixelBufferRef written(const CVPixelBufferRef& frame, float bitRate, CVPixelFormat format) {
        const auto target = folder / "out.mov";
        writeOneFrame(movies, target,
                      {AVVideoCodecType::h264, double(frame->size().width),
                       double(frame->size().height), bitRate},
                      frame);
        return firstFrame(target, format);
    }

    /// In the middle of the first frame, from either format.
    Colour colour(const std::filesystem::path& movie, CVPixelFormat format) {
        const auto frame = firstFrame(movie, format);
        const auto at = [&](std::size_t plane, int x, int y) -> const std::uint8_t* {
            return frame->baseAddressOfPlane(plane) +
                   static_cast<std::size_t>(y) * frame->bytesPerRowOfPlane(plane) + x;
        };
        const int x = frame->size().width / 2, y = frame->size().height / 2;
        if (format == CVPixelFormat::bgra8) {
            const std::uint8_t* p = at(0, 4 * x, y);
            EXPECT_EQ(p[3], 255);
            return {p[2], p[1], p[0]};
        }
        // BT.709, luma 16 to 235
        const double l = 1.1644 * (*at(0, x, y) - 16);
        const double u = *at(1, x / 2, y / 2) - 128, v = *at(2, x / 2, y / 2) - 128;
        const auto whole = [](double value) {
            return static_cast<int>(std::lround(std::clamp(value, 0.0, 255.0)));
        };
        return {whole(l + 1.7927 * v), whole(l - 0.2132 * u - 0.5329 * v), whole(l + 2.1124 * u)};
    }
};

void expectNear(const Colour& found, const Colour& expected, int tolerance,
                const std::string& what) {
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_NEAR(found[c], expected[c], tolerance) << what << " channel " << c;
    }
}

constexpr CVPixelFormat formats[] = {CVPixelFormat::bgra8, CVPixelFormat::yCbCr8Planar420};

TEST_F(MovieColours, EveryMatrixRangeAndLayoutGivesTheSameColour) {
    // An orange, converted and tagged by ffmpeg.
    const Colour orange{200, 100, 50};
    struct Case {
        std::string size, filter, codec;
    };
    const Case cases[] = {
        {"64x48", "scale=out_color_matrix=bt601,format=yuv420p", "ffv1"},  // without a tag
        {"1280x720", "scale=out_color_matrix=bt709,format=yuv420p", "ffv1"},
        {"64x48", "scale=out_color_matrix=bt709,format=yuv420p",
         "ffv1 -colorspace bt709 -color_primaries bt709 -color_trc bt709"},
        {"65x49", "scale=out_color_matrix=bt601,format=yuv444p", "ffv1"},
        {"63x47", "scale=out_color_matrix=bt601,format=yuv420p", "ffv1"},
        {"64x48", "scale=out_color_matrix=bt601:out_range=pc,format=yuvj420p", "mjpeg -q:v 1"},
        {"64x48", "scale=out_color_matrix=bt2020,format=yuv422p10le",
         "ffv1 -colorspace bt2020nc -color_primaries bt709 -color_trc bt709"},
        {"64x48", "format=gbrp", "ffv1"},
        {"64x48", "format=rgba,colorchannelmixer=aa=0.5", "qtrle"},
    };
    int number = 0;
    for (const Case& c : cases) {
        const auto movie = make("-f lavfi -i color=0xc86432:s=" + c.size +
                                    ":r=25:d=0.1,format=gbrp"
                                    " -vf " +
                                    c.filter + " -c:v " + c.codec,
                                std::to_string(number++) + ".mov");
        for (const CVPixelFormat format : formats) {
            expectNear(colour(movie, format), orange, 4, c.filter + c.codec);
        }
    }
}

TEST_F(MovieColours, WideColoursAreBroughtToThoseOfAScreen) {
    // A screen's red is (0.6274, 0.0691, 0.0164) in linear BT.2020 (BT.2087), to the power of
    // 1 / 2.4 that is (210, 84, 46). The blue of Display P3 is a little more than a screen's.
    struct Case {
        std::string colour, tags;
        Colour expected;
    };
    const Case cases[] = {
        {"0xd2542e", "-colorspace bt2020nc -color_primaries bt2020 -color_trc bt709", {255, 4, 4}},
        {"0x808080",
         "-colorspace bt2020nc -color_primaries bt2020 -color_trc bt709",
         {128, 128, 128}},
        {"0x808080",
         "-colorspace bt470bg -color_primaries smpte170m -color_trc smpte170m",
         {128, 128, 128}},
        {"0x0000c0", "-colorspace bt709 -color_primaries smpte432 -color_trc bt709", {0, 0, 199}},
    };
    int number = 0;
    for (const Case& c : cases) {
        const std::string matrix = c.tags.find("bt2020nc") != std::string::npos  ? "bt2020"
                                   : c.tags.find("bt470bg") != std::string::npos ? "bt601"
                                                                                 : "bt709";
        const auto movie =
            make("-f lavfi -i color=" + c.colour + ":s=64x48:r=25:d=0.1,format=gbrp -vf " +
                     "scale=out_color_matrix=" + matrix + ",format=yuv444p10le -c:v ffv1 " + c.tags,
                 std::to_string(number++) + ".mov");
        for (const CVPixelFormat format : formats) {
            expectNear(colour(movie, format), c.expected, 6, c.colour + c.tags);
        }
    }
}

TEST_F(MovieColours, HighRangeIsToneMappedToGreysThatKeepTheirOrder) {
    // Ten-bit luma of light in candelas, in PQ; and of signals in HLG.
    struct Case {
        std::string transfer;
        int luma;
        int least, most;  // of the grey
    };
    const Case cases[] = {
        {"smpte2084", 64, 0, 0},
        {"smpte2084", 64 + 252, 58, 70},    // 10 candelas: below the knee, as it is
        {"smpte2084", 64 + 509, 220, 245},  // 203: a white wall
        {"smpte2084", 64 + 659, 252, 255},  // 1000, the peak
        {"smpte2084", 940, 252, 255},       // 10000
        {"arib-std-b67", 64, 0, 0},
        {"arib-std-b67", 64 + 657, 220, 245},  // 75 %: a white wall
        {"arib-std-b67", 940, 252, 255},
    };
    for (const Case& c : cases) {
        const auto movie =
            make("-f lavfi -i color=black:s=64x48:r=25:d=0.1,format=yuv420p10le,geq=lum=" +
                     std::to_string(c.luma) +
                     ":cb=512:cr=512 -c:v ffv1 -colorspace bt2020nc "
                     "-color_primaries bt2020 -color_range tv -color_trc " +
                     c.transfer,
                 c.transfer + std::to_string(c.luma) + ".mov");
        for (const CVPixelFormat format : formats) {
            const Colour found = colour(movie, format);
            for (const int channel : found) {
                EXPECT_GE(channel, c.least - 1) << c.transfer << c.luma;
                EXPECT_LE(channel, c.most + 1) << c.transfer << c.luma;
            }
        }
    }
}

/// A frame on its way from a reader to a writer.
enum class Use { nothing, reading, writing };

TEST_F(MovieColours, OnlyAFrameThatSomebodyWroteToLeavesThePlanesThatItWasDecodedInto) {
    // Chroma that no red, green and blue have, and that differs from one sample to the next.
    const auto movie = make(
        "-f lavfi -i \"color=black:s=64x48:r=25:d=0.04,format=yuv420p,"
        "geq=lum=60+X:cb=210+20*mod(X\\,2):cr=200-20*mod(Y\\,2)\" -c:v ffv1 -colorspace bt709 "
        "-color_primaries bt709 -color_trc bt709 -color_range tv",
        "in.mov");
    const auto decoded = firstFrame(movie, CVPixelFormat::yCbCr8Planar420);
    struct Case {
        Use use;
        bool isKept;
    };
    for (const Case& c : {Case{Use::nothing, true}, {Use::reading, true}, {Use::writing, false}}) {
        const auto frame =
            std::const_pointer_cast<CVPixelBuffer>(firstFrame(movie, CVPixelFormat::bgra8));
        if (c.use == Use::reading) {
            EXPECT_GT(std::as_const(*frame).baseAddress()[0], 0);
        }
        if (c.use == Use::writing) {
            std::fill_n(frame->baseAddress(), frame->bytesPerRow() * 48, std::uint8_t{255});
        }
        const auto found = written(frame, 1e9F, CVPixelFormat::yCbCr8Planar420);
        for (std::size_t plane = 0; plane < 3; ++plane) {
            const PixelSize size = found->sizeOfPlane(plane);
            int largest = 0;
            for (int y = 0; y < size.height; ++y) {
                for (int x = 0; x < size.width; ++x) {
                    const auto at = [&](const CVPixelBuffer& buffer) -> int {
                        return buffer.baseAddressOfPlane(
                            plane)[static_cast<std::size_t>(y) * buffer.bytesPerRowOfPlane(plane) +
                                   static_cast<std::size_t>(x)];
                    };
                    const int white = plane == 0 ? 235 : 128;
                    const int expected = c.isKept ? at(*decoded) : white;
                    largest = std::max(largest, std::abs(at(*found) - expected));
                }
            }
            EXPECT_EQ(largest, 0) << int(c.use) << " plane " << plane;
        }
    }
}

TEST_F(MovieColours, WhatIsWrittenLooksAsItWasAppended) {
    struct Case {
        Colour colour;
        PixelSize size;
    };
    const Case cases[] = {{{200, 100, 50}, {64, 48}},
                          {{10, 240, 128}, {63, 47}},
                          {{255, 255, 255}, {64, 48}},
                          {{0, 0, 0}, {1, 3}}};
    for (const Case& c : cases) {
        const auto frame = std::make_shared<CVPixelBuffer>(c.size, CVPixelFormat::bgra8);
        for (int i = 0; i < c.size.width * c.size.height; ++i) {
            for (std::size_t channel = 0; channel < 3; ++channel) {
                frame->baseAddress()[4 * i + 2 - int(channel)] =
                    static_cast<std::uint8_t>(c.colour[channel]);
            }
            frame->baseAddress()[4 * i + 3] = 255;
        }
        const auto found = written(frame, 0, CVPixelFormat::bgra8);
        // The repeated line too, which is the last one.
        const std::uint8_t* p =
            found->baseAddress() +
            static_cast<std::size_t>(found->size().height - 1) * found->bytesPerRow() +
            4 * (found->size().width - 1);
        expectNear({p[2], p[1], p[0]}, c.colour, 4, "corner");
    }
}

}  // namespace
}  // namespace quillmere
