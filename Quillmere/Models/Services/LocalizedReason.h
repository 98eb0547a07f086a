// What a user is told of an error that another library reports.
#pragma once

#include <string>

#include "Base/Error.h"
#include "Platform/Localization/Localization.h"

namespace quillmere {

/// The text whose key is the error's domain, a full stop and its code; the error's own description
/// where the table has none, as for errors that already come in the user's language.
inline std::string localizedReason(const Error& error, const Localization& localization) {
    const std::string key = error.domain + "." + std::to_string(error.code);
    std::string text = localization.localizedString(key);
    return text == key ? error.localizedDescription : text;
}

}  // namespace quillmere
