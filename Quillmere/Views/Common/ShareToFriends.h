// The invitation to pass the application on.
#pragma once

#include <string>

#include "Platform/Localization/Localization.h"
#include "Quillmere/Models/Services/ProjectSettings.h"

namespace quillmere {

/// The application's name between `quote`s, and its store link where the edition has one.
inline std::string invitation(const Localization& localization, const ProjectSettings& settings,
                              const char* quote = "") {
    const std::string name = quote + localization.localizedString("AppName") + quote;
    return settings.storeLink.empty() ? name : name + " " + settings.storeLink;
}

}  // namespace quillmere
