// The whole vocabulary of events: their names, and the parameters that each takes.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "Base/Invariant.h"
#include "Platform/Analytics/Analytics.h"

namespace quillmere {

struct AnalyticsEvent {
    std::string_view name;
    std::array<std::string_view, 2> parameters;  // the empty ones are none
    std::string_view optionalParameter;          // may be there or not
};

/// `Style` is the raw value of the selected style, `ErrorCode` that of the tile engine's failure,
/// `AppIndex` 0 to 7. `variant` is "original" or "enhanced", `option` the name of a share option.
inline constexpr std::array<AnalyticsEvent, 36> analyticsEvents{{
    {"AppBecomeActive", {}, {}},
    {"AppGoBackground", {}, {}},

    {"home_shareApp", {}, {}},
    {"MoreAppAtHome2", {"AppIndex"}, {}},

    {"settings_share", {}, {}},
    {"settings_feedback_success", {}, {}},
    {"settings_feedback_failed", {}, {}},
    {"settings_review", {}, {}},
    {"settings_more_apps", {}, {}},
    {"MoreApp", {"AppIndex"}, {}},

    {"ShowDetail", {}, {}},
    {"TryConvert", {"Style"}, {}},
    {"ConvertSuccess", {"Style"}, {}},
    {"ConvertFailed", {"ErrorCode"}, {}},
    {"TrySave", {"Style"}, {}},
    {"Save", {"Style"}, {}},
    {"TrySaveVideo", {"Style"}, {}},
    {"SaveVideoSuccess", {"Style"}, {}},
    {"SaveVideoCanceled", {"Style"}, {}},
    {"SaveVideoFailure", {"Style"}, {}},
    {"ScreenshotTaken", {}, {}},

    {"ConvertAdsLoaded", {}, {}},
    {"ConvertAdsNotLoaded", {}, {}},
    {"SaveAdsLoaded", {}, {}},
    {"SaveAdsNotLoaded", {}, {}},

    {"abtest_impression", {"variant"}, {}},
    {"share_view_displayed", {"variant"}, {}},
    {"share_image_tapped", {"variant"}, "source"},
    {"share_option_tapped", {"variant", "option"}, {}},
    {"share_sheet_open", {"variant", "option"}, {}},
    {"share_app_tapped", {"variant"}, {}},
    {"MoreAppAtShare", {"AppIndex", "variant"}, {}},
    {"share_more_apps", {}, {}},
    {"saved_shareImage", {}, {}},
    {"saved_shareApp", {}, {}},
    {"saved_shareVideo", {}, {}},
}};

/// Nothing for a name that no event has.
constexpr std::optional<AnalyticsEvent> analyticsEventWithName(std::string_view name) {
    for (const AnalyticsEvent& event : analyticsEvents) {
        if (event.name == name) return event;
    }
    return std::nullopt;
}

/// The name itself; one that no event has does not compile. So call sites keep the literal, which
/// can be searched for.
consteval std::string_view eventName(std::string_view name) {
    if (!analyticsEventWithName(name)) invariantBroken();
    return name;
}

/// Whether there is such an event and it takes these parameters: all that it must have, none that
/// it doesn't know, and nothing in the place of empty ones.
bool isInVocabulary(std::string_view name, const std::optional<AnalyticsParameters>& parameters);

}  // namespace quillmere
