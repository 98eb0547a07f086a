// The maker's other applications, which several screens mention.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "Quillmere/Models/Services/ProjectSettings.h"

namespace quillmere {

struct MoreApp {
    const char* title;  // a name, the same in every language
    const char* icon;   // the resource's name, without its extension
    const char* storeIdentifier;
};

/// Their order is what `AppIndex` counts.
inline constexpr std::array<MoreApp, 8> allMoreApps{{
    {"Fernbook", "more_app_fernbook", "fernbook"},
    {"Drift Timer", "more_app_drift_timer", "drift-timer"},
    {"Palette Pond", "more_app_palette_pond", "palette-pond"},
    {"Lantern Reader", "more_app_lantern_reader", "lantern-reader"},
    {"Paper Sundial", "more_app_paper_sundial", "paper-sundial"},
    {"Reed Tuner", "more_app_reed_tuner", "reed-tuner"},
    {"Moss Ledger", "more_app_moss_ledger", "moss-ledger"},
    {"Cloud Shelf", "more_app_cloud_shelf", "cloud-shelf"},
}};

/// Nothing for an edition whose maker has no page on a store.
inline std::optional<std::string> storePageOf(const MoreApp& app, const ProjectSettings& settings) {
    if (settings.makerStorePage.empty()) return std::nullopt;
    const bool slash = settings.makerStorePage.back() == '/';
    return settings.makerStorePage + (slash ? "" : "/") + app.storeIdentifier;
}

}  // namespace quillmere
