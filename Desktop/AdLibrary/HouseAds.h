// Shows the maker's other applications where an edition has places for ads.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "Desktop/AdLibrary/AdStage.h"
#include "Desktop/AdLibrary/OfflineAds.h"

namespace quillmere {

/// Takes the entries of `allMoreApps` in turn, one for each ad unit that is not empty; a unit that
/// is empty gets an error, or a banner that stays so. Never goes to a network. Parameters of a
/// banner's request are for networks, and ignored.
///
/// One full-screen ad is shown at a time: another one fails to present, and can be presented
/// later. Outlives the ads and banners that it makes, and the stage outlives it.
class HouseAds final : public OfflineAds {
public:
    HouseAds(Dispatch& dispatch, AdStage& stage);

    void loadWithAdUnitID(GADFullScreenAdFormat format, const std::string& adUnitID,
                          LoadHandler completionHandler) override;
    std::shared_ptr<GADBannerView> anchoredAdaptiveBanner(double width) override;

private:
    class FullScreenAd;
    class Banner;

    const MoreApp& nextApp();
    void present(FullScreenAd& ad);
    void closed();

    AdStage& stage_;
    std::size_t shown_ = 0;
    std::weak_ptr<GADFullScreenContentDelegate> delegateOfShownAd_;
    const Banner* filledBanner_ = nullptr;
    Subscription closing_;
};

}  // namespace quillmere
