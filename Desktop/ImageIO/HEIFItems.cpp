#include "Desktop/ImageIO/HEIFItems.h"

#include <limits>

#include "Desktop/ImageIO/BigEndian.h"

namespace quillmere {
namespace {

constexpr std::size_t fullHeader = 4;  // version and flags at the front of many boxes' contents
constexpr std::uint32_t largestShort = std::numeric_limits<std::uint16_t>::max();

std::uint8_t versionOf(std::span<const std::byte> content) { return BigEndianReader(content).u8(); }

std::optional<std::uint32_t> primaryItem(std::span<const std::byte> content) {
    BigEndianReader reader(content);
    const bool isLong = reader.u8() > 0;
    reader.bytes(fullHeader - 1);
    const auto id = static_cast<std::uint32_t>(reader.number(isLong ? 4 : 2));
    if (reader.failed()) return {};
    return id;
}

struct Item {
    std::uint32_t id = 0;
    bool isExif = false;
};

std::optional<Item> itemIn(std::span<const std::byte> content) {
    BigEndianReader reader(content);
    const std::uint8_t version = reader.u8();
    reader.bytes(fullHeader - 1);
    Item item;
    item.id = static_cast<std::uint32_t>(reader.number(version < 3 ? 2 : 4));
    reader.u16();  // how it is protected
    if (version > 1) item.isExif = startsWith(reader.bytes(4), "Exif");
    if (reader.failed() || version > 3) return {};
    return item;
}

// The number of bytes up to the entries of an `iinf` box.
std::size_t itemsHeader(std::uint8_t version) { return fullHeader + (version == 0 ? 2 : 4); }

std::optional<std::vector<Item>> itemsIn(std::span<const std::byte> file, const HEIFBox& box) {
    const auto content = box.contentIn(file);
    const std::size_t header = itemsHeader(versionOf(content));
    if (content.size() < header) return {};
    const auto entries = boxesIn(file, box.contentBegin + header, box.end);
    if (!entries) return {};
    std::vector<Item> items;
    for (const HEIFBox& entry : *entries) {
        if (entry.type != "infe") continue;
        const auto item = itemIn(entry.contentIn(file));
        if (!item) return {};
        items.push_back(*item);
    }
    return items;
}

// What describes what.
struct Description {
    std::uint32_t from = 0;
    std::set<std::uint32_t> to;
};

std::optional<std::vector<Description>> descriptionsIn(std::span<const std::byte> file,
                                                       const HEIFBox& box) {
    if (box.end - box.contentBegin < fullHeader) return {};
    const std::size_t idBytes = versionOf(box.contentIn(file)) == 0 ? 2 : 4;
    const auto references = boxesIn(file, box.contentBegin + fullHeader, box.end);
    if (!references) return {};
    std::vector<Description> descriptions;
    for (const HEIFBox& reference : *references) {
        BigEndianReader reader(reference.contentIn(file));
        Description description;
        description.from = static_cast<std::uint32_t>(reader.number(idBytes));
        const std::size_t count = reader.u16();
        for (std::size_t i = 0; i < count && !reader.failed(); ++i) {
            description.to.insert(static_cast<std::uint32_t>(reader.number(idBytes)));
        }
        if (reader.failed()) return {};
        if (reference.type == "cdsc") descriptions.push_back(std::move(description));
    }
    return descriptions;
}

bool takeGroups(std::span<const std::byte> file, const HEIFBox& box,
                std::set<std::uint32_t>& taken) {
    const auto groups = boxesIn(file, box.contentBegin, box.end);
    if (!groups) return false;
    for (const HEIFBox& group : *groups) {
        BigEndianReader reader(group.contentIn(file));
        reader.bytes(fullHeader);
        taken.insert(reader.u32());
    }
    return true;
}

// False where there are several.
bool findExif(const std::vector<Item>& items, const std::vector<Description>& descriptions,
              HEIFItems& result) {
    std::set<std::uint32_t> describing, others;
    for (const Description& description : descriptions) {
        (description.to.contains(result.primary) ? describing : others).insert(description.from);
    }
    for (const Item& item : items) {
        const bool isReferred = describing.contains(item.id);
        if (!item.isExif || (!isReferred && others.contains(item.id))) continue;
        if (result.exif) return false;
        result.exif = item.id;
        result.exifIsReferred = isReferred;
    }
    return true;
}

}  // namespace

std::optional<HEIFItems> HEIFItems::parse(std::span<const std::byte> file,
                                          const std::vector<HEIFBox>& metaBoxes) {
    const HEIFBox* primary = onlyBox(metaBoxes, "pitm");
    const HEIFBox* information = onlyBox(metaBoxes, "iinf");
    if (!primary || !information || countOf(metaBoxes, "iref") > 1) return {};
    const auto primaryID = primaryItem(primary->contentIn(file));
    const auto items = itemsIn(file, *information);
    if (!primaryID || !items) return {};
    HEIFItems result;
    result.primary = *primaryID;
    for (const Item& item : *items) {
        if (!result.taken.insert(item.id).second) return {};
    }
    if (!result.taken.contains(result.primary)) return {};
    std::vector<Description> descriptions;
    if (const HEIFBox* references = onlyBox(metaBoxes, "iref")) {
        auto found = descriptionsIn(file, *references);
        if (!found) return {};
        descriptions = *std::move(found);
    }
    if (!findExif(*items, descriptions, result)) return {};
    for (const HEIFBox& box : metaBoxes) {
        if (box.type == "grpl" && !takeGroups(file, box, result.taken)) return {};
    }
    return result;
}

std::optional<std::uint16_t> HEIFItems::freeIdentifier() const {
    // One above all others, which nothing can still refer to; or else a gap.
    std::uint32_t id = taken.empty() ? 0 : *taken.rbegin();
    if (id < largestShort) return static_cast<std::uint16_t>(id + 1);
    id = 1;
    for (const std::uint32_t other : taken) {
        if (other > id) break;
        if (other == id) ++id;
    }
    if (id > largestShort) return {};
    return static_cast<std::uint16_t>(id);
}

std::optional<std::vector<std::byte>> itemsWithExif(std::span<const std::byte> content,
                                                    std::uint16_t id) {
    BigEndianReader reader(content);
    const std::uint8_t version = reader.u8();
    reader.bytes(fullHeader - 1);
    const std::size_t countBytes = itemsHeader(version) - fullHeader;
    const std::uint64_t count = reader.number(countBytes);
    const auto entries = reader.bytes(reader.left());
    if (reader.failed() || (version == 0 && count == largestShort)) return {};
    std::vector<std::byte> result;
    appendBytes(result, content.first(fullHeader));
    appendNumber(result, count + 1, countBytes);
    appendBytes(result, entries);
    std::vector<std::byte> entry;
    appendNumber(entry, 2u << 24, fullHeader);
    appendNumber(entry, id, 2);
    appendNumber(entry, 0, 2);  // not protected
    appendText(entry, "Exif");
    appendNumber(entry, 0, 1);  // no name
    appendBox(result, "infe", entry);
    return result;
}

std::optional<std::vector<std::byte>> referencesWithDescription(std::span<const std::byte> content,
                                                                std::uint32_t from,
                                                                std::uint32_t to) {
    std::vector<std::byte> result(content.begin(), content.end());
    if (result.empty()) {
        const bool isLong = from > largestShort || to > largestShort;
        appendNumber(result, isLong ? 1u << 24 : 0, fullHeader);
    }
    const std::size_t idBytes = versionOf(result) == 0 ? 2 : 4;
    if (idBytes == 2 && (from > largestShort || to > largestShort)) return {};
    std::vector<std::byte> reference;
    appendNumber(reference, from, idBytes);
    appendNumber(reference, 1, 2);  // to one item
    appendNumber(reference, to, idBytes);
    appendBox(result, "cdsc", reference);
    return result;
}

}  // namespace quillmere
