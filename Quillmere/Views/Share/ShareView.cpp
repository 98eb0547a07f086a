#include "Quillmere/Views/Share/ShareView.h"

#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Services/RemoteConfigClient.h"
#include "Quillmere/Views/Common/ShareToFriends.h"
#include "Quillmere/Views/Common/TopViewController.h"

namespace quillmere {

bool ShareView::isEnhanced() const {
    return ports_.remoteConfig.objectForKeyedSubscript(RemoteConfigKey::showEnhancedShareView)
        .boolValue;
}

void ShareView::appear() const {
    ports_.analytics.logEventWithName(
        eventName("abtest_impression"),
        AnalyticsParameters{{"variant", isEnhanced() ? "enhanced" : "original"}});
}

void ShareScreen::log(std::string_view event, AnalyticsParameters further) const {
    further.emplace("variant", variant_);
    ports_.analytics.logEventWithName(event, further);
}

void ShareScreen::presentOnTop(ActivityItem item) const {
    UIViewController* top = topViewController(ports_.application, ports_.crashLog);
    if (top) ports_.activities.present({std::move(item)}, *top);
}

std::size_t ShareScreen::moreAppOfTheTurn() const {
    return static_cast<std::size_t>(ports_.userDefaults.integerForKey(reviewCountKey)) %
           allMoreApps.size();
}

void ShareScreen::moreAppTapped(std::size_t index) const {
    log(eventName("MoreAppAtShare"), {{"AppIndex", std::to_string(index)}});
    ports_.analytics.logEventWithName(eventName("share_more_apps"), std::nullopt);
    if (const auto page = storePageOf(allMoreApps.at(index), ports_.settings)) {
        ports_.application.openURL(*page, {});
    }
}

void OriginalShareView::appear() {
    iconScale.set(1.2);
    log(eventName("share_view_displayed"));
}

void OriginalShareView::shareImageTapped() const {
    ports_.analytics.logEventWithName(eventName("saved_shareImage"), std::nullopt);
    presentOnTop(convertedImage());
    log(eventName("share_image_tapped"));
}

void OriginalShareView::shareToFriendsTapped() const {
    ports_.analytics.logEventWithName(eventName("saved_shareApp"), std::nullopt);
    presentOnTop(invitation(ports_.localization, ports_.settings));
    log(eventName("share_app_tapped"));
}

std::vector<std::size_t> OriginalShareView::moreApps() const {
    constexpr std::size_t fixed = 2;
    const std::size_t turn = moreAppOfTheTurn();
    return turn == fixed ? std::vector{fixed} : std::vector{fixed, turn};
}

}  // namespace quillmere
