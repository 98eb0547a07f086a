#include "Quillmere/Views/Settings/SettingsView.h"

#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Services/Windows.h"
#include "Quillmere/Views/Common/ShareToFriends.h"

namespace quillmere {

SettingsView::SettingsView(const Ports& ports)
    : resolutionLimitIndex(ports.userDefaults.integerForKey(resolutionLimitIndexKey)),
      ports_(ports),
      limitChanged_(resolutionLimitIndex.subscribe([this](std::int64_t index) {
          ports_.userDefaults.setInteger(index, resolutionLimitIndexKey);
      })) {}

void SettingsView::log(std::string_view event) const {
    ports_.analytics.logEventWithName(event, std::nullopt);
}

void SettingsView::open(const std::string& page) {
    if (!page.empty()) ports_.application.openURL(page, {});
}

void SettingsView::shareToFriendsTapped() {
    log(eventName("settings_share"));
    UIViewController* root = rootOfFirstWindow(ports_.application);
    if (root) {
        ports_.activities.present({invitation(ports_.localization, ports_.settings)}, *root);
    }
}

void SettingsView::contactTapped() {
    if (ports_.mail.canSendMail()) {
        log(eventName("settings_feedback_success"));
        isShowingMailView.set(true);
        return;
    }
    log(eventName("settings_feedback_failed"));
    ports_.console.print("送信できません");
    alert.set(AlertTypes::defaultButton(ports_.localization.localizedString("Error"),
                                        ports_.localization.localizedString("FailedToOpenMail")));
}

void SettingsView::moreAppsTapped() {
    log(eventName("settings_more_apps"));
    open(ports_.settings.makerStorePage);
}

void SettingsView::writeReviewTapped() {
    log(eventName("settings_review"));
    open(ports_.settings.reviewLink);
}

void SettingsView::moreAppTapped(std::size_t index) {
    ports_.analytics.logEventWithName(eventName("MoreApp"),
                                      AnalyticsParameters{{"AppIndex", std::to_string(index)}});
    log(eventName("settings_more_apps"));
    open(storePageOf(allMoreApps.at(index), ports_.settings).value_or(std::string()));
}

}  // namespace quillmere
