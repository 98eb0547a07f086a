// Keeps a swipe from leaving a screen whose own gestures go the same way.
#pragma once

#include "Platform/Application/UIApplication.h"

namespace quillmere {

/// Without content of its own; a screen embeds it.
struct DisableSwipeBackViewController {
    /// When it comes to stand in a screen, the gesture goes for the whole navigation stack around
    /// that screen, for good. Where a link of the way there is missing, nothing happens.
    static void didMoveToParentViewController(UIViewController* parent) {
        const UIViewController* screen = parent ? parent->parentViewController() : nullptr;
        UINavigationController* navigation = screen ? screen->navigationController() : nullptr;
        if (navigation) navigation->removeInteractivePopGestureRecognizer();
    }
};

}  // namespace quillmere
