// An ad that stands in a screen's own layout.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Application/UIApplication.h"

namespace quillmere {

struct GADRequest {
    /// Additional parameters for the network; nothing for a plain request.
    std::optional<std::map<std::string, std::string>> extras;
};

/// Main thread. Takes no room until it has an ad.
class GADBannerView {
public:
    virtual ~GADBannerView() = default;

    virtual void setAdUnitID(const std::string& adUnitID) = 0;
    /// Over which a tapped ad opens; may be null.
    virtual void setRootViewController(UIViewController* controller) = 0;
    virtual void loadRequest(const GADRequest& request) = 0;
};

class GADBannerViews {
public:
    virtual ~GADBannerViews() = default;

    /// Of that width in points, with the height that the library finds right for the window as it
    /// stands.
    virtual std::shared_ptr<GADBannerView> anchoredAdaptiveBanner(double width) = 0;
};

}  // namespace quillmere
