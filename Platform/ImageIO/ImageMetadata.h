// The metadata tables of picture files, read and rewritten in memory.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "Base/Result.h"
#include "Platform/ImageIO/CGImageProperties.h"

namespace quillmere {

/// Works on JPEG, PNG and HEIC. May be called from any thread. Every failure is an error whose text
/// is a whole sentence; data that is damaged, or not of the format, is one.
class ImageMetadata {
public:
    virtual ~ImageMetadata() = default;

    /// What a source made of `data` says of its picture 0: those entries that are one text or one
    /// number. A file without tables has no properties, which is no error.
    virtual Result<CGImageProperties> propertiesOfImage(std::span<const std::byte> data) = 0;

    /// The file `data` with `properties` in its tables. The coded picture stays as it is, byte for
    /// byte, and so does everything else of the file: orientation, colour profile, other tables.
    ///
    /// An entry takes the place of the one of its name, and entries that are not named stay. A GPS
    /// table takes the place of the old one as a whole: nothing of a former place can be read
    /// afterwards. `typeIdentifier` is that of the format that `data` is in (`UTTypeJPEG`).
    virtual Result<std::vector<std::byte>> imageWithProperties(
        std::span<const std::byte> data, std::string_view typeIdentifier,
        const CGImageProperties& properties) = 0;
};

}  // namespace quillmere
