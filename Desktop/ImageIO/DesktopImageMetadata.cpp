#include "Desktop/ImageIO/DesktopImageMetadata.h"

#include <new>

#include "Desktop/ImageIO/ExifTables.h"
#include "Desktop/ImageIO/HEIFExif.h"
#include "Desktop/ImageIO/ImageIOError.h"
#include "Desktop/ImageIO/JPEGExif.h"
#include "Desktop/ImageIO/PNGExif.h"
#include "Desktop/ImageIO/PictureFormat.h"
#include "Platform/ImageIO/UTType.h"

namespace quillmere {
namespace {

using Bytes = std::vector<std::byte>;

/// How a format's files carry their Exif block.
struct Carrier {
    PictureFormat format;
    std::string_view typeIdentifier;
    Result<Bytes> (*exif)(std::span<const std::byte> file);
    Result<Bytes> (*withExif)(std::span<const std::byte> file, std::span<const std::byte> exif);
};

constexpr Carrier carriers[] = {
    {PictureFormat::jpeg, UTTypeJPEG, exifOfJPEG, jpegWithExif},
    {PictureFormat::png, UTTypePNG, exifOfPNG, pngWithExif},
    {PictureFormat::heif, UTTypeHEIC, exifOfHEIF, heifWithExif},
};

const Carrier* carrierOf(std::span<const std::byte> file) {
    const PictureFormat format = pictureFormat(file);
    for (const Carrier& carrier : carriers) {
        if (carrier.format == format) return &carrier;
    }
    return nullptr;
}

Error unknownFormat() {
    return imageIOError(ImageIOErrorCode::unknownFormat,
                        "Metadata can only be read from and written to JPEG, PNG and HEIC.");
}

}  // namespace

Result<CGImageProperties> DesktopImageMetadata::propertiesOfImage(
    std::span<const std::byte> data) try {
    const Carrier* carrier = carrierOf(data);
    if (!carrier) return unknownFormat();
    const Result<Bytes> exif = carrier->exif(data);
    if (!exif) return exif.error();
    return propertiesOfExif(*exif);
} catch (const std::bad_alloc&) {
    return imageIOOutOfMemory();
}

Result<Bytes> DesktopImageMetadata::imageWithProperties(std::span<const std::byte> data,
                                                        std::string_view typeIdentifier,
                                                        const CGImageProperties& properties) try {
    const Carrier* carrier = carrierOf(data);
    if (!carrier) return unknownFormat();
    if (carrier->typeIdentifier != typeIdentifier) {
        return imageIOError(ImageIOErrorCode::unknownFormat, "The picture is not of the type %@.",
                            {std::string(typeIdentifier)});
    }
    const Result<Bytes> exif = carrier->exif(data);
    if (!exif) return exif.error();
    const Result<Bytes> changed = exifWithProperties(*exif, properties);
    if (!changed) return changed.error();
    if (changed->empty()) return Bytes(data.begin(), data.end());
    return carrier->withExif(data, *changed);
} catch (const std::bad_alloc&) {
    return imageIOOutOfMemory();
}

}  // namespace quillmere
