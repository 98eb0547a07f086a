// The keys of everything that outlives the process in the user defaults.
#pragma once

#include <string_view>

namespace quillmere {

// The texts are what is stored on a user's disk, and never change. So are the types; a key that was
// never written is 0 or false, which makes each default here a decision.

/// Integer: the format of a saved picture, a raw value of `UserDefaultsHelper::ImageFormat`.
inline constexpr std::string_view imageFormatKey = "imageFormatKey";
/// Boolean: whether a saved picture keeps the date of its source.
inline constexpr std::string_view preserveCreationDateKey = "preserveCreationDateKey";
/// Boolean: whether a saved picture keeps the place of its source.
inline constexpr std::string_view preserveLocationKey = "preserveLocationKey";
/// Integer: see `resolutionLimit`.
inline constexpr std::string_view resolutionLimitIndexKey = "resolutionLimitIndexKey";
/// Integer: how many single pictures were saved; it counts saves, whatever its name says.
inline constexpr std::string_view reviewCountKey = "reviewCountKey";
/// Boolean: whether the cropper is offered for a single picture.
inline constexpr std::string_view enableCropKey = "enableCropKey";
/// Integer: how often the application was started.
inline constexpr std::string_view launchCountKey = "launchCountKey";

}  // namespace quillmere
