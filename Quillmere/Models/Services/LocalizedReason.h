// What a user is told of an error that another library reports.
#pragma once

#include <string>

#include "Base/Error.h"
#include "Base/FormatString.h"
#include "Platform/Localization/Localization.h"

namespace quillmere {

/// The text whose key is the error's sentence, with its values; else the one whose key is its
/// domain, a full stop and its code, for a library that has more to say than can be translated.
/// Its own description where the table has neither, as for errors that already come in the user's
/// language.
inline std::string localizedReason(const Error& error, const Localization& localization) {
    const std::string ofSentence = localization.localizedString(error.sentence);
    if (ofSentence != error.sentence) return formatString(ofSentence, error.values);
    const std::string byCode = error.domain + "." + std::to_string(error.code);
    const std::string ofCode = localization.localizedString(byCode);
    return ofCode == byCode ? error.localizedDescription : ofCode;
}

}  // namespace quillmere
