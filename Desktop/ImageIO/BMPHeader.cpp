#include "Desktop/ImageIO/BMPHeader.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace quillmere {
namespace {

constexpr std::size_t fileHeaderBytes = 14;
constexpr std::uint32_t coreHeaderBytes = 12;  // the oldest: 16-bit sides, 3-byte palette entries
constexpr std::uint32_t infoHeaderBytes = 40;  // all others begin with this one
constexpr std::uint32_t os2HeaderBytes = 64;   // numbers its compressions differently from 3 on
constexpr std::uint32_t alphaMaskHeaderBytes = 56;
constexpr std::size_t maskOffset = fileHeaderBytes + infoHeaderBytes;

enum Compression : std::uint32_t { rgb = 0, rle8 = 1, rle4 = 2, bitFields = 3, alphaFields = 6 };

// Little-endian numbers at offsets that the caller has checked.
class Numbers {
public:
    explicit Numbers(std::span<const std::byte> data) : data_(data) {}

    bool has(std::size_t offset, std::size_t bytes) const {
        return offset <= data_.size() && bytes <= data_.size() - offset;
    }
    std::uint8_t u8(std::size_t at) const { return std::to_integer<std::uint8_t>(data_[at]); }
    std::uint32_t u16(std::size_t at) const { return u8(at) | std::uint32_t{u8(at + 1)} << 8; }
    std::uint32_t u32(std::size_t at) const { return u16(at) | u16(at + 2) << 16; }

private:
    std::span<const std::byte> data_;
};

std::optional<std::uint32_t> readSize(const Numbers& file, std::uint32_t headerBytes,
                                      BMPHeader& header) {
    if (headerBytes == coreHeaderBytes) {
        header.size = {static_cast<int>(file.u16(18)), static_cast<int>(file.u16(20))};
        header.bitsPerPixel = static_cast<int>(file.u16(24));
        return rgb;
    }
    const auto width = static_cast<std::int32_t>(file.u32(18));
    const auto height = static_cast<std::int32_t>(file.u32(22));
    if (height == std::numeric_limits<std::int32_t>::min()) return {};
    header.size = {width, height < 0 ? -height : height};
    header.topDown = height < 0;
    header.bitsPerPixel = static_cast<int>(file.u16(28));
    const std::uint32_t compression = file.u32(30);
    if (headerBytes == os2HeaderBytes && compression > rle4) return {};
    return compression;
}

bool readCoding(std::uint32_t compression, BMPHeader& header) {
    const int bits = header.bitsPerPixel;
    switch (compression) {
        case rgb:
            return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
        case rle8:
            header.coding = BMPCoding::rle8;
            return bits == 8 && !header.topDown;
        case rle4:
            header.coding = BMPCoding::rle4;
            return bits == 4 && !header.topDown;
        case bitFields:
        case alphaFields:
            return bits == 16 || bits == 32;
        default:
            return false;  // JPEG, PNG, CMYK
    }
}

// The number of bytes between the header and the palette.
std::optional<std::size_t> readMasks(const Numbers& file, std::uint32_t headerBytes,
                                     std::uint32_t compression, BMPHeader& header) {
    if (compression != bitFields && compression != alphaFields) {
        const bool five = header.bitsPerPixel == 16;
        header.masks = {BMPMask{five ? 0x7c00u : 0xff0000u}, BMPMask{five ? 0x3e0u : 0xff00u},
                        BMPMask{five ? 0x1fu : 0xffu}, BMPMask{}};
        return 0;
    }
    const bool withAlpha = compression == alphaFields || headerBytes >= alphaMaskHeaderBytes;
    const std::size_t count = withAlpha ? 4 : 3;
    if (!file.has(maskOffset, 4 * count)) return {};
    for (std::size_t c = 0; c < count; ++c) header.masks[c].bits = file.u32(maskOffset + 4 * c);
    return headerBytes == infoHeaderBytes ? 4 * count : 0;
}

bool readPalette(const Numbers& file, std::uint32_t headerBytes, std::size_t offset,
                 BMPHeader& header) {
    if (header.bitsPerPixel > 8) return true;
    const std::size_t entryBytes = headerBytes == coreHeaderBytes ? 3 : 4;
    const std::size_t most = std::size_t{1} << header.bitsPerPixel;
    const std::size_t used = headerBytes == coreHeaderBytes ? 0 : file.u32(46);
    std::size_t count = used == 0 ? most : std::min(used, most);
    // Old programs let the pixels begin before a full palette would have ended.
    if (header.pixelOffset > offset) {
        count = std::min(count, (header.pixelOffset - offset) / entryBytes);
    }
    if (!file.has(offset, count * entryBytes)) return false;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = offset + i * entryBytes;
        header.palette.push_back({file.u8(entry + 2), file.u8(entry + 1), file.u8(entry)});
    }
    return true;
}

}  // namespace

std::uint8_t BMPMask::channel(std::uint32_t pixel) const {
    if (bits == 0) return 0;
    const int shift = std::countr_zero(bits);
    const std::uint64_t most = bits >> shift;
    const std::uint64_t value = (pixel & bits) >> shift;
    if (most == 255) return static_cast<std::uint8_t>(value);
    return static_cast<std::uint8_t>((value * 255 + most / 2) / most);
}

std::optional<BMPHeader> parseBMPHeader(std::span<const std::byte> data) {
    const Numbers file(data);
    if (!file.has(0, fileHeaderBytes + 4)) return {};
    const std::uint32_t headerBytes = file.u32(fileHeaderBytes);
    if (headerBytes != coreHeaderBytes && headerBytes < infoHeaderBytes) return {};
    if (!file.has(fileHeaderBytes, headerBytes)) return {};

    BMPHeader header;
    header.pixelOffset = file.u32(10);
    const auto compression = readSize(file, headerBytes, header);
    if (!compression || header.size.width <= 0 || header.size.height <= 0) return {};
    if (!readCoding(*compression, header)) return {};
    const auto maskBytes = readMasks(file, headerBytes, *compression, header);
    if (!maskBytes) return {};
    if (!readPalette(file, headerBytes, fileHeaderBytes + headerBytes + *maskBytes, header)) {
        return {};
    }
    return header;
}

}  // namespace quillmere
