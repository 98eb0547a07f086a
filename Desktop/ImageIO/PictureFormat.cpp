#include "Desktop/ImageIO/PictureFormat.h"

#include <algorithm>
#include <string_view>

namespace quillmere {
namespace {

using namespace std::string_view_literals;

bool isHeif(std::string_view start) {
    if (start.size() < 12 || start.substr(4, 4) != "ftyp") return false;
    constexpr std::string_view brands[] = {"heic", "heix", "heim", "heis", "hevc", "hevx", "hevm",
                                           "hevs", "mif1", "msf1", "miaf", "avif", "avis"};
    return std::find(std::begin(brands), std::end(brands), start.substr(8, 4)) != std::end(brands);
}

}  // namespace

PictureFormat pictureFormat(std::span<const std::byte> data) {
    const std::string_view start(reinterpret_cast<const char*>(data.data()),
                                 std::min<std::size_t>(data.size(), 12));
    const auto starts = [&](std::string_view with) { return start.substr(0, with.size()) == with; };
    if (starts("\xff\xd8\xff"sv)) return PictureFormat::jpeg;
    if (starts("\x89PNG\r\n\x1a\n"sv)) return PictureFormat::png;
    if (starts("RIFF"sv) && start.substr(std::min<std::size_t>(8, start.size())) == "WEBP") {
        return PictureFormat::webp;
    }
    if (isHeif(start)) return PictureFormat::heif;
    if (starts("II*\0"sv) || starts("MM\0*"sv)) return PictureFormat::tiff;
    if (starts("II+\0"sv) || starts("MM\0+"sv)) return PictureFormat::tiff;  // over 4 GiB
    if (starts("\xff\x0a"sv) || starts("\0\0\0\x0cJXL \r\n\x87\n"sv)) return PictureFormat::jpegXL;
    if (starts("GIF87a"sv) || starts("GIF89a"sv)) return PictureFormat::gif;
    if (starts("BM"sv)) return PictureFormat::bmp;
    return PictureFormat::unknown;
}

const char* nameOf(PictureFormat format) {
    switch (format) {
        case PictureFormat::jpeg:
            return "JPEG";
        case PictureFormat::png:
            return "PNG";
        case PictureFormat::webp:
            return "WebP";
        case PictureFormat::heif:
            return "HEIC or AVIF";
        case PictureFormat::tiff:
            return "TIFF";
        case PictureFormat::jpegXL:
            return "JPEG XL";
        case PictureFormat::gif:
            return "GIF";
        case PictureFormat::bmp:
            return "BMP";
        case PictureFormat::unknown:
            break;
    }
    return "picture";
}

}  // namespace quillmere
