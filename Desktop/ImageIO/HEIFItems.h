// The items of a HEIC file, and which of them is the Exif of its picture (ISO/IEC 14496-12, 8.11).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <vector>

#include "Desktop/ImageIO/HEIFBox.h"

namespace quillmere {

/// What the boxes of a `meta` box say of the primary picture's Exif.
struct HEIFItems {
    std::uint32_t primary = 0;
    std::optional<std::uint32_t> exif;  // the item that holds the picture's Exif
    bool exifIsReferred = false;        // whether it says of itself whose Exif it is
    std::set<std::uint32_t> taken;      // identifiers of all items and groups

    /// Nothing for boxes that are damaged or missing, or that give the picture several Exif items.
    /// An Exif item that describes no picture by name counts as the primary one's.
    static std::optional<HEIFItems> parse(std::span<const std::byte> file,
                                          const std::vector<HEIFBox>& metaBoxes);

    /// That no item or group has, of up to 16 bits as all versions of all boxes hold it; nothing
    /// where all are taken.
    std::optional<std::uint16_t> freeIdentifier() const;
};

/// The content of an `iinf` box with one more item, of the type `Exif`; nothing if it is full.
std::optional<std::vector<std::byte>> itemsWithExif(std::span<const std::byte> content,
                                                    std::uint16_t id);

/// The content of an `iref` box, or of a new one if `content` is empty, with one more reference:
/// `from` describes the picture `to`. Nothing for identifiers too large for the box.
std::optional<std::vector<std::byte>> referencesWithDescription(std::span<const std::byte> content,
                                                                std::uint32_t from,
                                                                std::uint32_t to);

}  // namespace quillmere
