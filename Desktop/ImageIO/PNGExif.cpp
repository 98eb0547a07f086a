#include "Desktop/ImageIO/PNGExif.h"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>

#include "Desktop/ImageIO/BigEndian.h"
#include "Desktop/ImageIO/ImageIOError.h"
#include "Desktop/ImageIO/PNGRawProfile.h"

namespace quillmere {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view signature = "\x89PNG\r\n\x1a\n"sv;
constexpr std::size_t frameBytes = 12;  // length, type and checksum around the content
constexpr std::size_t longestContent = std::numeric_limits<std::int32_t>::max();

struct Chunk {
    std::span<const std::byte> type;  // of 4 letters
    std::span<const std::byte> content;
    std::span<const std::byte> whole;

    bool is(std::string_view name) const { return startsWith(type, name); }
    bool isExif() const { return is("eXIf") || isRawExifProfile(type, content); }
};

struct Chunks {
    std::vector<Chunk> all;
    std::span<const std::byte> rest;  // what follows the end of the picture
};

std::optional<Chunks> chunksOf(std::span<const std::byte> file) {
    if (!startsWith(file, signature)) return {};
    BigEndianReader reader(file.subspan(signature.size()));
    Chunks chunks;
    bool hasPixels = false;
    for (;;) {
        const auto whole = file.last(reader.left());
        const std::uint32_t length = reader.u32();
        Chunk chunk{reader.bytes(4), reader.bytes(length), {}};
        reader.u32();  // its checksum
        if (reader.failed() || length > longestContent) return {};
        chunk.whole = whole.first(frameBytes + length);
        chunks.all.push_back(chunk);
        if (chunks.all.size() == 1 && !chunk.is("IHDR")) return {};
        hasPixels = hasPixels || chunk.is("IDAT");
        if (!chunk.is("IEND")) continue;
        if (!hasPixels) return {};
        chunks.rest = file.last(reader.left());
        return chunks;
    }
}

std::uint32_t checksumOf(std::span<const std::byte> data) {
    const auto* bytes = reinterpret_cast<const Bytef*>(data.data());
    return static_cast<std::uint32_t>(crc32_z(0, bytes, data.size()));
}

Error damagedPNG() {
    return imageIOError(ImageIOErrorCode::damaged,
                        "The PNG is damaged, so its metadata can't be read or written.");
}

}  // namespace

Result<std::vector<std::byte>> exifOfPNG(std::span<const std::byte> file) {
    const auto chunks = chunksOf(file);
    if (!chunks) return damagedPNG();
    for (const Chunk& chunk : chunks->all) {
        if (chunk.is("eXIf")) {
            return std::vector<std::byte>(chunk.content.begin(), chunk.content.end());
        }
    }
    for (const Chunk& chunk : chunks->all) {
        if (auto exif = rawExifProfile(chunk.type, chunk.content)) return *std::move(exif);
    }
    return std::vector<std::byte>();
}

Result<std::vector<std::byte>> pngWithExif(std::span<const std::byte> file,
                                           std::span<const std::byte> exif) {
    const auto chunks = chunksOf(file);
    if (!chunks) return damagedPNG();
    if (exif.size() > longestContent) {
        return imageIOError(ImageIOErrorCode::tooLarge,
                            "The picture's metadata is too large for a PNG.");
    }
    std::vector<std::byte> result;
    result.reserve(file.size() + frameBytes + exif.size());
    appendText(result, signature);
    bool written = false;
    for (const Chunk& chunk : chunks->all) {
        if (chunk.is("IDAT") && !written) {
            appendNumber(result, exif.size(), 4);
            const std::size_t start = result.size();
            appendText(result, "eXIf");
            appendBytes(result, exif);
            appendNumber(result, checksumOf(std::span(result).subspan(start)), 4);
            written = true;
        }
        if (!chunk.isExif()) appendBytes(result, chunk.whole);
    }
    appendBytes(result, chunks->rest);
    return result;
}

}  // namespace quillmere
