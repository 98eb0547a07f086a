#include "Desktop/ImageIO/PNGRawProfile.h"

#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "Desktop/ImageIO/BigEndian.h"

namespace quillmere {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view keyword = "Raw profile type exif\0"sv;
constexpr std::string_view exifMark = "Exif\0\0"sv;
constexpr std::size_t longestText = 16 << 20;

std::string textOf(std::span<const std::byte> data) {
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

std::optional<std::string> unpacked(std::span<const std::byte> data) {
    constexpr std::size_t mostPerByte = 1032;  // the best that deflate can do
    std::string text(std::min(data.size() * mostPerByte, longestText), '\0');
    uLongf length = text.size();
    if (uncompress(reinterpret_cast<Bytef*>(text.data()), &length,
                   reinterpret_cast<const Bytef*>(data.data()), data.size()) != Z_OK) {
        return {};
    }
    text.resize(length);
    return text;
}

// Of an iTXt chunk, what follows its keyword.
std::optional<std::string> internationalText(BigEndianReader reader) {
    const bool packed = reader.u8() != 0;
    reader.u8();                                  // the only method of packing
    for (int remark = 0; remark < 2; ++remark) {  // the language, and the keyword in it
        while (reader.u8() != 0) {
        }
    }
    const auto text = reader.bytes(reader.left());
    if (reader.failed()) return {};
    return packed ? unpacked(text) : textOf(text);
}

std::optional<std::string> textOfChunk(std::span<const std::byte> type,
                                       std::span<const std::byte> content) {
    BigEndianReader reader(content);
    reader.bytes(keyword.size());
    if (startsWith(type, "iTXt")) return internationalText(reader);
    if (startsWith(type, "tEXt")) return textOf(reader.bytes(reader.left()));
    reader.u8();  // the only method of packing
    return unpacked(reader.bytes(reader.left()));
}

}  // namespace

bool isRawExifProfile(std::span<const std::byte> type, std::span<const std::byte> content) {
    const bool isText =
        startsWith(type, "tEXt") || startsWith(type, "zTXt") || startsWith(type, "iTXt");
    return isText && startsWith(content, keyword);
}

std::optional<std::vector<std::byte>> rawExifProfile(std::span<const std::byte> type,
                                                     std::span<const std::byte> content) {
    if (!isRawExifProfile(type, content)) return {};
    const auto text = textOfChunk(type, content);
    if (!text) return {};
    // A line with the name, one with the number of bytes, then the digits.
    constexpr std::string_view space = " \n";
    std::size_t at = text->find_first_not_of(space);
    for (int line = 0; line < 2; ++line) {
        at = text->find_first_not_of(space, text->find('\n', at));
        if (at == std::string::npos) return {};
    }
    std::string digits = text->substr(at);
    std::erase(digits, '\n');
    std::vector<std::byte> data;
    for (std::size_t i = 0; i + 2 <= digits.size(); i += 2) {
        unsigned value = 0;
        const char* end = digits.data() + i + 2;
        if (std::from_chars(digits.data() + i, end, value, 16).ptr != end) return {};
        data.push_back(static_cast<std::byte>(value));
    }
    if (startsWith(data, exifMark)) data.erase(data.begin(), data.begin() + exifMark.size());
    return data;
}

}  // namespace quillmere
