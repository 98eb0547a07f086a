#include <chrono>

#include "Base/Invariant.h"
#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Views/Common/ShareToFriends.h"
#include "Quillmere/Views/Share/ShareView.h"

namespace quillmere {
namespace {

constexpr std::chrono::milliseconds buttonsDelay{300};
constexpr std::chrono::milliseconds confettiDelay{500};
constexpr double bestQuality = 1;

/// 128 random bits, in the usual form of such identifiers.
std::string makeUUID(const RandomSource& random) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const int letters : {8, 4, 4, 4, 12}) {
        if (!text.empty()) text += '-';
        for (int i = 0; i < letters; ++i) text += digits[uniformBelow(16, random)];
    }
    return text;
}

}  // namespace

std::string_view nameOf(EnhancedShareView::ShareOption option) {
    using enum EnhancedShareView::ShareOption;
    switch (option) {
        case image:
            return "image";
        case instagram:
            return "instagram";
        case message:
            return "message";
        case other:
            return "other";
    }
    invariantBroken();
}

void EnhancedShareView::appear() {
    isInstagramInstalled.set(
        ports_.application.canOpenURL("instagram://app", [weak = weak_from_this()](bool installed) {
            if (const auto self = weak.lock()) self->isInstagramInstalled.set(installed);
        }));
    iconScale.set(1);
    ports_.dispatch.mainQueue().asyncAfter(
        buttonsDelay, [self = shared_from_this()] { self->animateShareButtons.set(true); });
    ports_.dispatch.mainQueue().asyncAfter(
        confettiDelay, [self = shared_from_this()] { self->showConfetti.set(true); });
    if (std::exchange(impressionSent_, true)) return;
    log(eventName("share_view_displayed"));
}

std::vector<EnhancedShareView::ShareOption> EnhancedShareView::options() const {
    using enum ShareOption;
    if (isInstagramInstalled.get()) return {instagram, message, other};
    return {message, other};
}

void EnhancedShareView::shareImageTapped() {
    selectedShareOption.set(ShareOption::image);
    isShareSheetPresented.set(true);
    log(eventName("share_image_tapped"), {{"source", "main_button"}});
}

void EnhancedShareView::optionTapped(ShareOption option) {
    selectedShareOption.set(option);
    isShareSheetPresented.set(true);
    log(eventName("share_option_tapped"), {{"option", std::string(nameOf(option))}});
}

std::vector<ActivityItem> EnhancedShareView::activityItems() {
    const auto option = selectedShareOption.get();
    if (!option) return {};
    log(eventName("share_sheet_open"), {{"option", std::string(nameOf(*option))}});
    if (*option == ShareOption::instagram) openInstagram();
    return {convertedImage()};
}

void EnhancedShareView::openInstagram() {
    const auto jpeg = ports_.imageIO.jpegRepresentation(convertedImage(), bestQuality);
    if (!jpeg) invariantBroken();
    const auto file = ports_.fileManager.temporaryDirectory() /
                      ("instagram_share_" + makeUUID(ports_.random) + ".igo");
    const auto written = ports_.fileManager.writeFile(file, *jpeg, WriteExisting::replace);
    if (!written) {
        ports_.console.print("画像の保存に失敗しました: " + written.error().localizedDescription);
        return;
    }
    ports_.application.openURL(
        "instagram://library?AssetPath=" + file.string(), [self = shared_from_this()](bool opened) {
            if (opened) return;
            self->ports_.console.print("Instagramアプリの起動に失敗しました");
            self->presentOnTop(self->convertedImage());
        });
}

void EnhancedShareView::shareToFriendsTapped() const {
    ports_.analytics.logEventWithName(eventName("saved_shareApp"), std::nullopt);
    presentOnTop(invitation(ports_.localization, ports_.settings, "\""));
    log(eventName("share_app_tapped"));
}

}  // namespace quillmere
