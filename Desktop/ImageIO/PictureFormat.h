// Which of the known formats a file is in, by its first bytes.
#pragma once

#include <cstddef>
#include <span>

namespace quillmere {

enum class PictureFormat { unknown, jpeg, png, webp, heif, tiff, jpegXL, gif, bmp };

/// Looks at signatures only. HEIC and AVIF are both `heif`.
///
/// Deciding this here keeps files away from the decoders of formats that nobody asked for
/// (documents, vector graphics), which a library's own guess would reach.
PictureFormat pictureFormat(std::span<const std::byte> data);

/// As a user knows it: "JPEG", "HEIC or AVIF".
const char* nameOf(PictureFormat format);

}  // namespace quillmere
