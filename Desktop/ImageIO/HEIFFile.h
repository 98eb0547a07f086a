// A HEIC file as far as its items are concerned: which there are, and where their data lies.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "Desktop/ImageIO/HEIFBox.h"
#include "Desktop/ImageIO/HEIFItemLocations.h"
#include "Desktop/ImageIO/HEIFItems.h"

namespace quillmere {

/// Bytes `begin` to `end` of a file.
struct HEIFRange {
    std::size_t begin = 0;
    std::size_t end = 0;

    bool overlaps(const HEIFRange& other) const { return begin < other.end && other.begin < end; }
    bool liesIn(const HEIFRange& other) const { return begin >= other.begin && end <= other.end; }
};

/// Each of its positions was checked: all data that the items have in the file lies in it, and
/// what isn't in the `idat` box lies outside of the `meta` box.
struct HEIFFile {
    std::span<const std::byte> data;
    std::vector<HEIFBox> boxes;
    HEIFBox meta;
    std::vector<HEIFBox> metaBoxes;
    HEIFItems items;
    HEIFItemLocations locations;
    std::vector<HEIFRange> exif;  // where the picture's Exif lies; empty where it has none

    /// Nothing for a file that is damaged, whose Exif is in another file or in very many pieces, or
    /// that is no picture but a sequence, whose tables of positions nobody here could adapt.
    static std::optional<HEIFFile> parse(std::span<const std::byte> data);

    /// Where the data of an item lies in this file; of one made from others, nowhere. Nothing where
    /// a range is not where it has to be.
    std::optional<std::vector<HEIFRange>> rangesOf(const HEIFItemLocation& item) const;

private:
    bool findExif();
};

}  // namespace quillmere
