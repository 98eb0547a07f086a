// The boxes that HEIC files are made of (ISO/IEC 14496-12, 4.2).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace quillmere {

/// A box in a file, by positions from the file's start.
struct HEIFBox {
    std::string_view type;  // four letters, in the file's own bytes
    std::size_t begin = 0;
    std::size_t contentBegin = 0;
    std::size_t end = 0;

    std::span<const std::byte> contentIn(std::span<const std::byte> file) const {
        return file.subspan(contentBegin, end - contentBegin);
    }
    std::span<const std::byte> wholeIn(std::span<const std::byte> file) const {
        return file.subspan(begin, end - begin);
    }
};

/// The boxes that a whole file is made of, of which the last may have no end of its own. Nothing
/// for a file that isn't: where one is cut off, or reaches beyond the end.
std::optional<std::vector<HEIFBox>> boxesOf(std::span<const std::byte> file);

/// Likewise those that fill the bytes `begin` to `end` of `file`; here each has an end.
std::optional<std::vector<HEIFBox>> boxesIn(std::span<const std::byte> file, std::size_t begin,
                                            std::size_t end);

/// The one box of this type; null for none, and for more than one.
const HEIFBox* onlyBox(const std::vector<HEIFBox>& boxes, std::string_view type);

std::size_t countOf(const std::vector<HEIFBox>& boxes, std::string_view type);

/// A box with the content given, with a long header only where it needs one.
void appendBox(std::vector<std::byte>& target, std::string_view type,
               std::span<const std::byte> content);

}  // namespace quillmere
