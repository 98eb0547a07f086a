// Where the data of a HEIC file's items lies (ISO/IEC 14496-12, 8.11.3).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quillmere {

enum class HEIFOffsets : std::uint8_t { inFile = 0, inItemData = 1, inOtherItem = 2 };

struct HEIFExtent {
    std::uint64_t index = 0;
    std::uint64_t offset = 0;  // with the item's base offset in it
    std::uint64_t length = 0;  // 0: all of what the offset is in
};

struct HEIFItemLocation {
    std::uint32_t id = 0;
    HEIFOffsets offsets = HEIFOffsets::inFile;
    std::uint16_t dataReference = 0;  // 0: this file, otherwise another one
    std::vector<HEIFExtent> extents;

    bool isInThisFile() const { return offsets == HEIFOffsets::inFile && dataReference == 0; }
};

/// The content of an `iloc` box. Written again it says the same in another form: all offsets are
/// whole ones.
class HEIFItemLocations {
public:
    /// Nothing for content that is cut off, makes no sense, or is of an unknown version.
    static std::optional<HEIFItemLocations> parse(std::span<const std::byte> content);

    /// Nothing for a number, of items or in them, that has no place in the box.
    /// With `wide` there are 8 bytes for each offset and length, otherwise 4. The size depends on
    /// that and on the number of items and extents, but on no offset.
    std::optional<std::vector<std::byte>> serialized(bool wide) const;

    /// Null if there is none.
    HEIFItemLocation* find(std::uint32_t id);

    std::vector<HEIFItemLocation> items;  // each with an identifier of its own

private:
    std::uint8_t version_ = 0;
    std::uint8_t indexBytes_ = 0;
};

}  // namespace quillmere
