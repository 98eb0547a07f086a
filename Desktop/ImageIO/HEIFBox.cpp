#include "Desktop/ImageIO/HEIFBox.h"

#include <algorithm>
#include <limits>

#include "Desktop/ImageIO/BigEndian.h"

namespace quillmere {
namespace {

constexpr std::size_t shortHeader = 8;
constexpr std::size_t longHeader = 16;

// In the place of a size.
constexpr std::uint64_t toTheEnd = 0;
constexpr std::uint64_t inLongHeader = 1;

std::optional<std::vector<HEIFBox>> parsed(std::span<const std::byte> file, std::size_t begin,
                                           std::size_t end, bool lastMayBeOpen) {
    std::vector<HEIFBox> boxes;
    while (begin < end) {
        BigEndianReader reader(file.subspan(begin, end - begin));
        std::uint64_t size = reader.u32();
        const auto type = reader.bytes(4);
        std::size_t header = shortHeader;
        if (size == inLongHeader) {
            size = reader.number(8);
            header = longHeader;
        } else if (size == toTheEnd && lastMayBeOpen) {
            size = end - begin;
        }
        if (reader.failed() || size < header || size > end - begin) return {};
        const std::size_t next = begin + static_cast<std::size_t>(size);
        const auto* letters = reinterpret_cast<const char*>(type.data());
        boxes.push_back({{letters, type.size()}, begin, begin + header, next});
        begin = next;
    }
    return boxes;
}

}  // namespace

std::optional<std::vector<HEIFBox>> boxesOf(std::span<const std::byte> file) {
    return parsed(file, 0, file.size(), true);
}

std::optional<std::vector<HEIFBox>> boxesIn(std::span<const std::byte> file, std::size_t begin,
                                            std::size_t end) {
    return parsed(file, begin, end, false);
}

std::size_t countOf(const std::vector<HEIFBox>& boxes, std::string_view type) {
    return static_cast<std::size_t>(std::count_if(
        boxes.begin(), boxes.end(), [&](const HEIFBox& b) { return b.type == type; }));
}

const HEIFBox* onlyBox(const std::vector<HEIFBox>& boxes, std::string_view type) {
    if (countOf(boxes, type) != 1) return nullptr;
    return &*std::find_if(boxes.begin(), boxes.end(),
                          [&](const HEIFBox& box) { return box.type == type; });
}

void appendBox(std::vector<std::byte>& target, std::string_view type,
               std::span<const std::byte> content) {
    const bool isLong = content.size() > std::numeric_limits<std::uint32_t>::max() - shortHeader;
    appendNumber(target, isLong ? inLongHeader : content.size() + shortHeader, 4);
    appendText(target, type);
    if (isLong) appendNumber(target, content.size() + longHeader, 8);
    appendBytes(target, content);
}

}  // namespace quillmere
