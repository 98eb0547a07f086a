// When the ad that greets a returning user is loaded and shown.
#pragma once

namespace quillmere {

/// Main thread.
class AppOpenAdManager {
public:
    virtual ~AppOpenAdManager() = default;

    /// Whether the ad library has started; before that, nothing is loaded.
    virtual void setHasStartCompleted(bool hasStartCompleted) = 0;
    virtual void loadAd() = 0;
    /// Without a loaded ad, nothing is shown.
    virtual void showAdIfAvailable() = 0;
};

}  // namespace quillmere
