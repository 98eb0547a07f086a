// HEIC files in all the forms that the standard lets their items take, around one real tile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Tests/Desktop/ImageIO/PictureFiles.h"

namespace quillmere {

/// How a file is written. Its picture is always a grid of two tiles, 112 by 40.
struct HEIFShape {
    const char* name;
    unsigned ilocVersion = 1;
    unsigned offsetBytes = 4;
    unsigned lengthBytes = 4;
    unsigned baseBytes = 0;
    unsigned indexBytes = 0;
    bool longIdentifiers = false;  // 32 bits wherever a box knows that
    bool longBoxes = false;        // headers with 64-bit sizes
    bool dataFirst = false;        // `mdat` in front of `meta`
    bool openEnd = false;          // `mdat`, then the last box, has no size
    bool tilesInMeta = false;      // their data lies in `idat`
    bool pieces = false;           // the first tile's data lies in two extents
    enum class Exif { none, inData, inMeta, unreferred, onTheTile, twice } exif = Exif::none;
};

/// `exif` is the whole item where the shape has one.
Bytes heifFile(const HEIFShape& shape, const Bytes& exif);

/// Numbers, four letters, and other files' parts, one behind another.
class BoxWriter {
public:
    BoxWriter& number(std::uint64_t value, unsigned bytes) {
        for (unsigned i = bytes; i-- > 0;) data.push_back(static_cast<std::byte>(value >> 8 * i));
        return *this;
    }
    BoxWriter& text(const std::string& letters) {
        for (const char letter : letters) data.push_back(static_cast<std::byte>(letter));
        return *this;
    }
    BoxWriter& add(const Bytes& more) {
        for (const std::byte byte : more) data.push_back(byte);
        return *this;
    }
    Bytes box(const std::string& type, bool isLong = false) const {
        BoxWriter whole;
        whole.number(isLong ? 1 : data.size() + 8, 4).text(type);
        if (isLong) whole.number(data.size() + 16, 8);
        return whole.add(data).data;
    }

    Bytes data;
};

}  // namespace quillmere
