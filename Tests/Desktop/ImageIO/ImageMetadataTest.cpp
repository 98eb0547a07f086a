// Embedding by the real adapters, judged by readers that had no part in the writing.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

#include "Desktop/ImageIO/DesktopImageMetadata.h"
#include "Desktop/Localization/SystemDateFormatter.h"
#include "Platform/ImageIO/UTType.h"
#include "Quillmere/Models/Services/ImageMetadataHelper.h"
#include "Tests/Desktop/ImageIO/ExifTool.h"
#include "Tests/Desktop/ImageIO/PictureFiles.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

using ImageFormat = UserDefaultsHelper::ImageFormat;
using namespace std::chrono;

constexpr Date evening = sys_days(2024y / February / 29) + 20h + 15min + 9s;  // UTC
constexpr Location place{-33.8567844, 151.2152967, -12.5, evening};

Bytes embedded(const Bytes& file, ImageFormat format) {
    setenv("TZ", "EAST-9", 1);
    DesktopImageMetadata metadata;
    const SystemDateFormatter formatter;
    Bytes result =
        ImageMetadataHelper::embedMetadata(file, evening, place, format, {metadata, formatter});
    unsetenv("TZ");
    return result;
}

UIImage picture() { return UIImage(*read(pictureFile("noise.png"))->cgImage()); }

Bytes jpeg() { return *imageIO().jpegRepresentation(picture(), 0.9); }
Bytes png() { return *imageIO().pngRepresentation(picture()); }
Bytes heic() { return *imageIO().heicRepresentation(picture(), 0.9); }

bool contains(const Bytes& data, std::string_view text) {
    const auto wanted = std::as_bytes(std::span(text));
    return std::search(data.begin(), data.end(), wanted.begin(), wanted.end()) != data.end();
}

class ImageMetadataTest : public testing::Test {
protected:
    std::filesystem::path write(const char* name, const Bytes& data) const {
        return folder.write(name,
                            std::string(reinterpret_cast<const char*>(data.data()), data.size()));
    }
    Bytes contents(const std::filesystem::path& path) const {
        return pictureFile(path.string());  // an absolute path stays itself
    }

    TemporaryFolder folder;
};

// What ExifTool is to read: all that it read before, with another date and place.
std::map<std::string, std::string> expectedAfter(std::map<std::string, std::string> tags) {
    std::erase_if(tags, [](const auto& tag) { return tag.first.starts_with("GPS "); });
    tags.merge(std::map<std::string, std::string>{{"GPS GPSVersionID", "2 3 0 0"},
                                                  {"GPS GPSLatitudeRef", "S"},
                                                  {"GPS GPSLongitudeRef", "E"},
                                                  {"GPS GPSLatitude", "33.8567844"},
                                                  {"GPS GPSLongitude", "151.2152967"},
                                                  {"GPS GPSAltitudeRef", "1"},
                                                  {"GPS GPSAltitude", "12.5"},
                                                  {"GPS GPSDateStamp", "2024:02:29"},
                                                  {"GPS GPSTimeStamp", "20:15:09"}});
    for (const char* tag : {"ExifIFD DateTimeOriginal", "ExifIFD CreateDate", "IFD0 ModifyDate"}) {
        tags[tag] = "2024:03:01 05:15:09";
    }
    return tags;
}

TEST_F(ImageMetadataTest, OthersReadDateAndPlaceAndAllElseThatWasThere) {
    const std::string tables =
        "exiftool -q -overwrite_original -Orientation#=6 -Artist=somebody -UserComment=remark "
        "-DateTimeOriginal='1999:01:01 00:00:00' -GPSLatitude=48.1 -GPSLatitudeRef=N "
        "-GPSAreaInformation='the old town' -XMP:Title=title ";
    write("plain.png", png());
    outputOf("cd " + folder.path().string() + " && heif-enc -t 16 plain.png -o thumbnail.heic");
    const struct {
        const char* name;
        ImageFormat format;
        Bytes file;
        const char* tags;  // that this format has, beside the others
    } cases[] = {
        {"own.jpg", ImageFormat::jpg, jpeg(), "-IPTC:City=city -Comment=comment "},
        {"own.png", ImageFormat::png, png(), "-PNG:Software=program "},
        {"own.heic", ImageFormat::heic, heic(), ""},
        {"other.heic", ImageFormat::heic, contents(folder / "thumbnail.heic"), ""},
    };
    for (const auto& [name, format, file, tags] : cases) {
        SCOPED_TRACE(name);
        const auto path = write(name, file);
        outputOf(tables + tags + path.string());
        const auto before = byExifTool(path);
        ASSERT_TRUE(before.contains("GPS GPSAreaInformation"));
        const Bytes source = contents(path);
        const Bytes result = embedded(source, format);
        EXPECT_EQ(byExifTool(write(name, result)), expectedAfter(before));
        const std::string judgement = outputOf("exiftool -validate -a -warning " + path.string());
        EXPECT_EQ(judgement.find("Non-standard"), std::string::npos) << judgement;
        EXPECT_TRUE(contains(source, "the old town"));
        EXPECT_FALSE(contains(result, "the old town")) << "a former place can still be read";

        const Result<UIImage> shown = read(source), same = read(result);
        ASSERT_TRUE(same) << same.error().localizedDescription;
        EXPECT_EQ(same->imageOrientation(), shown->imageOrientation());
        EXPECT_EQ(difference(*same->cgImage(), *shown->cgImage()), 0);
    }
}

/// How many bytes `left` and `right` share from their ends on.
std::size_t sharedEnd(const Bytes& left, const Bytes& right) {
    const auto differ = std::mismatch(left.rbegin(), left.rend(), right.rbegin(), right.rend());
    return static_cast<std::size_t>(differ.first - left.rbegin());
}

TEST_F(ImageMetadataTest, OfAFileWithoutTablesNoByteIsLost) {
    for (const auto& [file, format] :
         {std::pair{jpeg(), ImageFormat::jpg}, {png(), ImageFormat::png}}) {
        const Bytes result = embedded(file, format);
        ASSERT_GT(result.size(), file.size());
        const auto differ =
            std::mismatch(file.begin(), file.end(), result.begin(), result.end()).first;
        EXPECT_GE(static_cast<std::size_t>(differ - file.begin()) + sharedEnd(file, result),
                  file.size())
            << "something else than an insertion";
    }
    // Of a HEIC the list of what lies where changes, but nothing behind it.
    const Bytes file = heic();
    const std::string data = "mdat";
    const auto letters = std::as_bytes(std::span(data));
    const auto at = std::search(file.begin(), file.end(), letters.begin(), letters.end()) - 4;
    const Bytes result = embedded(file, ImageFormat::heic);
    EXPECT_NE(result, file);
    EXPECT_GE(sharedEnd(file, result), static_cast<std::size_t>(file.end() - at));
}

TEST_F(ImageMetadataTest, EmbeddingAgainDoesNotPileUp) {
    const Bytes once = embedded(jpeg(), ImageFormat::jpg);
    EXPECT_EQ(embedded(once, ImageFormat::jpg), once);
    const Bytes pngOnce = embedded(png(), ImageFormat::png);
    EXPECT_EQ(embedded(pngOnce, ImageFormat::png), pngOnce);
}

// As programs wrote it before there was a chunk for it.
TEST_F(ImageMetadataTest, ExifInTheTextOfAnOldPNGMovesToItsChunk) {
    const Bytes file = pictureFile("raw-profile-exif.png");
    DesktopImageMetadata metadata;
    const auto old = metadata.propertiesOfImage(file);
    ASSERT_TRUE(old);
    EXPECT_EQ(old->at("{TIFF}").at("Artist"), CGImagePropertyValue("somebody"));
    const Bytes result = embedded(file, ImageFormat::png);
    EXPECT_FALSE(contains(result, "Raw profile type exif"));
    auto tags = byExifTool(write("result.png", result));
    EXPECT_EQ(tags["IFD0 Artist"], "somebody");
    EXPECT_EQ(tags["GPS GPSLatitude"], "33.8567844");
    EXPECT_FALSE(tags.contains("GPS GPSAreaInformation"));
}

TEST_F(ImageMetadataTest, PlacesKeepSevenDecimalsOfADegree) {
    DesktopImageMetadata metadata;
    const Bytes file = jpeg();
    for (const double degrees :
         {0.0, 0.0000001, 33.8599999, 59.9999999, 12.99999999999, 89.9833333, 179.9999999, 180.0}) {
        for (const double metres : {0.000001, 8848.86, 35786000.25}) {
            const auto written = metadata.imageWithProperties(
                file, UTTypeJPEG, {{"{GPS}", {{"Longitude", degrees}, {"Altitude", metres}}}});
            ASSERT_TRUE(written) << degrees;
            const CGImagePropertyTable gps = metadata.propertiesOfImage(*written)->at("{GPS}");
            EXPECT_NEAR(std::get<double>(gps.at("Longitude")), degrees, 2e-10);
            EXPECT_NEAR(std::get<double>(gps.at("Altitude")), metres, 5e-7 + metres * 2e-9);
        }
    }
}

TEST_F(ImageMetadataTest, WhatExifCannotHoldIsAClearError) {
    DesktopImageMetadata metadata;
    const struct {
        const char* table;
        const char* entry;
        CGImagePropertyValue value;
    } cases[] = {
        {"{GPS}", "Latitude", -1.0},
        {"{GPS}", "Latitude", std::numeric_limits<double>::quiet_NaN()},
        {"{GPS}", "Altitude", std::numeric_limits<double>::infinity()},
        {"{GPS}", "Altitude", 1e10},
        {"{GPS}", "AltitudeRef", std::int64_t{256}},
        {"{GPS}", "TimeStamp", "noon"},
        {"{GPS}", "LatitudeRef", 1.0},
        {"{Exif}", "DateTimeOriginal", std::int64_t{2024}},
        {"{Exif}", "NoSuchEntry", "text"},
        {"{TIFF}", "ImageDescription", std::string(66'000, 'x')},  // more than a segment holds
    };
    for (const auto& [table, entry, value] : cases) {
        const auto result =
            metadata.imageWithProperties(jpeg(), UTTypeJPEG, {{table, {{entry, value}}}});
        ASSERT_FALSE(result) << entry;
        expectSentence(result.error());
    }
}

}  // namespace
}  // namespace quillmere
