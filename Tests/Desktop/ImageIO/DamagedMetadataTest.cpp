// Files whose structure lies. Whatever comes: an error in a sentence, or a file that says what was
// to be written.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "Desktop/ImageIO/DesktopImageMetadata.h"
#include "Desktop/ImageIO/PNGRawProfile.h"
#include "Platform/ImageIO/UTType.h"
#include "Tests/Desktop/ImageIO/HEIFShapes.h"

namespace quillmere {
namespace {

struct Source {
    std::string_view type;
    Bytes file;
};

std::vector<Source> sources() {
    DesktopImageMetadata metadata;
    std::vector<Source> all;
    const std::pair<std::string_view, const char*> files[] = {
        {UTTypeJPEG, "orientation-6.jpg"},   {UTTypeJPEG, "noise.jpg"},
        {UTTypePNG, "raw-profile-exif.png"}, {UTTypePNG, "orientation-6.png"},
        {UTTypeHEIC, "upright-exif-6.heic"}, {UTTypeHEIC, "noise.heic"}};
    for (const auto& [type, name] : files) all.push_back({type, pictureFile(name)});
    using enum HEIFShape::Exif;
    for (const HEIFShape& shape : {HEIFShape{.name = "",
                                  .ilocVersion = 2,
                                  .offsetBytes = 8,
                                  .longIdentifiers = true,
                                  .longBoxes = true},
                                   HEIFShape{.name = "", .dataFirst = true, .tilesInMeta = true}}) {
        const Result<Bytes> file = metadata.imageWithProperties(
            heifFile(shape, {}), UTTypeHEIC, {{"{TIFF}", {{"Artist", "somebody"}}}});
        all.push_back({UTTypeHEIC, *file});
    }
    return all;
}

/// Reads and rewrites; the answer has to be an error or right.
void expectErrorOrTables(const Bytes& file, std::string_view type) {
    DesktopImageMetadata metadata;
    const auto properties = metadata.propertiesOfImage(file);
    if (!properties) expectSentence(properties.error());
    const auto result =
        metadata.imageWithProperties(file, type, {{"{GPS}", {{"Latitude", 48.125}}}});
    if (!result) return expectSentence(result.error());
    const auto written = metadata.propertiesOfImage(*result);
    ASSERT_TRUE(written) << written.error().localizedDescription;
    EXPECT_EQ(written->at("{GPS}"), (CGImagePropertyTable{{"Latitude", 48.125}}));
}

TEST(DamagedMetadata, AFileCutShortAnywhereDoesNoHarm) {
    for (const auto& [type, file] : sources()) {
        const std::size_t step = 1 + file.size() / 1500;
        for (std::size_t length = 0; length < file.size(); length += step) {
            expectErrorOrTables({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)},
                                type);
        }
    }
}

TEST(DamagedMetadata, ChangedBytesDoNoHarm) {
    std::mt19937 random(20240229);
    const unsigned telling[] = {0, 1, 4, 8, 0x7f, 0x80, 0xfe, 0xff};
    for (const auto& [type, file] : sources()) {
        // Where the structure is, and so most of the harm.
        const std::size_t front = std::min<std::size_t>(file.size(), 1200);
        for (int round = 0; round < 3000; ++round) {
            Bytes damaged = file;
            for (auto changes = 1 + random() % 4; changes > 0; --changes) {
                const std::size_t at = random() % (round % 4 == 0 ? file.size() : front);
                damaged[at] = static_cast<std::byte>(
                    round % 2 == 0 ? random() : telling[random() % std::size(telling)]);
            }
            expectErrorOrTables(damaged, type);
            if (testing::Test::HasFailure()) FAIL() << type << ", round " << round;
        }
    }
}

TEST(DamagedMetadata, OldTextsInAPNGAreUnpackedOrLeftAlone) {
    using namespace std::string_literals;
    const std::string head = "Raw profile type exif\0"s, body = "\nexif\n      3\n616263\n";
    const struct {
        const char* type;
        std::string content;
        std::optional<std::string> exif;
    } cases[] = {
        {"tEXt", head + body, "abc"},
        {"tEXt", head + "\nexif\n 9\n457869660000616263", "abc"},  // with the mark of a JPEG's Exif
        {"iTXt", head + "\0\0en\0\0"s + body, "abc"},
        {"iTXt", head + "\0\0"s, {}},
        {"iTXt", head + "\1\0\0\0 not packed"s, {}},
        {"zTXt", head + "\0 not packed"s, {}},
        {"zTXt", head, {}},
        {"tEXt", head + "\nexif\n", {}},
        {"tEXt", head + "\nexif\n 3\n61zz63", {}},
        {"tEXt", "Comment\0"s + body, {}},
        {"tIME", head + body, {}},
    };
    for (const auto& [type, content, exif] : cases) {
        const auto found =
            rawExifProfile(BoxWriter().text(type).data, BoxWriter().text(content).data);
        ASSERT_EQ(found.has_value(), exif.has_value()) << type << content;
        EXPECT_EQ(found.value_or(Bytes()), BoxWriter().text(exif.value_or("")).data);
    }
}

}  // namespace
}  // namespace quillmere
