#include "Quillmere/Models/Services/ImageMetadataHelper.h"

#include <gtest/gtest.h>

#include "Tests/Fakes/FakeDateFormatter.h"
#include "Tests/Fakes/FakeImageMetadata.h"

namespace quillmere {
namespace {

using ImageFormat = UserDefaultsHelper::ImageFormat;
using namespace std::chrono;

constexpr Date evening = sys_days(2024y / February / 29) + 20h + 15min + 9s;  // UTC

const CGImagePropertyTable dateInExif = {{"DateTimeOriginal", "2024:03:01 05:15:09"},
                                         {"DateTimeDigitized", "2024:03:01 05:15:09"}};
const CGImagePropertyTable dateInTIFF = {{"DateTime", "2024:03:01 05:15:09"}};

CGImagePropertyTable placeTable(double latitude, const char* north, double longitude,
                                const char* east) {
    return {{"Latitude", latitude}, {"LatitudeRef", north},      {"Longitude", longitude},
            {"LongitudeRef", east}, {"DateStamp", "2024:02:29"}, {"TimeStamp", "20:15:09"}};
}

CGImagePropertyTable withAltitude(CGImagePropertyTable table, double altitude,
                                  std::int64_t reference) {
    table["Altitude"] = altitude;
    table["AltitudeRef"] = reference;
    return table;
}

class ImageMetadataHelperTest : public testing::Test {
protected:
    ImageMetadataHelperTest() { formatter.offset = 9h; }

    std::vector<std::byte> embed(const std::vector<std::byte>& data, std::optional<Date> date,
                                 const std::optional<Location>& location,
                                 ImageFormat format = ImageFormat::jpg) {
        return ImageMetadataHelper::embedMetadata(data, date, location, format,
                                                  {metadata, formatter});
    }

    CallLog log;
    FakeImageMetadata metadata{log};
    FakeDateFormatter formatter;
};

TEST_F(ImageMetadataHelperTest, MapsDateAndPlaceToTheTables) {
    const auto at = [](double latitude, double longitude, double altitude) {
        return Location{latitude, longitude, altitude, evening};
    };
    const struct {
        const char* what;
        std::optional<Date> date;
        std::optional<Location> location;
        CGImageProperties expected;
    } cases[] = {
        {"a date alone, on the next day in the user's zone",
         evening,
         {},
         {{"{Exif}", dateInExif}, {"{TIFF}", dateInTIFF}}},
        {"a place alone, south and east",
         {},
         at(-33.86, 151.2, 0),
         {{"{GPS}", placeTable(33.86, "S", 151.2, "E")}}},
        {"north and west, above the sea",
         {},
         at(52.5, -13.4, 34.5),
         {{"{GPS}", withAltitude(placeTable(52.5, "N", 13.4, "W"), 34.5, 0)}}},
        {"exactly zero", {}, at(0, 0, 0), {{"{GPS}", placeTable(0, "N", 0, "E")}}},
        {"below the sea, with a date",
         evening,
         at(31.5, 35.5, -12),
         {{"{Exif}", dateInExif},
          {"{TIFF}", dateInTIFF},
          {"{GPS}", withAltitude(placeTable(31.5, "N", 35.5, "E"), 12, 1)}}},
    };
    for (const auto& [what, date, location, expected] : cases) {
        const auto file = metadata.add({"public.jpeg", {}});
        EXPECT_EQ(metadata.file(embed(file, date, location)).properties, expected) << what;
    }
}

TEST_F(ImageMetadataHelperTest, KeepsTheEncodersOtherEntriesButNothingOfAnotherPlace) {
    const auto file = metadata.add({"public.heic",
                                    {{"{Exif}", {{"ColorSpace", 1}, {"DateTimeOriginal", "old"}}},
                                     {"{TIFF}", {{"Orientation", 1}}},
                                     {"{GPS}", {{"AreaInformation", "old town"}}}}});
    const auto changed = embed(file, evening, Location{1, 2, 0, evening}, ImageFormat::heic);
    CGImagePropertyTable exif = dateInExif, tiff = dateInTIFF;
    exif["ColorSpace"] = 1;
    tiff["Orientation"] = 1;
    EXPECT_EQ(metadata.file(changed).properties,
              (CGImageProperties{
                  {"{Exif}", exif}, {"{TIFF}", tiff}, {"{GPS}", placeTable(1, "N", 2, "E")}}));
}

TEST_F(ImageMetadataHelperTest, AsksForTheFormatOfTheBytes) {
    const std::pair<ImageFormat, const char*> formats[] = {{ImageFormat::jpg, "public.jpeg"},
                                                           {ImageFormat::heic, "public.heic"},
                                                           {ImageFormat::png, "public.png"}};
    for (const auto& [format, type] : formats) {
        const auto file = metadata.add({type, {}});
        EXPECT_NE(embed(file, evening, {}, format), file) << type;
        EXPECT_EQ(log.lines().back(), std::string("imageWithProperties ") + type);
    }
}

TEST_F(ImageMetadataHelperTest, GivesTheSameBytesBackWhereNothingCanOrNeedBeWritten) {
    const auto file = metadata.add({"public.jpeg", {}});
    EXPECT_EQ(embed(file, {}, {}), file);
    EXPECT_TRUE(log.lines().empty()) << "nothing to embed, and the tables were touched";
    const auto unreadable = metadata.add({"public.jpeg", {}});
    metadata.files.erase("file 1");
    EXPECT_EQ(embed(unreadable, evening, {}), unreadable);
    metadata.reads = false;
    EXPECT_EQ(metadata.file(embed(file, evening, {})).properties.count("{Exif}"), 1u);
    metadata.writes = false;
    EXPECT_EQ(embed(file, evening, {}), file);
}

}  // namespace
}  // namespace quillmere
