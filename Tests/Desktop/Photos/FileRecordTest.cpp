// Tags of real files, written by the tools that others use.
#include "Desktop/Photos/FileRecord.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "Desktop/Photos/TagTexts.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

using std::chrono::seconds;

class FileRecordTest : public testing::Test {
protected:
    FileRecordTest() { setenv("TZ", "Asia/Tokyo", 1); }

    /// A picture or movie of 40 by 20 in the format of its name.
    std::filesystem::path make(const std::string& name, const std::string& more = "") const {
        const auto path = folder / name;
        run("ffmpeg -v error -f lavfi -i testsrc=size=40x20:rate=5:duration=1 " + more + " '" +
            path.string() + "'");
        return path;
    }
    static void tag(const std::filesystem::path& file, const std::string& tags) {
        run("exiftool -q -overwrite_original " + tags + " '" + file.string() + "'");
    }
    static void run(const std::string& command) {
        EXPECT_EQ(std::system((command + " > /dev/null 2>&1").c_str()), 0) << command;
    }

    TemporaryFolder folder;
};

// 2020-01-02 03:04:05 UTC.
const Date taken(seconds(1577934245));

TEST_F(FileRecordTest, APictureTellsItsDatePlaceAndSizeUpright) {
    const std::string place =
        "-GPSLatitude=33.86 -GPSLatitudeRef=S -GPSLongitude=151.2 -GPSLongitudeRef=E "
        "-GPSAltitude=12 -GPSAltitudeRef='Below Sea Level' -GPSDateStamp=2020:01:01 "
        "-GPSTimeStamp=01:02:03";
    const std::string one = "-frames:v 1";
    for (const char* name : {"a.jpg", "a.png", "a.webp", "a.tiff"}) {
        SCOPED_TRACE(name);
        const auto file = make(name, one);
        tag(file, "-DateTimeOriginal='2020:01:02 12:04:05' -Orientation#=6 " + place);
        const auto record = readFileRecord(file);
        ASSERT_TRUE(record);
        EXPECT_EQ(record->mediaType, PHAssetMediaType::image);
        EXPECT_EQ(record->creationDate, taken);
        ASSERT_TRUE(record->location);
        EXPECT_NEAR(record->location->latitude, -33.86, 1e-6);
        EXPECT_NEAR(record->location->longitude, 151.2, 1e-6);
        EXPECT_NEAR(record->location->altitude, -12, 1e-6);
        EXPECT_EQ(record->location->timestamp, Date(seconds(1577840523)));
        EXPECT_EQ(record->orientation, 6);
        EXPECT_EQ(record->pixelSize, (PixelSize{20, 40}));
    }
}

TEST_F(FileRecordTest, ADateMayHaveAZoneAndStandInXMP) {
    const auto jpeg = make("a.jpg", "-frames:v 1");
    tag(jpeg, "-DateTimeOriginal='2020:01:01 22:04:05' -OffsetTimeOriginal=-05:00");
    EXPECT_EQ(readFileRecord(jpeg)->creationDate, taken);

    const auto png = make("a.png", "-frames:v 1");
    tag(png,
        "-XMP-photoshop:DateCreated='2020:01:02 03:04:05Z' -XMP-exif:GPSLatitude=-33.86 "
        "-XMP-exif:GPSLongitude=151.2");
    const auto record = readFileRecord(png);
    EXPECT_EQ(record->creationDate, taken);
    ASSERT_TRUE(record->location);
    EXPECT_NEAR(record->location->latitude, -33.86, 1e-6);
    EXPECT_EQ(record->location->timestamp, taken) << "when the picture was taken";
}

TEST_F(FileRecordTest, AMovieTellsItsDateAndPlace) {
    const auto movie = make("a.mov",
                            "-metadata com.apple.quicktime.creationdate=2020-01-02T12:04:05+0900 "
                            "-metadata com.apple.quicktime.location.ISO6709=-33.8600+151.2000-012/ "
                            "-movflags use_metadata_tags");
    const auto record = readFileRecord(movie);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->mediaType, PHAssetMediaType::video);
    EXPECT_EQ(record->typeIdentifier, "com.apple.quicktime-movie");
    EXPECT_EQ(record->pixelSize, (PixelSize{40, 20}));
    EXPECT_EQ(record->creationDate, taken);
    EXPECT_EQ(record->location, (Location{-33.86, 151.2, -12, taken}));
    EXPECT_EQ(
        readFileRecord(make("b.mp4", "-metadata creation_time=2020-01-02T03:04:05Z"))->creationDate,
        taken);
}

TEST_F(FileRecordTest, WhatIsNoPictureOrMovieHasNoRecordAndDamagedTagsAreNone) {
    for (const auto& [name, contents] :
         {std::pair{"text.jpg", "not a picture"}, {"empty.mov", ""}, {"text.mp4", "ftyp"}}) {
        EXPECT_FALSE(readFileRecord(folder.write(name, contents))) << name;
    }
    EXPECT_FALSE(readFileRecord(folder / "missing.png"));
    EXPECT_FALSE(readFileRecord(folder.path()));
    const auto jpeg = make("a.jpg", "-frames:v 1");
    tag(jpeg, "-ExifIFD:DateTimeOriginal#='0000:00:00 00:00:00'");
    const auto record = readFileRecord(jpeg);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->creationDate, std::nullopt);
    EXPECT_EQ(record->location, std::nullopt);
}

TEST(TagTexts, AreReadOrRefusedByTheirForm) {
    setenv("TZ", "UTC", 1);
    for (const char* text : {"2020:01:02 03:04:05", "2020-01-02T03:04:05Z",
                             "2020-01-02T12:04:05.250+0900", "2020-01-01T22:04:05-05:00"}) {
        EXPECT_EQ(dateOfText(text), taken) << text;
    }
    for (const char* text : {"", "2020:02:30 00:00:00", "2020:01:02 24:00:00", "yesterday",
                             "2020:01:02 03:04:05 and more", "    :  :     :  :  "}) {
        EXPECT_EQ(dateOfText(text), std::nullopt) << text;
    }
    EXPECT_EQ(locationOfISO6709("+35.5+139.25/"), (Location{35.5, 139.25, 0, {}}));
    EXPECT_EQ(locationOfISO6709("35.5,139.25"), std::nullopt);
    EXPECT_EQ(degreesOfXMP("33,30S"), -33.5);
    EXPECT_EQ(degreesOfXMP("33.5"), std::nullopt);
}

}  // namespace
}  // namespace quillmere
