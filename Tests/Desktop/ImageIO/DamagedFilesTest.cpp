// Files that are not what they seem. Whatever comes: an error in a sentence or a whole picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string_view>

#include "Desktop/ImageIO/ImageIOError.h"
#include "Tests/Desktop/ImageIO/PictureFiles.h"

namespace quillmere {
namespace {

using std::byte;

Bytes bytesOf(std::string_view text) {
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

/// Every picture of the folder, by name.
std::vector<std::string> allPictures() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(pictureFolder())) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".py" && extension != ".md") names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// Reads while whatever reaches the terminal is collected, and expects nothing there.
class DamagedFiles : public testing::Test {
protected:
    void SetUp() override { testing::internal::CaptureStderr(); }
    void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }

    static void expectError(const Bytes& data, ImageIOErrorCode code, const std::string& text) {
        const Result<UIImage> picture = read(data);
        ASSERT_FALSE(picture) << text;
        EXPECT_EQ(picture.error().code, static_cast<int>(code));
        EXPECT_NE(picture.error().localizedDescription.find(text), std::string::npos)
            << picture.error().localizedDescription;
        expectSentence(picture.error());
    }
};

TEST_F(DamagedFiles, AnEmptyOrForeignFileIsNamedAsSuch) {
    const std::string unknown = "This is not a picture in a format that Quillmere knows.";
    expectError({}, ImageIOErrorCode::empty, "The picture is empty.");
    expectError(bytesOf("hello, world"), ImageIOErrorCode::unknownFormat, unknown);
    expectError(bytesOf("PK\x03\x04 and the rest of a zip"), ImageIOErrorCode::unknownFormat,
                unknown);
    expectError(bytesOf("x"), ImageIOErrorCode::unknownFormat, unknown);
    // Formats of the library that nobody asked for must not be reached.
    expectError(bytesOf("<svg xmlns='http://www.w3.org/2000/svg' width='1' height='1'/>"),
                ImageIOErrorCode::unknownFormat, unknown);
    expectError(bytesOf("%PDF-1.4 ..."), ImageIOErrorCode::unknownFormat, unknown);
    expectError(bytesOf("P6 1 1 255 abc"), ImageIOErrorCode::unknownFormat, unknown);
}

TEST_F(DamagedFiles, ASignatureAloneIsADamagedPicture) {
    using namespace std::string_view_literals;
    for (const std::string_view start :
         {"\xff\xd8\xff"sv, "\x89PNG\r\n\x1a\n"sv, "RIFF\4\0\0\0WEBP"sv,
          "\0\0\0\x0c"
          "ftypheic"sv,
          "II*\0"sv, "MM\0*"sv, "\xff\x0a"sv, "GIF89a"sv, "BM"sv}) {
        expectError(bytesOf(start), ImageIOErrorCode::damaged, "damaged");
    }
}

TEST_F(DamagedFiles, ASmallFileThatClaimsAHugePictureIsRefusedBeforeItIsDecoded) {
    // Numbers put in at a distance from the first place where `mark` stands.
    const auto patched = [](const char* file, const Bytes& mark, std::size_t distance,
                            std::initializer_list<int> values) {
        Bytes data = pictureFile(file);
        auto at = std::search(data.begin(), data.end(), mark.begin(), mark.end()) +
                  static_cast<std::ptrdiff_t>(distance);
        for (const int value : values) *at++ = static_cast<byte>(value);
        return data;
    };
    const auto tooLarge = ImageIOErrorCode::tooLarge;
    expectError(pictureFile("bomb-60000x60000.png"), tooLarge, "60000 by 60000 pixels");
    expectError(pictureFile("too-long-70000x1.png"), tooLarge, "70000 by 1 pixels");
    expectError(patched("8-rle.bmp", bytesOf("BM"), 18, {0, 0, 1, 0}), tooLarge, "65536 by 2");
    const Bytes jpegFrame{byte{0xff}, byte{0xc0}};
    expectError(patched("noise.jpg", jpegFrame, 5, {255, 220, 255, 220}), tooLarge,
                "65500 by 65500");
    const Bytes gifFrame{byte{0x2c}, byte{0}, byte{0}, byte{0}, byte{0}};
    expectError(patched("noise.gif", gifFrame, 5, {96, 234, 96, 234}), tooLarge, "60000 by 60000");
}

// The last bytes of a file may be no more than an end mark; then the picture is all there.
TEST_F(DamagedFiles, AFileCutShortIsAnErrorAndNeverPartOfAPicture) {
    for (const std::string& name : allPictures()) {
        const Bytes whole = pictureFile(name);
        const Result<UIImage> good = read(whole);
        const std::size_t step = std::max<std::size_t>(1, whole.size() / 40);
        for (std::size_t length = 1; length < whole.size(); length += step) {
            const Result<UIImage> cut = read(std::span(whole).first(length));
            if (!cut) {
                expectSentence(cut.error());
            } else {
                ASSERT_TRUE(good);
                ASSERT_EQ(difference(*cut->cgImage(), *good->cgImage()), 0)
                    << name << " cut to " << length << " of " << whole.size();
            }
        }
    }
}

// A decoder would paint the rest grey and call it a warning.
TEST_F(DamagedFiles, AJPEGThatEndsProperlyButLacksItsMiddleIsAnError) {
    const Bytes whole = pictureFile("noise.jpg");
    const Bytes scan{byte{0xff}, byte{0xda}};
    const auto start = std::search(whole.begin(), whole.end(), scan.begin(), scan.end());
    const auto first = static_cast<std::size_t>(start - whole.begin()) + 20;
    for (std::size_t length = first; length + 12 < whole.size(); length += 5) {
        Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        while (cut.back() == byte{0xff}) cut.pop_back();
        cut.insert(cut.end(), {byte{0xff}, byte{0xd9}});
        expectError(cut, ImageIOErrorCode::damaged, "incomplete");
    }
}

TEST_F(DamagedFiles, AJPEGWithHarmlessOdditiesIsRead) {
    const Bytes whole = pictureFile("noise.jpg");
    const CGImage expected = *read(whole)->cgImage();
    const Bytes tables{byte{0xff}, byte{0xdb}};
    Bytes junk = whole;
    junk.insert(std::search(junk.begin(), junk.end(), tables.begin(), tables.end()), 3, byte{0});
    Bytes version = whole;
    version[11] = byte{7};  // the major version of JFIF
    Bytes tail = whole;
    tail.insert(tail.end(), 100, byte{0x55});
    for (const Bytes& odd : {junk, version, tail}) {
        const Result<UIImage> picture = read(odd);
        ASSERT_TRUE(picture);
        EXPECT_EQ(difference(*picture->cgImage(), expected), 0);
    }
}

TEST_F(DamagedFiles, AChangedBitIsAnErrorOrAPictureButNoCrash) {
    for (const std::string& name : allPictures()) {
        const Bytes whole = pictureFile(name);
        const std::size_t step = std::max<std::size_t>(1, whole.size() / 30);
        for (std::size_t at = 0; at < whole.size(); at += step) {
            Bytes damaged = whole;
            damaged[at] ^= static_cast<byte>(1 << at % 8);
            const Result<UIImage> picture = read(damaged);
            if (!picture) {
                expectSentence(picture.error());
                continue;
            }
            const CGImage& bitmap = *picture->cgImage();
            for (int y = 0; y < bitmap.size().height; ++y) {
                const std::uint8_t* p = bitmap.row(y);
                for (int x = 0; x < bitmap.size().width; ++x, p += 4) {
                    ASSERT_LE(std::max({p[0], p[1], p[2]}), p[3]) << name << " at " << at;
                }
            }
        }
    }
}

TEST_F(DamagedFiles, APNGWithAWrongChecksumIsAnError) {
    const Bytes whole = pictureFile("noise.png");
    for (std::size_t at = 45; at + 20 < whole.size(); at += 31) {
        Bytes damaged = whole;
        damaged[at] ^= byte{4};
        EXPECT_FALSE(read(damaged)) << at;
    }
}

TEST_F(DamagedFiles, RandomBytesInBMPsDoNoHarm) {
    std::mt19937 random(11);
    for (const std::string& name : allPictures()) {
        if (!name.ends_with(".bmp")) continue;
        const Bytes whole = pictureFile(name);
        for (int i = 0; i < 2000; ++i) {
            Bytes damaged = whole;
            // Mostly in the header, where it hurts; the size fields stay small enough to be quick.
            for (auto changes = random() % 6 + 1; changes > 0; --changes) {
                damaged[2 + random() % (damaged.size() - 2)] = static_cast<byte>(random());
            }
            for (const std::size_t high : {20, 21, 24, 25}) {
                if (damaged[14] != byte{12} && damaged[high] != byte{0xff}) damaged[high] = byte{0};
            }
            damaged.resize(2 + random() % (damaged.size() * 2), byte{0x3c});
            const Result<UIImage> picture = read(damaged);
            if (!picture) expectSentence(picture.error());
        }
    }
}

}  // namespace
}  // namespace quillmere
