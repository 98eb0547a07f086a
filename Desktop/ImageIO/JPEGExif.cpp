#include "Desktop/ImageIO/JPEGExif.h"

#include <optional>
#include <string_view>

#include "Desktop/ImageIO/BigEndian.h"
#include "Desktop/ImageIO/ImageIOError.h"

namespace quillmere {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view exifMark = "Exif\0\0"sv;
constexpr std::size_t markerBytes = 2;
constexpr std::size_t longestSegment = 0xffff;

enum Marker : std::uint8_t { startOfImage = 0xd8, startOfScan = 0xda, app0 = 0xe0, app1 = 0xe1 };

struct Segment {
    std::uint8_t marker = 0;
    std::span<const std::byte> whole;  // with its marker and its length
    std::span<const std::byte> content;

    bool isExif() const { return marker == app1 && startsWith(content, exifMark); }
};

struct Segments {
    std::vector<Segment> beforeScan;
    std::span<const std::byte> rest;  // from the first scan on
};

std::optional<Segments> segmentsOf(std::span<const std::byte> file) {
    BigEndianReader reader(file);
    if (reader.u16() != (0xff00 | startOfImage)) return {};
    Segments segments;
    for (;;) {
        const std::size_t start = file.size() - reader.left();
        if (reader.u8() != 0xff) return {};
        std::uint8_t marker = reader.u8();
        while (marker == 0xff) marker = reader.u8();  // any number of these may stand before it
        if (marker == startOfScan) {
            segments.rest = file.subspan(start);
            return segments;
        }
        const std::uint16_t length = reader.u16();
        if (length < 2) return {};
        const auto content = reader.bytes(length - 2u);
        if (reader.failed()) return {};
        const std::size_t end = file.size() - reader.left();
        segments.beforeScan.push_back({marker, file.subspan(start, end - start), content});
    }
}

Error damagedJPEG() {
    return imageIOError(ImageIOErrorCode::damaged,
                        "The JPEG is damaged, so its metadata can't be read or written.");
}

}  // namespace

Result<std::vector<std::byte>> exifOfJPEG(std::span<const std::byte> file) {
    const auto segments = segmentsOf(file);
    if (!segments) return damagedJPEG();
    for (const Segment& segment : segments->beforeScan) {
        if (!segment.isExif()) continue;
        const auto block = segment.content.subspan(exifMark.size());
        return std::vector<std::byte>(block.begin(), block.end());
    }
    return std::vector<std::byte>();
}

Result<std::vector<std::byte>> jpegWithExif(std::span<const std::byte> file,
                                            std::span<const std::byte> exif) {
    const std::size_t length = 2 + exifMark.size() + exif.size();
    if (length > longestSegment) {
        return imageIOError(ImageIOErrorCode::tooLarge,
                            "The picture's metadata is too large for a JPEG.");
    }
    const auto segments = segmentsOf(file);
    if (!segments) return damagedJPEG();

    std::vector<std::byte> result;
    result.reserve(file.size() + markerBytes + length);
    appendBytes(result, file.first(markerBytes));
    auto next = segments->beforeScan.begin();
    const auto end = segments->beforeScan.end();
    for (; next != end && next->marker == app0; ++next) appendBytes(result, next->whole);
    appendNumber(result, 0xff00 | app1, markerBytes);
    appendNumber(result, length, 2);
    appendText(result, exifMark);
    appendBytes(result, exif);
    for (; next != end; ++next) {
        if (!next->isExif()) appendBytes(result, next->whole);
    }
    appendBytes(result, segments->rest);
    return result;
}

}  // namespace quillmere
