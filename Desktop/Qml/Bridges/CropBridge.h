// The cropper.
#pragma once

#include <QPointF>
#include <QRectF>
#include <utility>

#include "Desktop/Qml/Bridges/Bridge.h"
#include "Desktop/Qml/Pictures/Picture.h"
#include "Quillmere/Views/Home/CropViewController.h"
#include "Quillmere/Views/Home/ImageCropper.h"

namespace quillmere {

class CropBridge final : public Bridge {
    Q_OBJECT
    /// As it is turned now.
    Q_PROPERTY(quillmere::Picture picture READ picture NOTIFY turned)
    /// In pixels of it.
    Q_PROPERTY(QRectF rect READ rect NOTIFY rectChanged)
    Q_PROPERTY(bool isChanged READ isChanged NOTIFY rectChanged)
    /// Width over height; 0 while it is free.
    Q_PROPERTY(double ratio READ ratio NOTIFY rectChanged)

public:
    CropBridge(ImageCropper cropper, Graphics& graphics)
        : cropper_(std::move(cropper)), crop_(cropper_.picture()), graphics_(graphics) {
        watch(crop_.orientation, &CropBridge::turned);
        watch(crop_.cropRect, &CropBridge::rectChanged);
    }

    Picture picture() const;
    QRectF rect() const {
        const Rect rect = crop_.cropRect.get();
        return {rect.x, rect.y, rect.width, rect.height};
    }
    bool isChanged() const { return crop_.isChanged(); }
    double ratio() const { return crop_.aspectRatio.get().value_or(0); }

    Q_INVOKABLE void moveBy(double x, double y) { crop_.moveBy(x, y); }
    Q_INVOKABLE void drag(int horizontal, int vertical, const QPointF& to) {
        crop_.drag({horizontal, vertical}, {to.x(), to.y()});
    }
    Q_INVOKABLE void setRatio(double width, double height) {
        crop_.setAspectRatio({width, height});
    }
    Q_INVOKABLE void rotateClockwise() { crop_.rotateClockwise(); }
    Q_INVOKABLE void rotateCounterclockwise() { crop_.rotateCounterclockwise(); }
    Q_INVOKABLE void flip() { crop_.flip(); }
    Q_INVOKABLE void reset() { crop_.reset(); }

    Q_INVOKABLE void done() {
        if (const auto image = crop_.croppedImage(graphics_)) {
            cropper_.didCropToImage(*image);
        } else {
            cropper_.didFinishCancelled();
        }
    }
    Q_INVOKABLE void cancel() { cropper_.didFinishCancelled(); }

signals:
    void turned();
    void rectChanged();

private:
    ImageCropper cropper_;
    CropViewController crop_;
    Graphics& graphics_;
};

}  // namespace quillmere
