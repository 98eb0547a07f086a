// The overlay that holds a whole screen while something is under way.
#pragma once

namespace quillmere {

/// Wraps a screen's content, which is blurred and takes no taps meanwhile; a box with a title and
/// an activity indicator lies in the middle.
struct LoadingView {
    static constexpr double boxWidthShare = 1.0 / 2;   // of the width at hand
    static constexpr double boxHeightShare = 1.0 / 5;  // of the height
    static constexpr double boxCornerRadius = 20;      // points, as is the next
    static constexpr double contentBlurRadius = 3;
};

}  // namespace quillmere
