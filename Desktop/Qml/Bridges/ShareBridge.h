// The share screen after a save.
#pragma once

#include <QVariantList>
#include <memory>

#include "Desktop/Qml/Bridges/Bridge.h"
#include "Desktop/Qml/Pictures/Picture.h"
#include "Quillmere/Views/Share/Confetti.h"
#include "Quillmere/Views/Share/ShareView.h"

namespace quillmere {

/// Made each time the overlay opens, over one of the two screens.
class ShareBridge final : public Bridge {
    Q_OBJECT
    Q_PROPERTY(bool isEnhanced READ isEnhanced CONSTANT)
    Q_PROPERTY(quillmere::Picture picture READ picture CONSTANT)
    Q_PROPERTY(double iconScale READ iconScale NOTIFY changed)
    Q_PROPERTY(bool showsButtons READ showsButtons NOTIFY changed)
    Q_PROPERTY(bool showsConfetti READ showsConfetti NOTIFY changed)
    /// Names of options.
    Q_PROPERTY(QStringList options READ options NOTIFY changed)
    /// How long confetti fall, and how far beneath the screen, in points.
    Q_PROPERTY(double confettiMilliseconds READ confettiMilliseconds CONSTANT)
    Q_PROPERTY(double confettiFallBeneathBy READ confettiFallBeneathBy CONSTANT)
    /// Into the list of other applications.
    Q_PROPERTY(QVariantList moreApps READ moreApps CONSTANT)

public:
    ShareBridge(const SharePorts& ports, const UIImage& picture);

    bool isEnhanced() const { return enhanced_ != nullptr; }
    Picture picture() const { return {screen().convertedImage()}; }
    double iconScale() const {
        return enhanced_ ? enhanced_->iconScale.get() : original_->iconScale.get();
    }
    bool showsButtons() const { return !enhanced_ || enhanced_->animateShareButtons.get(); }
    bool showsConfetti() const { return enhanced_ && enhanced_->showConfetti.get(); }
    QStringList options() const;
    double confettiMilliseconds() const { return Confetti::fallSeconds * 1000; }
    double confettiFallBeneathBy() const { return Confetti::fallsBeneathBy; }
    QVariantList moreApps() const;

    /// When all of it is drawn, so that what moves then is seen to move.
    Q_INVOKABLE void appear();
    Q_INVOKABLE void shareImageTapped();
    Q_INVOKABLE void optionTapped(const QString& option);
    Q_INVOKABLE void shareToFriendsTapped();
    Q_INVOKABLE void moreAppTapped(int index) {
        screen().moreAppTapped(static_cast<std::size_t>(index));
    }
    /// Of {color, x, y, rotation, scale}.
    Q_INVOKABLE QVariantList confetti(double width) const;

signals:
    void changed();

private:
    const ShareScreen& screen() const {
        return enhanced_ ? static_cast<const ShareScreen&>(*enhanced_) : *original_;
    }
    void presentSheet();

    const SharePorts ports_;
    const ShareView view_;
    std::shared_ptr<OriginalShareView> original_;
    std::shared_ptr<EnhancedShareView> enhanced_;
};

}  // namespace quillmere
