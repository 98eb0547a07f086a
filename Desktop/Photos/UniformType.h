// The system's identifiers of what a file holds, and which is a kind of which.
#pragma once

#include <array>
#include <string_view>

#include "Platform/ImageIO/UTType.h"
#include "Platform/Photos/NSItemProvider.h"
#include "Platform/Photos/PHAsset.h"

namespace quillmere {

inline constexpr std::string_view UTTypeImage = "public.image";

/// Of what the library saves: the ending of its name.
struct SavedType {
    std::string_view identifier;
    std::string_view ending;
};
inline constexpr std::array<SavedType, 4> savedTypes{
    {{UTTypeJPEG, ".jpg"}, {UTTypeHEIC, ".heic"}, {UTTypePNG, ".png"}, {UTTypeWebP, ".webp"}}};

/// Empty for types that the library does not save.
constexpr std::string_view endingOfType(std::string_view identifier) {
    for (const SavedType& type : savedTypes) {
        if (type.identifier == identifier) return type.ending;
    }
    return {};
}

/// Whether a file of the type `own` is one of the type `asked`.
constexpr bool conforms(std::string_view own, PHAssetMediaType kind, std::string_view asked) {
    if (asked == own || asked == "public.data" || asked == "public.item") return true;
    return asked == (kind == PHAssetMediaType::video ? UTTypeMovie : UTTypeImage);
}

}  // namespace quillmere
