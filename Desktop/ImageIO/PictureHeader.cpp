#include "Desktop/ImageIO/PictureHeader.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <utility>

#include "Desktop/ImageIO/BMPHeader.h"
#include "Desktop/ImageIO/PictureFormat.h"
#include "Desktop/ImageIO/QuietDecoders.h"
#include "Desktop/ImageIO/VipsHandles.h"
#include "Desktop/ImageIO/VipsLibrary.h"
#include "Platform/ImageIO/UTType.h"

namespace quillmere {
namespace {

using Bytes = std::vector<std::byte>;

constexpr std::size_t signatureSize = 4096;  // holds the header of a bitmap too
/// A larger TIFF is taken for one without tags: its tables may lie anywhere in it.
constexpr std::size_t largestTIFF = std::size_t{64} << 20;

using VipsSourceRef = std::unique_ptr<VipsSource, GObjectDeleter>;

Bytes beginningOf(const std::filesystem::path& file, std::size_t most) {
    Bytes bytes(most);
    std::ifstream stream(file, std::ios::binary);
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(most));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

bool isAVIF(const Bytes& beginning) {
    constexpr std::string_view brand = "avif";
    return beginning.size() >= 12 &&
           std::string_view(reinterpret_cast<const char*>(beginning.data()) + 8, 4) == brand;
}

std::string_view typeOf(PictureFormat format, const Bytes& beginning) {
    switch (format) {
        case PictureFormat::jpeg:
            return UTTypeJPEG;
        case PictureFormat::png:
            return UTTypePNG;
        case PictureFormat::webp:
            return "org.webmproject.webp";
        case PictureFormat::heif:
            return isAVIF(beginning) ? "public.avif" : UTTypeHEIC;
        case PictureFormat::tiff:
            return "public.tiff";
        case PictureFormat::jpegXL:
            return "public.jpeg-xl";
        case PictureFormat::gif:
            return "com.compuserve.gif";
        case PictureFormat::bmp:
            return "com.microsoft.bmp";
        case PictureFormat::unknown:
            break;
    }
    return {};
}

VipsImageRef headerOf(PictureFormat format, VipsSource* source) {
    const auto load = [&](auto loader) {
        return vipsResult([&](VipsImage** out) { return loader(source, out, nullptr); });
    };
    switch (format) {
        case PictureFormat::jpeg:
            return load(vips_jpegload_source);
        case PictureFormat::png:
            return load(vips_pngload_source);
        case PictureFormat::webp:
            return load(vips_webpload_source);
        case PictureFormat::heif:
            loadVipsModule(VipsModule::heif);
            return load(vips_heifload_source);
        case PictureFormat::tiff:
            return load(vips_tiffload_source);
        case PictureFormat::jpegXL:
            loadVipsModule(VipsModule::jxl);
            return load(vips_jxlload_source);
        case PictureFormat::gif:
            return load(vips_gifload_source);
        case PictureFormat::bmp:
        case PictureFormat::unknown:
            break;
    }
    return nullptr;
}

Bytes blobOf(VipsImage* image, const char* name) {
    const void* data = nullptr;
    std::size_t size = 0;
    if (vips_image_get_typeof(image, name) == 0) return {};
    if (vips_image_get_blob(image, name, &data, &size) != 0) return {};
    const auto* first = static_cast<const std::byte*>(data);
    return Bytes(first, first + size);
}

/// Containers put different things before the block; it begins with its byte order.
Bytes fromTIFFHeader(Bytes block) {
    constexpr std::array<std::array<std::byte, 4>, 2> headers{{
        {std::byte{'I'}, std::byte{'I'}, std::byte{42}, std::byte{0}},
        {std::byte{'M'}, std::byte{'M'}, std::byte{0}, std::byte{42}},
    }};
    constexpr std::ptrdiff_t furthest = 16;
    const auto searched =
        block.begin() + std::min(furthest, static_cast<std::ptrdiff_t>(block.size()));
    for (const auto& header : headers) {
        const auto found = std::search(block.begin(), searched, header.begin(), header.end());
        if (found == searched) continue;
        block.erase(block.begin(), found);
        return block;
    }
    return {};
}

std::optional<PictureHeader> bmpHeader(const Bytes& beginning, std::string_view type) {
    const auto header = parseBMPHeader(beginning);
    if (!header) return std::nullopt;
    return PictureHeader{type, header->size, 1, {}, {}};
}

}  // namespace

std::optional<PictureHeader> readPictureHeader(const std::filesystem::path& file) {
    const Bytes beginning = beginningOf(file, signatureSize);
    const PictureFormat format = pictureFormat(beginning);
    if (format == PictureFormat::unknown) return std::nullopt;
    const std::string_view type = typeOf(format, beginning);
    if (format == PictureFormat::bmp) return bmpHeader(beginning, type);

    if (!startVips()) return std::nullopt;
    std::optional<QuietDecoders> quiet;
    if (format == PictureFormat::heif || format == PictureFormat::jpegXL) quiet.emplace();
    const VipsSourceRef source(vips_source_new_from_file(file.c_str()));
    const VipsImageRef image = source ? headerOf(format, source.get()) : nullptr;
    if (!image) {
        forgetVipsErrors();
        return std::nullopt;
    }

    PictureHeader header;
    header.typeIdentifier = type;
    header.size = {image->Xsize, image->Ysize};
    const bool turned = format == PictureFormat::heif || format == PictureFormat::jpegXL;
    header.orientation = turned ? 1 : vips_image_get_orientation(image.get());
    if (header.orientation >= 5) std::swap(header.size.width, header.size.height);
    header.exif =
        fromTIFFHeader(format == PictureFormat::tiff ? beginningOf(file, largestTIFF)
                                                     : blobOf(image.get(), VIPS_META_EXIF_NAME));
    const Bytes xmp = blobOf(image.get(), VIPS_META_XMP_NAME);
    header.xmp.assign(reinterpret_cast<const char*>(xmp.data()), xmp.size());
    return header;
}

}  // namespace quillmere
