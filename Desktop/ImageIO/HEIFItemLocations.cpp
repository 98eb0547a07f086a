#include "Desktop/ImageIO/HEIFItemLocations.h"

#include <algorithm>
#include <limits>
#include <set>

#include "Desktop/ImageIO/BigEndian.h"

namespace quillmere {
namespace {

constexpr std::uint8_t newestVersion = 2;

bool isByteCount(unsigned count) { return count == 0 || count == 4 || count == 8; }

// How many bytes each field of an item has.
struct Fields {
    std::uint8_t offset, length, base, index;

    bool valid() const {
        return isByteCount(offset) && isByteCount(length) && isByteCount(base) &&
               isByteCount(index);
    }
    std::size_t extent() const { return std::size_t{index} + offset + length; }
};

std::optional<HEIFItemLocation> readItem(BigEndianReader& reader, std::uint8_t version,
                                         const Fields& fields) {
    HEIFItemLocation item;
    item.id = static_cast<std::uint32_t>(reader.number(version < 2 ? 2 : 4));
    if (version > 0) {
        const unsigned method = reader.u16() & 15;
        if (method > static_cast<unsigned>(HEIFOffsets::inOtherItem)) return {};
        item.offsets = static_cast<HEIFOffsets>(method);
    }
    item.dataReference = reader.u16();
    const std::uint64_t base = reader.number(fields.base);
    const std::size_t count = reader.u16();
    // Extents of no bytes would cost a file nothing, and us memory.
    if (fields.extent() == 0 ? count > 1 : count > reader.left() / fields.extent()) return {};
    for (std::size_t i = 0; i < count; ++i) {
        HEIFExtent extent;
        extent.index = reader.number(fields.index);
        extent.offset = reader.number(fields.offset);
        extent.length = reader.number(fields.length);
        if (extent.offset > std::numeric_limits<std::uint64_t>::max() - base) return {};
        extent.offset += base;
        item.extents.push_back(extent);
    }
    return item;
}

}  // namespace

std::optional<HEIFItemLocations> HEIFItemLocations::parse(std::span<const std::byte> content) {
    BigEndianReader reader(content);
    HEIFItemLocations locations;
    const std::uint8_t version = reader.u8();
    reader.bytes(3);  // flags
    const std::uint8_t sizes = reader.u8(), moreSizes = reader.u8();
    const Fields fields{static_cast<std::uint8_t>(sizes >> 4),
                        static_cast<std::uint8_t>(sizes & 15),
                        static_cast<std::uint8_t>(moreSizes >> 4),
                        static_cast<std::uint8_t>(version > 0 ? moreSizes & 15 : 0)};
    if (version > newestVersion || !fields.valid()) return {};
    locations.version_ = version;
    locations.indexBytes_ = fields.index;
    const std::uint64_t count = reader.number(version < 2 ? 2 : 4);
    std::set<std::uint32_t> known;
    for (std::uint64_t i = 0; i < count; ++i) {
        auto item = readItem(reader, version, fields);
        if (!item || reader.failed() || !known.insert(item->id).second) return {};
        locations.items.push_back(*std::move(item));
    }
    if (reader.failed()) return {};
    return locations;
}

std::optional<std::vector<std::byte>> HEIFItemLocations::serialized(bool wide) const {
    const std::size_t bytes = wide ? 8 : 4;
    const std::size_t idBytes = version_ < 2 ? 2 : 4;
    // Only data in other items has an index, and some readers stumble over one of no use.
    const bool indexed = std::any_of(items.begin(), items.end(), [](const HEIFItemLocation& item) {
        return item.offsets == HEIFOffsets::inOtherItem;
    });
    const std::size_t indexBytes = indexed ? indexBytes_ : 0;
    bool fits = true;
    std::vector<std::byte> content;
    const auto append = [&](std::uint64_t number, std::size_t count) {
        if (count < 8 && number >> 8 * count != 0) fits = false;
        appendNumber(content, number, count);
    };
    append(version_, 1);
    append(0, 3);                                      // flags
    append(bytes << 12 | bytes << 8 | indexBytes, 2);  // the base offset has none
    append(items.size(), idBytes);
    for (const HEIFItemLocation& item : items) {
        append(item.id, idBytes);
        if (version_ > 0) append(static_cast<std::uint8_t>(item.offsets), 2);
        append(item.dataReference, 2);
        append(item.extents.size(), 2);
        for (const HEIFExtent& extent : item.extents) {
            append(extent.index, indexBytes);
            append(extent.offset, bytes);
            append(extent.length, bytes);
        }
    }
    if (!fits) return {};
    return content;
}

HEIFItemLocation* HEIFItemLocations::find(std::uint32_t id) {
    const auto found = std::find_if(items.begin(), items.end(),
                                    [&](const HEIFItemLocation& item) { return item.id == id; });
    return found == items.end() ? nullptr : &*found;
}

}  // namespace quillmere
