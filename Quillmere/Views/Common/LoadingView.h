// The overlay that holds a whole screen while something short is under way.
#pragma once

#include <string>

#include "Base/Published.h"

namespace quillmere {

/// Wraps a screen's content; a box with the title and an activity indicator lies in the middle.
struct LoadingView {
    static constexpr double boxWidthShare = 1.0 / 2;   // of the width at hand
    static constexpr double boxHeightShare = 1.0 / 5;  // of the height
    static constexpr double boxCornerRadius = 20;

    std::string title;
    Published<bool>& isShowing;

    bool isContentDisabled() const { return isShowing.get(); }
    double contentBlurRadius() const { return isShowing.get() ? 3 : 0; }
    double boxOpacity() const { return isShowing.get() ? 1 : 0; }
};

}  // namespace quillmere
