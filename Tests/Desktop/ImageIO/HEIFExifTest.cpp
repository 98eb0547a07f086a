// The Exif item of HEIC files, checked by libheif, which neither wrote nor changed these files.
#include "Desktop/ImageIO/HEIFExif.h"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

#include "Desktop/ImageIO/HEIFHandles.h"
#include "Desktop/ImageIO/HEIFItemLocations.h"
#include "Tests/Desktop/ImageIO/HEIFShapes.h"

namespace quillmere {
namespace {

using Exif = HEIFShape::Exif;

Bytes bytesOf(const std::string& text) { return BoxWriter().text(text).data; }

Bytes itemOf(const std::string& exif) {
    return BoxWriter().number(6, 4).text(std::string("Exif\0\0", 6) + exif).data;
}

bool contains(const Bytes& data, std::string_view text) {
    const auto wanted = std::as_bytes(std::span(text));
    return std::search(data.begin(), data.end(), wanted.begin(), wanted.end()) != data.end();
}

/// The Exif items of the primary picture as libheif finds them.
std::vector<Bytes> exifByLibrary(const Bytes& file) {
    std::vector<Bytes> found;
    const HEIFContextRef context(heif_context_alloc());
    heif_image_handle* picture = nullptr;
    if (heif_context_read_from_memory_without_copy(context.get(), file.data(), file.size(), nullptr)
                .code != heif_error_Ok ||
        heif_context_get_primary_image_handle(context.get(), &picture).code != heif_error_Ok) {
        ADD_FAILURE() << "libheif refuses the file";
        return found;
    }
    heif_item_id ids[8];
    const int count = heif_image_handle_get_list_of_metadata_block_IDs(picture, "Exif", ids, 8);
    for (int i = 0; i < count; ++i) {
        Bytes& block =
            found.emplace_back(heif_image_handle_get_metadata_size(picture, ids[i]), std::byte{});
        EXPECT_EQ(heif_image_handle_get_metadata(picture, ids[i], block.data()).code,
                  heif_error_Ok);
    }
    heif_image_handle_release(picture);
    return found;
}

const HEIFShape shapes[] = {
    {.name = "as libheif writes it"},
    {.name = "oldest locations", .ilocVersion = 0},
    {.name = "newest locations, long identifiers", .ilocVersion = 2, .longIdentifiers = true},
    {.name = "base offsets alone", .offsetBytes = 0, .baseBytes = 4},
    {.name = "fields of 8 bytes", .offsetBytes = 8, .lengthBytes = 8, .baseBytes = 8},
    {.name = "extents with indices", .ilocVersion = 2, .indexBytes = 4},
    {.name = "64-bit boxes", .longBoxes = true},
    {.name = "data first", .dataFirst = true},
    {.name = "data without a size", .openEnd = true},
    {.name = "tiles in the meta box", .tilesInMeta = true},
    {.name = "in pieces", .pieces = true},
    {.name = "with Exif", .exif = Exif::inData},
    {.name = "with Exif, data first", .dataFirst = true, .exif = Exif::inData},
    {.name = "with Exif in the meta box", .exif = Exif::inMeta},
    {.name = "with Exif of no named picture", .exif = Exif::unreferred},
    {.name = "with Exif of a tile only", .exif = Exif::onTheTile},
};

TEST(HEIFExif, IsReadByOthersInEveryShapeAndLeavesThePictureAlone) {
    for (const HEIFShape& shape : shapes) {
        SCOPED_TRACE(shape.name);
        const Bytes file = heifFile(shape, itemOf("II the old town"));
        const bool had = shape.exif != Exif::none && shape.exif != Exif::onTheTile;
        ASSERT_EQ(exifByLibrary(file).size(), had && shape.exif != Exif::unreferred ? 1u : 0u);
        EXPECT_EQ(*exifOfHEIF(file), had ? bytesOf("II the old town") : Bytes());
        const Result<UIImage> picture = read(file);
        ASSERT_TRUE(picture) << picture.error().localizedDescription;
        ASSERT_EQ(picture->cgImage()->size(), (PixelSize{112, 40}));

        // Twice, since the second time there is a block of our own to be replaced.
        Bytes changed = file;
        for (const std::string text : {"MM somewhere quite far away", "II here"}) {
            const Result<Bytes> next = heifWithExif(changed, bytesOf(text));
            ASSERT_TRUE(next) << next.error().localizedDescription;
            changed = *next;
            EXPECT_EQ(exifByLibrary(changed), std::vector<Bytes>{itemOf(text)});
            EXPECT_EQ(*exifOfHEIF(changed), bytesOf(text));
            const Result<UIImage> same = read(changed);
            ASSERT_TRUE(same) << same.error().localizedDescription;
            EXPECT_EQ(difference(*same->cgImage(), *picture->cgImage()), 0);
        }
        EXPECT_EQ(contains(changed, "the old town"), shape.exif == Exif::onTheTile);
        EXPECT_FALSE(contains(changed, "far away")) << "a former place can still be read";
    }
}

Bytes::iterator placeOf(Bytes& file, std::string_view mark) {
    const auto wanted = std::as_bytes(std::span(mark));
    return std::search(file.begin(), file.end(), wanted.begin(), wanted.end());
}

/// With other bytes `distance` after the beginning of `mark`.
Bytes patched(Bytes file, std::string_view mark, int distance, std::initializer_list<int> values) {
    auto at = placeOf(file, mark) + distance;
    for (const int value : values) *at++ = static_cast<std::byte>(value);
    return file;
}

TEST(HEIFExif, AFileThatCannotBeChangedWithoutLossIsRefused) {
    const Bytes good = heifFile({.name = "good"}, {});
    const Bytes withExif = heifFile({.name = "with Exif", .exif = Exif::inData}, itemOf("II old"));
    ASSERT_TRUE(heifWithExif(good, bytesOf("II")));
    ASSERT_TRUE(heifWithExif(withExif, bytesOf("II")));
    constexpr int firstItem = 12, fourthItem = firstItem + 3 * 16, offset = 8, length = 12;
    Bytes overlapping = withExif;
    const auto iloc = placeOf(overlapping, "iloc");
    std::copy_n(iloc + firstItem + offset, 4, iloc + fourthItem + offset);
    const struct {
        const char* fault;
        Bytes file;
    } cases[] = {
        {"a sequence", BoxWriter().add(good).add(BoxWriter().box("moov")).data},
        {"two meta boxes", BoxWriter().add(good).add(BoxWriter().number(0, 4).box("meta")).data},
        {"no meta box", patched(good, "meta", 0, {'f', 'r', 'e', 'e'})},
        {"no type in front", patched(good, "ftyp", 0, {'f', 'r', 'e', 'e'})},
        {"a box beyond the end", patched(good, "mdat", -4, {0, 1, 0, 0})},
        {"a box inside without an end", patched(good, "iinf", -4, {0, 0, 0, 0})},
        {"a box smaller than its header", patched(good, "iinf", -4, {0, 0, 0, 7})},
        {"no primary picture", patched(good, "pitm", 8, {0, 77})},
        {"a new version of locations", patched(good, "iloc", 4, {3})},
        {"fields of 3 bytes", patched(good, "iloc", 8, {0x34})},
        {"data beyond the end", patched(good, "iloc", firstItem + offset, {0, 1, 0, 0})},
        {"data within the meta box", patched(good, "iloc", firstItem + offset, {0, 0, 0, 64})},
        {"data without a length", patched(good, "iloc", firstItem + length, {0, 0, 0, 0})},
        {"an item located twice", patched(good, "iloc", firstItem + 16, {0, 1})},
        {"two Exif blocks", heifFile({.name = "", .exif = Exif::twice}, itemOf("II old"))},
        {"Exif on top of a tile's data", overlapping},
        {"Exif outside of the data boxes",
         patched(withExif, "iloc", fourthItem + offset, {0, 0, 0, 8})},
        {"Exif of another file", patched(withExif, "iloc", fourthItem + 4, {0, 1})},
    };
    for (const auto& [fault, file] : cases) {
        SCOPED_TRACE(fault);
        const Result<Bytes> changed = heifWithExif(file, bytesOf("II new"));
        ASSERT_FALSE(changed);
        expectSentence(changed.error());
    }
}

// With fields of no bytes an item could claim 65,535 extents, and a small file fill the memory.
TEST(HEIFExif, ExtentsThatCostAFileNothingAreRefused) {
    for (const unsigned extents : {1u, 2u, 65'535u}) {
        BoxWriter content;
        content.number(1u << 24, 4).number(0, 2).number(1, 2);
        content.number(7, 2).number(0, 2).number(0, 2).number(extents, 2);
        EXPECT_EQ(HEIFItemLocations::parse(content.data).has_value(), extents == 1) << extents;
    }
}

}  // namespace
}  // namespace quillmere
