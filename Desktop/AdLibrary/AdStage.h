// Which ads are on the screen, for the window that draws them.
#pragma once

#include "Base/Published.h"
#include "Quillmere/Models/Services/MoreApp.h"

namespace quillmere {

/// Main thread. The library puts entries of `allMoreApps` here; null stands for no ad.
struct AdStage {
    /// The window sets it to null when the user closes the ad.
    Published<const MoreApp*> fullScreen{nullptr};
    /// What the one banner of the detail screen has been filled with.
    Published<const MoreApp*> banner{nullptr};
};

}  // namespace quillmere
