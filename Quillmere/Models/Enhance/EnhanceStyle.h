// The ten quality styles: the one word of the vocabulary that every layer shares.
#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace quillmere {

/// The raw value indexes the cache of results and is the analytics value `Style`.
enum class EnhanceStyle {
    original = 0,
    high = 1,
    superHigh = 2,
    godHigh = 3,
    oniHigh = 4,
    kyokuHigh = 5,
    speedGeneral = 6,
    speedAnime = 7,
    superSpeed = 8,
    rapidHQ = 9,
};

/// All styles in the order of their raw values.
inline constexpr std::array allEnhanceStyles = {
    EnhanceStyle::original,     EnhanceStyle::high,       EnhanceStyle::superHigh,
    EnhanceStyle::godHigh,      EnhanceStyle::oniHigh,    EnhanceStyle::kyokuHigh,
    EnhanceStyle::speedGeneral, EnhanceStyle::speedAnime, EnhanceStyle::superSpeed,
    EnhanceStyle::rapidHQ,
};

constexpr int rawValue(EnhanceStyle style) { return static_cast<int>(style); }

/// Nothing for a number that no style has.
constexpr std::optional<EnhanceStyle> enhanceStyleFromRawValue(int value) {
    if (value < 0 || value >= static_cast<int>(allEnhanceStyles.size())) return std::nullopt;
    return static_cast<EnhanceStyle>(value);
}

/// The localisation key of the style's name, which is the name of the case.
std::string_view displayKey(EnhanceStyle style);

/// How many times larger than the working picture, on each side, a result leaves the tile engine.
/// `original` is the source itself (1); nothing for `rapidHQ`, whose factor is the video's.
std::optional<int> outputScale(EnhanceStyle style);

}  // namespace quillmere
