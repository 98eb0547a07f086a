// The banner beneath the detail screen.
#pragma once

#include <memory>
#include <string>

#include "Platform/AdLibrary/GADBannerView.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/RemoteConfig/RemoteConfig.h"
#include "Platform/UserDefaults/UserDefaults.h"

namespace quillmere {

struct AdmobBannerView {
    struct Ports {
        GADBannerViews& bannerViews;
        const UIApplication& application;
        const UserDefaults& userDefaults;
        const RemoteConfig& remoteConfig;
    };

    /// From so many saves on, a banner may be one that can be folded away.
    static constexpr int collapsibleFrom = 4;

    /// A banner with its one request sent; it lives as long as the view that shows it. Main
    /// thread.
    static std::shared_ptr<GADBannerView> make(const Ports& ports, const std::string& adUnitID,
                                               double screenWidth);
};

}  // namespace quillmere
