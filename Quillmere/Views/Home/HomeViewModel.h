// The few values of the home screen that outlive its drawing, and the count of launches.
#pragma once

#include "Base/Published.h"
#include "Platform/UserDefaults/UserDefaults.h"

namespace quillmere {

/// Main thread.
class HomeViewModel {
public:
    explicit HomeViewModel(UserDefaults& userDefaults) : userDefaults_(userDefaults) {}

    Published<bool> showSettings{false};
    /// Mirrors the preference `enableCropKey`.
    Published<bool> enableCrop{false};
    /// From the start of a video's way in until its picker has closed, or its first frame is there.
    /// Nothing shows it.
    Published<bool> isLoading{false};

    /// At each appearance. The first one in a process counts a launch.
    void refresh();
    void toggleCrop();

private:
    UserDefaults& userDefaults_;
    bool hasCheckLaunchCount_ = false;
};

}  // namespace quillmere
