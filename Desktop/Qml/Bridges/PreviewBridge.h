// The finished video.
#pragma once

#include <QUrl>
#include <memory>

#include "Desktop/Qml/Bridges/AlertBridge.h"
#include "Quillmere/Views/Detail/VideoPreviewViewModel.h"

namespace quillmere {

class PreviewBridge final : public Bridge {
    Q_OBJECT
    Q_PROPERTY(QUrl video READ video CONSTANT)
    Q_PROPERTY(double rotation READ rotation CONSTANT)
    Q_PROPERTY(quillmere::AlertBridge* alert READ alert CONSTANT)
    Q_PROPERTY(int confirmationMilliseconds READ confirmationMilliseconds CONSTANT)

public:
    explicit PreviewBridge(std::shared_ptr<VideoPreviewViewModel> vm)
        : vm_(std::move(vm)), rotation_(vm_->rotation()), alert_(vm_->alert) {
        watch(vm_->confirmation, &PreviewBridge::confirm);
    }

    QUrl video() const { return QUrl::fromLocalFile(qt(vm_->videoUrl().string())); }
    double rotation() const { return rotation_; }
    AlertBridge* alert() { return &alert_; }
    int confirmationMilliseconds() const {
        return static_cast<int>(VideoPreviewViewModel::confirmationSeconds * 1000);
    }

    Q_INVOKABLE void saveTapped() { vm_->saveTapped(); }
    Q_INVOKABLE void shareTapped() { vm_->shareTapped(); }

signals:
    void confirmed(const QString& text);

private:
    void confirm() {
        if (const auto text = vm_->confirmation.get()) emit confirmed(qt(*text));
    }

    std::shared_ptr<VideoPreviewViewModel> vm_;
    double rotation_;
    AlertBridge alert_;
};

}  // namespace quillmere
