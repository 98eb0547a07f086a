#include "Desktop/Qml/Pictures/VideoItem.h"

#include <QCoreApplication>
#include <QPointer>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QThreadPool>
#include <utility>

#include "Desktop/Qml/Pictures/FrameImage.h"

namespace quillmere {

VideoItem::VideoItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    connect(&sink_, &QVideoSink::videoFrameChanged, this, &VideoItem::show);
}

void VideoItem::show(const QVideoFrame& frame) {
    if (!frame.isValid()) return;
    waiting_ = frame;
    if (std::exchange(isConverting_, true)) return;
    QThreadPool::globalInstance()->start(
        [item = QPointer<VideoItem>(this), frame = std::exchange(waiting_, {})] {
            const QImage image = imageOf(frame);
            QMetaObject::invokeMethod(QCoreApplication::instance(), [item, image] {
                if (item) item->made(image);
            });
        });
}

void VideoItem::made(const QImage& image) {
    isConverting_ = false;
    image_ = image;
    isNew_ = true;
    update();
    show(std::exchange(waiting_, {}));
}

void VideoItem::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    update();
}

QSGNode* VideoItem::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
    if (image_.isNull()) {
        delete node;
        return nullptr;
    }
    auto* shown = static_cast<QSGImageNode*>(node);
    if (!shown) {
        shown = window()->createImageNode();
        shown->setOwnsTexture(true);
        shown->setFiltering(QSGTexture::Linear);
    }
    if (!node || std::exchange(isNew_, false)) {
        shown->setTexture(window()->createTextureFromImage(image_));
        isNew_ = false;
    }
    const QSizeF size = QSizeF(image_.size()).scaled(boundingRect().size(), Qt::KeepAspectRatio);
    QRectF rect(QPointF(), size);
    rect.moveCenter(boundingRect().center());
    shown->setRect(rect);
    return shown;
}

}  // namespace quillmere
