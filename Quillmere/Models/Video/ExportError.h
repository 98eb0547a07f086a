// What a video job says when it fails for a reason of its own.
#pragma once

#include <string_view>

#include "Base/Error.h"
#include "Platform/Localization/Localization.h"

namespace quillmere {

inline constexpr const char* exportErrorDomain = "com.exportsession";

/// The text of `key` as an error for the user.
inline Error exportError(const Localization& localization, std::string_view key) {
    return {exportErrorDomain, 0, localization.localizedString(key)};
}

}  // namespace quillmere
