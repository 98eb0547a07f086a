// Exif as PNG files carried it before there was a chunk for it: in a text, in hexadecimal.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace quillmere {

/// Whether a text chunk of the type `type` ("tEXt", "zTXt", "iTXt") holds Exif by its keyword.
bool isRawExifProfile(std::span<const std::byte> type, std::span<const std::byte> content);

/// The Exif of such a chunk, from its TIFF header on. Nothing for a chunk that isn't one, can't be
/// read, or unpacks to over 16 MiB.
std::optional<std::vector<std::byte>> rawExifProfile(std::span<const std::byte> type,
                                                     std::span<const std::byte> content);

}  // namespace quillmere
