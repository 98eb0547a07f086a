#include "Desktop/ImageIO/HEIFExif.h"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <string_view>

#include "Desktop/ImageIO/BigEndian.h"
#include "Desktop/ImageIO/HEIFFile.h"
#include "Desktop/ImageIO/ImageIOError.h"

namespace quillmere {
namespace {

using namespace std::string_view_literals;

// In front of the block stands how many bytes lie before its TIFF header (ISO/IEC 23008-12, A.2.1).
// All readers know this form; some don't know that without a mark.
constexpr std::string_view exifMark = "Exif\0\0"sv;

std::vector<std::byte> itemOf(std::span<const std::byte> exif) {
    std::vector<std::byte> item;
    appendNumber(item, exifMark.size(), 4);
    appendText(item, exifMark);
    appendBytes(item, exif);
    return item;
}

std::optional<std::vector<std::byte>> exifIn(std::span<const std::byte> item) {
    BigEndianReader reader(item);
    reader.bytes(reader.u32());
    auto exif = reader.bytes(reader.left());
    if (reader.failed()) return {};
    if (startsWith(exif, exifMark)) exif = exif.subspan(exifMark.size());
    return std::vector<std::byte>(exif.begin(), exif.end());
}

// Whether the bytes of the present Exif are that and nothing else, as far as the file says.
bool mayBeOverwritten(const HEIFFile& file) {
    for (const HEIFRange& range : file.exif) {
        const auto holds = [&](const HEIFBox& box) {
            const bool holdsData = box.type == "mdat" || box.type == "idat";
            return holdsData && range.liesIn({box.contentBegin, box.end});
        };
        if (std::none_of(file.boxes.begin(), file.boxes.end(), holds) &&
            std::none_of(file.metaBoxes.begin(), file.metaBoxes.end(), holds)) {
            return false;
        }
    }
    for (const HEIFItemLocation& item : file.locations.items) {
        if (item.id == file.items.exif) continue;
        const auto ranges = file.rangesOf(item);
        for (const HEIFRange& used : *ranges) {
            for (const HEIFRange& range : file.exif) {
                if (range.overlaps(used)) return false;
            }
        }
    }
    return true;
}

// The boxes of a `meta` box that change, by their types.
using Changes = std::map<std::string_view, std::vector<std::byte>>;

// The entry of the item and the reference to its picture, where they are missing.
std::optional<Changes> introduce(HEIFFile& file) {
    Changes changes;
    HEIFItems& items = file.items;
    if (!items.exif) {
        const auto id = items.freeIdentifier();
        if (!id) return {};
        auto entries = itemsWithExif(onlyBox(file.metaBoxes, "iinf")->contentIn(file.data), *id);
        if (!entries) return {};
        changes["iinf"] = *std::move(entries);
        items.exif = *id;
    }
    if (!items.exifIsReferred) {
        const HEIFBox* box = onlyBox(file.metaBoxes, "iref");
        const auto present = box ? box->contentIn(file.data) : std::span<const std::byte>();
        auto references = referencesWithDescription(present, *items.exif, items.primary);
        if (!references) return {};
        changes["iref"] = *std::move(references);
    }
    return changes;
}

std::vector<std::byte> metaBox(const HEIFFile& file, const Changes& changes) {
    std::vector<std::byte> content;
    appendBytes(content, file.meta.contentIn(file.data).first(4));  // version and flags
    for (const HEIFBox& box : file.metaBoxes) {
        const auto change = changes.find(box.type);
        if (change == changes.end()) {
            appendBytes(content, box.wholeIn(file.data));
        } else {
            appendBox(content, box.type, change->second);
        }
    }
    if (changes.contains("iref") && countOf(file.metaBoxes, "iref") == 0) {
        appendBox(content, "iref", changes.at("iref"));
    }
    std::vector<std::byte> box;
    appendBox(box, "meta", content);
    return box;
}

bool needsWideOffsets(const HEIFFile& file) {
    constexpr std::uint64_t half = std::numeric_limits<std::uint32_t>::max() / 2;  // room to move
    if (file.data.size() > half) return true;
    for (const HEIFItemLocation& item : file.locations.items) {
        for (const HEIFExtent& extent : item.extents) {
            if (extent.offset > half || extent.length > half) return true;
        }
    }
    return false;
}

// The file with `item`, in a box of its own behind the `meta` box, as the data of the Exif item.
std::optional<std::vector<std::byte>> assembled(HEIFFile& file, Changes changes,
                                                std::span<const std::byte> item) {
    HEIFItemLocation* location = file.locations.find(*file.items.exif);
    if (!location) location = &file.locations.items.emplace_back();
    *location = {*file.items.exif, HEIFOffsets::inFile, 0, {HEIFExtent{0, 0, item.size()}}};
    std::vector<std::byte> data;
    appendBox(data, "mdat", item);

    const bool wide = needsWideOffsets(file);
    const auto draft = file.locations.serialized(wide);
    if (!draft) return {};
    changes["iloc"] = *draft;  // of the final size
    const std::size_t metaBytes = metaBox(file, changes).size();
    for (HEIFItemLocation& other : file.locations.items) {
        if (!other.isInThisFile() || other.id == location->id) continue;
        for (HEIFExtent& extent : other.extents) {
            if (extent.offset < file.meta.end) continue;
            extent.offset += metaBytes + data.size();
            extent.offset -= file.meta.end - file.meta.begin;
        }
    }
    location->extents.front().offset = file.meta.begin + metaBytes + data.size() - item.size();
    const auto locations = file.locations.serialized(wide);
    if (!locations) return {};
    changes["iloc"] = *locations;

    std::vector<std::byte> result;
    result.reserve(file.data.size() + metaBytes + data.size());
    appendBytes(result, file.data.first(file.meta.begin));
    appendBytes(result, metaBox(file, changes));
    appendBytes(result, data);
    appendBytes(result, file.data.subspan(file.meta.end));
    return result;
}

Error damagedHEIF() {
    return imageIOError(ImageIOErrorCode::damaged,
                        "The HEIC is damaged or of an unusual kind, so its metadata can't be read "
                        "or written.");
}

}  // namespace

Result<std::vector<std::byte>> exifOfHEIF(std::span<const std::byte> data) {
    const auto file = HEIFFile::parse(data);
    if (!file) return damagedHEIF();
    if (file->exif.empty()) return std::vector<std::byte>();
    std::vector<std::byte> item;
    for (const HEIFRange& range : file->exif) {
        appendBytes(item, data.subspan(range.begin, range.end - range.begin));
    }
    auto exif = exifIn(item);
    if (!exif) return damagedHEIF();
    return *std::move(exif);
}

Result<std::vector<std::byte>> heifWithExif(std::span<const std::byte> data,
                                            std::span<const std::byte> exif) {
    auto file = HEIFFile::parse(data);
    if (!file || !mayBeOverwritten(*file)) return damagedHEIF();
    std::vector<std::byte> cleared;
    if (!file->exif.empty()) {
        cleared.assign(data.begin(), data.end());
        for (const HEIFRange& range : file->exif) {
            std::fill(cleared.data() + range.begin, cleared.data() + range.end, std::byte{0});
        }
        file->data = cleared;
    }
    auto changes = introduce(*file);
    if (!changes) return damagedHEIF();
    auto result = assembled(*file, *std::move(changes), itemOf(exif));
    if (!result) return damagedHEIF();
    return *std::move(result);
}

}  // namespace quillmere
