// What every implementation of `ImageMetadata` owes its callers.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "Desktop/ImageIO/DesktopImageMetadata.h"
#include "Platform/ImageIO/UTType.h"
#include "Tests/Desktop/ImageIO/PictureFiles.h"
#include "Tests/Fakes/FakeImageMetadata.h"

namespace quillmere {
namespace {

/// A picture of no tables; of the desktop's formats, one from a real encoder.
struct Sort {
    const char* name;
    std::string type;
    std::function<Bytes()> file;  // none: the fake's
};

UIImage picture() { return UIImage(*read(pictureFile("noise.png"))->cgImage()); }

const Sort sorts[] = {
    {"Fake", "public.jpeg", nullptr},
    {"JPEG", "public.jpeg", [] { return *imageIO().jpegRepresentation(picture(), 0.9); }},
    {"PNG", "public.png", [] { return *imageIO().pngRepresentation(picture()); }},
    {"HEIC", "public.heic", [] { return *imageIO().heicRepresentation(picture(), 0.9); }},
};

void PrintTo(const Sort& sort, std::ostream* out) { *out << sort.name; }

class ImageMetadataContract : public testing::TestWithParam<Sort> {
protected:
    ImageMetadataContract() {
        if (GetParam().file) {
            metadata = std::make_unique<DesktopImageMetadata>();
            file = GetParam().file();
        } else {
            auto fake = std::make_unique<FakeImageMetadata>(log);
            file = fake->add({GetParam().type, {}});
            metadata = std::move(fake);
        }
    }

    CallLog log;
    std::unique_ptr<ImageMetadata> metadata;
    Bytes file;
};

INSTANTIATE_TEST_SUITE_P(All, ImageMetadataContract, testing::ValuesIn(sorts),
                         [](const auto& sort) { return std::string(sort.param.name); });

TEST_P(ImageMetadataContract, NamedEntriesReplaceOthersAndAPlaceReplacesTheWholePlace) {
    const auto change = [&](const CGImageProperties& properties) {
        const auto changed = metadata->imageWithProperties(file, GetParam().type, properties);
        ASSERT_TRUE(changed) << changed.error().localizedDescription;
        file = *changed;
    };
    EXPECT_EQ(*metadata->propertiesOfImage(file), CGImageProperties());
    CGImageProperties expected = {
        {"{Exif}", {{"DateTimeOriginal", "2020:01:02 03:04:05"}, {"ColorSpace", 1}}},
        {"{TIFF}", {{"DateTime", "2020:01:02 03:04:05"}, {"Orientation", 6}}},
        {"{GPS}",
         {{"Latitude", 33.5},
          {"LatitudeRef", "S"},
          {"Altitude", 12.25},
          {"AltitudeRef", 1},
          {"DateStamp", "2020:01:02"},
          {"TimeStamp", "03:04:05"}}}};
    change(expected);
    EXPECT_EQ(*metadata->propertiesOfImage(file), expected);

    const CGImagePropertyTable elsewhere = {{"Longitude", 151.25}, {"LongitudeRef", "E"}};
    change({{"{Exif}", {{"DateTimeOriginal", "1999:12:31 23:59:59"}}}, {"{GPS}", elsewhere}});
    expected["{Exif}"]["DateTimeOriginal"] = "1999:12:31 23:59:59";
    expected["{GPS}"] = elsewhere;
    EXPECT_EQ(*metadata->propertiesOfImage(file), expected);
}

TEST_P(ImageMetadataContract, WhatIsNoPictureOrOfAnotherTypeIsAnError) {
    const Bytes cut(file.begin(), file.begin() + 5);
    EXPECT_FALSE(metadata->propertiesOfImage(cut));
    EXPECT_FALSE(metadata->imageWithProperties(cut, GetParam().type, {}));
    for (const std::string_view type : {UTTypeJPEG, UTTypePNG, UTTypeHEIC}) {
        const bool right = type == GetParam().type;
        EXPECT_EQ(bool(metadata->imageWithProperties(file, type, {})), right) << type;
    }
}

}  // namespace
}  // namespace quillmere
