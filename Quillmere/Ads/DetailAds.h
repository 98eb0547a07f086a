// The ads of the detail screen, as its logic asks for them.
#pragma once

namespace quillmere {

/// Main thread. Nothing that calls these waits for them.
class DetailAds {
public:
    virtual ~DetailAds() = default;

    /// Loads the ad of the next save.
    virtual void loadSaveAd() = 0;
    /// May show an ad while a conversion is under way.
    virtual void showConvertAd() = 0;
    /// After a saved picture has been counted. True where this save's turn is the ad's, shown or
    /// not, and so nothing else's.
    virtual bool showSaveAd() = 0;
};

}  // namespace quillmere
