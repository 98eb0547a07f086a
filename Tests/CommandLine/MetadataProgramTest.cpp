// Date and place through the command line, as another program reads them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/CommandLine/Program.h"
#include "Tests/Desktop/ImageIO/ExifTool.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::Key;
using testing::Not;
using testing::Pair;
using Tags = std::map<std::string, std::string>;

class MetadataProgram : public testing::Test {
protected:
    MetadataProgram() {
        const std::string file = (folder / "phone.jpg").string();
        outputOf("ffmpeg -v error -f lavfi -i testsrc=size=40x20:rate=1:duration=1 -frames:v 1 " +
                 file);
        outputOf(
            "exiftool -q -overwrite_original -DateTimeOriginal='2020:01:02 12:04:05' "
            "-Orientation#=6 -GPSLatitude=33.86 -GPSLatitudeRef=S -GPSLongitude=151.2 "
            "-GPSLongitudeRef=E -GPSAltitude=12 -GPSAltitudeRef='Below Sea Level' "
            "-GPSDateStamp=2020:01:01 -GPSTimeStamp=01:02:03 " +
            file);
    }

    Tags enhance(std::vector<std::string> options, const std::string& format = "jpg") {
        const std::string output = "out." + format;
        options.insert(options.begin(),
                       {"enhance", "phone.jpg", "--style", "original", "--force", "-o", output});
        const auto result = runProgram(options, folder.path(), home());
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return byExifTool(folder / output);
    }

    ProgramOptions home() const {
        ProgramOptions options;
        options.environment = {{"HOME", folder.path()}, {"TZ", "Asia/Tokyo"}};
        return options;
    }

    TemporaryFolder folder;
};

TEST_F(MetadataProgram, EachFormatCarriesWhatIsToBeKeptAndNothingElse) {
    const auto date = AllOf(Contains(Pair("ExifIFD DateTimeOriginal", "2020:01:02 12:04:05")),
                            Contains(Pair("ExifIFD CreateDate", "2020:01:02 12:04:05")),
                            Contains(Pair("IFD0 ModifyDate", "2020:01:02 12:04:05")));
    const auto place = AllOf(
        Contains(Pair("GPS GPSLatitude", "33.86")), Contains(Pair("GPS GPSLatitudeRef", "S")),
        Contains(Pair("GPS GPSLongitude", "151.2")), Contains(Pair("GPS GPSLongitudeRef", "E")),
        Contains(Pair("GPS GPSAltitude", "12")), Contains(Pair("GPS GPSAltitudeRef", "1")),
        Contains(Pair("GPS GPSDateStamp", "2020:01:01")),
        Contains(Pair("GPS GPSTimeStamp", "01:02:03")));
    const auto noDate = Not(Contains(Key("ExifIFD DateTimeOriginal")));
    const auto noPlace = Not(Contains(Key("GPS GPSLatitude")));
    for (const char* format : {"jpg", "heic", "png"}) {
        SCOPED_TRACE(format);
        const Tags both = enhance({"--keep-date", "--keep-location"}, format);
        EXPECT_THAT(both, AllOf(date, place));
        EXPECT_THAT(enhance({"--keep-date"}, format), AllOf(date, noPlace));
        EXPECT_THAT(enhance({"--keep-location"}, format), AllOf(noDate, place));
        EXPECT_THAT(enhance({}, format), AllOf(noDate, noPlace));
        const std::string size = outputOf("exiftool -s3 -ImageSize -Orientation# " +
                                          (folder / ("out." + std::string(format))).string());
        EXPECT_TRUE(size.starts_with("20x40\n")) << "upright: " << size;
    }
}

TEST_F(MetadataProgram, TheStoredSwitchesHoldWhereNothingIsSaid) {
    for (const char* key : {"preserveCreationDateKey", "preserveLocationKey"}) {
        EXPECT_EQ(runProgram({"settings", key, "true"}, folder.path(), home()).exitCode, 0);
    }
    const Tags tags = enhance({"--no-keep-date"});
    EXPECT_THAT(tags, Not(Contains(Key("ExifIFD DateTimeOriginal"))));
    EXPECT_THAT(tags, Contains(Key("GPS GPSLatitude")));
}

}  // namespace
}  // namespace quillmere
