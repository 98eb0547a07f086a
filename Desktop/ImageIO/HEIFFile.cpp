#include "Desktop/ImageIO/HEIFFile.h"

#include <algorithm>

namespace quillmere {
namespace {

constexpr std::size_t fullHeader = 4;  // version and flags of the `meta` box
constexpr std::size_t mostPieces = 16;

bool isSequence(const HEIFBox& box) {
    return box.type == "moov" || box.type == "moof" || box.type == "mfra" || box.type == "sidx";
}

std::optional<HEIFRange> rangeAt(std::uint64_t offset, std::uint64_t length,
                                 const HEIFRange& within) {
    const std::size_t size = within.end - within.begin;
    if (offset > size || length > size - offset) return {};
    const std::size_t begin = within.begin + static_cast<std::size_t>(offset);
    return HEIFRange{begin, begin + static_cast<std::size_t>(length)};
}

}  // namespace

std::optional<HEIFFile> HEIFFile::parse(std::span<const std::byte> data) {
    HEIFFile file;
    file.data = data;
    auto boxes = boxesOf(data);
    if (!boxes || boxes->empty() || boxes->front().type != "ftyp") return {};
    if (std::any_of(boxes->begin(), boxes->end(), isSequence)) return {};
    file.boxes = *std::move(boxes);
    const HEIFBox* meta = onlyBox(file.boxes, "meta");
    if (!meta || meta->end - meta->contentBegin < fullHeader) return {};
    file.meta = *meta;
    auto metaBoxes = boxesIn(data, meta->contentBegin + fullHeader, meta->end);
    if (!metaBoxes || countOf(*metaBoxes, "idat") > 1) return {};
    file.metaBoxes = *std::move(metaBoxes);

    auto items = HEIFItems::parse(data, file.metaBoxes);
    const HEIFBox* where = onlyBox(file.metaBoxes, "iloc");
    auto locations = where ? HEIFItemLocations::parse(where->contentIn(data)) : std::nullopt;
    if (!items || !locations) return {};
    file.items = *std::move(items);
    file.locations = *std::move(locations);
    for (const HEIFItemLocation& item : file.locations.items) {
        if (!file.rangesOf(item)) return {};
        file.items.taken.insert(item.id);
    }
    if (!file.findExif()) return {};
    return file;
}

bool HEIFFile::findExif() {
    if (!items.exif) return true;
    const HEIFItemLocation* location = locations.find(*items.exif);
    if (!location || location->extents.empty() || location->extents.size() > mostPieces) {
        return false;
    }
    exif = *rangesOf(*location);
    return exif.size() == location->extents.size();
}

std::optional<std::vector<HEIFRange>> HEIFFile::rangesOf(const HEIFItemLocation& item) const {
    std::vector<HEIFRange> ranges;
    const HEIFBox* itemData = onlyBox(metaBoxes, "idat");
    for (const HEIFExtent& extent : item.extents) {
        std::optional<HEIFRange> range;
        if (item.isInThisFile()) {
            range = rangeAt(extent.offset, extent.length, {0, data.size()});
            if (!range || extent.length == 0) return {};
            if (range->overlaps({meta.begin, meta.end})) return {};
        } else if (item.offsets == HEIFOffsets::inItemData) {
            if (!itemData || item.dataReference != 0) return {};
            const HEIFRange all{itemData->contentBegin, itemData->end};
            range = rangeAt(extent.offset, extent.length, all);
            if (!range) return {};
            if (extent.length == 0) range->end = all.end;
        } else {
            continue;
        }
        ranges.push_back(*range);
    }
    return ranges;
}

}  // namespace quillmere
