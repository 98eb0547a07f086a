#include "CommandLine/PictureFormat.h"

#include <algorithm>
#include <string>

#include "Base/Invariant.h"

namespace quillmere::cli {

std::string_view formatName(PictureFormat format) {
    switch (format) {
        case PictureFormat::jpg:
            return "jpg";
        case PictureFormat::heic:
            return "heic";
        case PictureFormat::png:
            return "png";
    }
    invariantBroken();
}

std::optional<PictureFormat> formatNamed(std::string_view name) {
    for (const PictureFormat format : UserDefaultsHelper::allImageFormats) {
        if (formatName(format) == name) return format;
    }
    return std::nullopt;
}

std::optional<PictureFormat> formatOfExtension(const std::filesystem::path& file) {
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    if (extension == ".jpg" || extension == ".jpeg") return PictureFormat::jpg;
    if (extension == ".heic" || extension == ".heif") return PictureFormat::heic;
    if (extension == ".png") return PictureFormat::png;
    return std::nullopt;
}

}  // namespace quillmere::cli
