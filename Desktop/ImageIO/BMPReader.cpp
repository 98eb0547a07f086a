#include "Desktop/ImageIO/BMPReader.h"

#include <cstring>
#include <utility>

#include "Desktop/ImageIO/BMPHeader.h"
#include "Desktop/ImageIO/BitmapBuffer.h"
#include "Desktop/ImageIO/ImageIOError.h"

namespace quillmere {
namespace {

// The rows of a file counted as they are seen, from the top.
int visibleRow(const BMPHeader& header, int row) {
    return header.topDown ? row : header.size.height - 1 - row;
}

bool storeIndexed(const BMPHeader& header, std::size_t index, std::uint8_t* target) {
    if (index >= header.palette.size()) return false;
    storePremultiplied(target, header.palette[index].data(), 255);
    return true;
}

void storeMasked(const BMPHeader& header, std::uint32_t pixel, std::uint8_t* target) {
    std::uint8_t colour[3];
    for (std::size_t c = 0; c < 3; ++c) colour[c] = header.masks[c].channel(pixel);
    const BMPMask& alpha = header.masks[3];
    storePremultiplied(target, colour, alpha.bits == 0 ? 255 : alpha.channel(pixel));
}

bool readRow(const BMPHeader& header, const std::uint8_t* source, std::uint8_t* target) {
    const auto bits = static_cast<std::size_t>(header.bitsPerPixel);
    const auto width = static_cast<std::size_t>(header.size.width);
    for (std::size_t x = 0; x < width; ++x, target += 4) {
        if (bits <= 8) {
            // The leftmost pixel of a byte lies in its highest bits.
            const std::size_t bit = x * bits;
            const unsigned shift = static_cast<unsigned>(8 - bits - bit % 8);
            const std::size_t index = (source[bit / 8] >> shift) & ((1u << bits) - 1);
            if (!storeIndexed(header, index, target)) return false;
        } else {
            std::uint32_t pixel = 0;
            for (std::size_t b = 0; b < bits / 8; ++b) {
                pixel |= std::uint32_t{source[x * bits / 8 + b]} << (8 * b);
            }
            storeMasked(header, pixel, target);
        }
    }
    return true;
}

std::size_t rowBytes(const BMPHeader& header) {
    const std::size_t bits =
        static_cast<std::size_t>(header.size.width) * static_cast<std::size_t>(header.bitsPerPixel);
    return (bits + 31) / 32 * 4;
}

bool readPlain(const BMPHeader& header, std::span<const std::uint8_t> pixels,
               BitmapBuffer& buffer) {
    for (int row = 0; row < header.size.height; ++row) {
        const std::uint8_t* source =
            pixels.data() + static_cast<std::size_t>(row) * rowBytes(header);
        if (!readRow(header, source, buffer.row(visibleRow(header, row)))) return false;
    }
    return true;
}

/// Plays back run-length codes. Every step that would leave the picture or the file fails.
class RunReader {
public:
    RunReader(const BMPHeader& header, std::span<const std::uint8_t> codes, BitmapBuffer& buffer)
        : header_(header), codes_(codes), buffer_(buffer) {}

    bool read() {
        for (;;) {
            if (at_ + 2 > codes_.size()) return row_ >= header_.size.height;  // no end mark
            const std::uint8_t count = codes_[at_++];
            const std::uint8_t value = codes_[at_++];
            if (count > 0) {
                if (!run(count, value)) return false;
            } else if (value == 0) {
                column_ = 0;
                ++row_;
            } else if (value == 1) {
                return true;
            } else if (!(value == 2 ? skip() : literal(value))) {
                return false;
            }
        }
    }

private:
    bool isRLE4() const { return header_.coding == BMPCoding::rle4; }

    bool run(int count, std::uint8_t value) {
        for (int i = 0; i < count; ++i) {
            const int nibble = i % 2 == 0 ? value >> 4 : value & 15;
            if (!store(isRLE4() ? nibble : value)) return false;
        }
        return true;
    }

    bool skip() {
        if (at_ + 2 > codes_.size()) return false;
        column_ += codes_[at_++];
        row_ += codes_[at_++];
        return column_ <= header_.size.width && row_ <= header_.size.height;
    }

    bool literal(std::size_t count) {
        const std::size_t bytes = isRLE4() ? (count + 1) / 2 : count;
        const std::size_t padded = (bytes + 1) / 2 * 2;
        if (at_ + padded > codes_.size()) return false;
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint8_t byte = codes_[at_ + (isRLE4() ? i / 2 : i)];
            const int nibble = i % 2 == 0 ? byte >> 4 : byte & 15;
            if (!store(isRLE4() ? nibble : byte)) return false;
        }
        at_ += padded;
        return true;
    }

    bool store(int index) {
        if (column_ >= header_.size.width || row_ >= header_.size.height) return false;
        std::uint8_t* target =
            buffer_.row(visibleRow(header_, row_)) + std::ptrdiff_t{4} * column_++;
        return storeIndexed(header_, static_cast<std::size_t>(index), target);
    }

    const BMPHeader& header_;
    std::span<const std::uint8_t> codes_;
    BitmapBuffer& buffer_;
    std::size_t at_ = 0;
    int column_ = 0;
    int row_ = 0;  // in the order of the file
};

bool readRuns(const BMPHeader& header, std::span<const std::uint8_t> codes, BitmapBuffer& buffer) {
    for (int y = 0; y < header.size.height; ++y) {
        std::memset(buffer.row(y), 0, 4 * static_cast<std::size_t>(header.size.width));
    }
    return RunReader(header, codes, buffer).read();
}

}  // namespace

Result<UIImage> readBMP(std::span<const std::byte> data) {
    const auto header = parseBMPHeader(data);
    if (!header) {
        return imageIOError(ImageIOErrorCode::damaged,
                            "The picture is damaged, or a kind of %@ that Quillmere can't read.",
                            {"BMP"});
    }
    const Error damaged =
        imageIOError(ImageIOErrorCode::damaged,
                     "The picture is damaged: its %@ data is incomplete or wrong.", {"BMP"});
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(data.data());
    if (header->pixelOffset > data.size()) return damaged;
    const std::span<const std::uint8_t> pixels(bytes + header->pixelOffset,
                                               data.size() - header->pixelOffset);
    const bool isPlain = header->coding == BMPCoding::plain;
    // Before any memory is asked for: what the header promises has to be there.
    if (isPlain &&
        pixels.size() / rowBytes(*header) < static_cast<std::size_t>(header->size.height)) {
        return damaged;
    }
    Result<BitmapBuffer> buffer = BitmapBuffer::createForFile(header->size);
    if (!buffer) return buffer.error();
    const bool complete =
        isPlain ? readPlain(*header, pixels, *buffer) : readRuns(*header, pixels, *buffer);
    if (!complete) return damaged;
    return UIImage((*std::move(buffer)).bitmap());
}

}  // namespace quillmere
