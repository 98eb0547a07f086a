#include "Desktop/Qml/Bridges/ShareBridge.h"

#include <QVariantMap>

#include "Quillmere/Views/Common/TopViewController.h"

namespace quillmere {

ShareBridge::ShareBridge(const SharePorts& ports, const UIImage& picture)
    : ports_(ports), view_(ports) {
    if (view_.isEnhanced()) {
        enhanced_ = std::make_shared<EnhancedShareView>(ports, picture);
        watch(enhanced_->iconScale, &ShareBridge::changed);
        watch(enhanced_->animateShareButtons, &ShareBridge::changed);
        watch(enhanced_->showConfetti, &ShareBridge::changed);
        watch(enhanced_->isInstagramInstalled, &ShareBridge::changed);
        watch(enhanced_->isShareSheetPresented, &ShareBridge::presentSheet);
    } else {
        original_ = std::make_shared<OriginalShareView>(ports, picture);
        watch(original_->iconScale, &ShareBridge::changed);
    }
}

void ShareBridge::appear() {
    enhanced_ ? enhanced_->appear() : original_->appear();
    view_.appear();
}

QStringList ShareBridge::options() const {
    QStringList names;
    if (enhanced_) {
        for (const auto option : enhanced_->options()) names << qt(nameOf(option));
    }
    return names;
}

QVariantList ShareBridge::moreApps() const {
    QVariantList list;
    for (const std::size_t index : enhanced_ ? enhanced_->moreApps() : original_->moreApps()) {
        list.push_back(static_cast<int>(index));
    }
    return list;
}

void ShareBridge::shareImageTapped() {
    enhanced_ ? enhanced_->shareImageTapped() : original_->shareImageTapped();
}

void ShareBridge::optionTapped(const QString& option) {
    if (!enhanced_) return;
    for (const auto known : enhanced_->options()) {
        if (qt(nameOf(known)) == option) return enhanced_->optionTapped(known);
    }
}

void ShareBridge::shareToFriendsTapped() {
    enhanced_ ? enhanced_->shareToFriendsTapped() : original_->shareToFriendsTapped();
}

void ShareBridge::presentSheet() {
    if (!enhanced_->isShareSheetPresented.get()) return;
    UIViewController* top = topViewController(ports_.application, ports_.crashLog);
    auto items = enhanced_->activityItems();
    if (top) ports_.activities.present(std::move(items), *top);
    enhanced_->isShareSheetPresented.set(false);
}

QVariantList ShareBridge::confetti(double width) const {
    static constexpr const char* colors[] = {"#e5484d", "#3e7bfa", "#30a46c",
                                             "#f5c518", "#f08c2e", "#8e4ec6"};
    QVariantList pieces;
    for (const Confetti& piece : makeConfetti(width, ports_.random)) {
        pieces.push_back(QVariantMap{{"color", colors[static_cast<std::size_t>(piece.color)]},
                                     {"x", piece.position.x},
                                     {"y", piece.position.y},
                                     {"rotation", piece.rotation},
                                     {"scale", piece.scale}});
    }
    return pieces;
}

}  // namespace quillmere
