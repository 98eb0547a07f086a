// The overlay of a running conversion: a dim layer, and a card with a ring and its percentage.
#pragma once

#include <cmath>
#include <string>

namespace quillmere {

/// What it shows; lengths are in points, colours in sRGB from 0 to 1.
struct ImageConversionProgressView {
    struct Colour {
        double red;
        double green;
        double blue;
    };

    static constexpr double dimOpacity = 0.45;  // black, over the whole window, fading in and out

    static constexpr double cardRadius = 28;
    static constexpr double cardVerticalPadding = 36;
    static constexpr double cardHorizontalPadding = 32;
    static constexpr double cardSpacing = 28;
    static constexpr double cardStartScale = 0.92;  // it grows from here while it fades in
    static constexpr double cardShadowOpacity = 0.2;
    static constexpr double cardShadowRadius = 30;
    static constexpr double cardShadowOffset = 20;
    static constexpr double cardOutlineOpacity = 0.08;

    static constexpr double ringSize = 160;
    static constexpr double ringWidth = 18;
    static constexpr double ringTrackOpacity = 0.12;
    static constexpr Colour gradientTopLeft{0.16, 0.64, 0.92};
    static constexpr Colour gradientBottomRight{0.24, 0.44, 0.85};
    static constexpr double percentageSize = 38;
    static constexpr double titleSize = 20;
    static constexpr double noticeSize = 13;
    static constexpr double noticeOpacity = 0.7;
    static constexpr double noticePadding = 12;

    /// A spring, for the overlay's coming and going.
    static constexpr double springResponse = 0.45;  // seconds
    static constexpr double springDamping = 0.82;
    static constexpr double progressSeconds = 0.25;  // ease in and out

    /// Rounded, as in "13%" for 0.125.
    static std::string percentage(float progress) {
        return std::to_string(std::lround(progress * 100.0F)) + "%";
    }
};

}  // namespace quillmere
