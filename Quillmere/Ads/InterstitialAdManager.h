// When the ad of a conversion is loaded.
#pragma once

namespace quillmere {

/// Main thread.
class InterstitialAdManager {
public:
    virtual ~InterstitialAdManager() = default;

    virtual void loadAd() = 0;
};

}  // namespace quillmere
