// A picture on the screen, at any size and any zoom.
#pragma once

#include <QQuickItem>
#include <QRectF>
#include <memory>

#include "Desktop/Qml/Pictures/Picture.h"
#include "Desktop/Qml/Pictures/Pyramid.h"

namespace quillmere {

/// Fills the item with the picture. Made of tiles, of which only those within `visibleArea` become
/// textures, from the level of detail that the screen can show; what has to be computed for that
/// is computed on other threads, and the last picture stays until it is done.
class PictureItem : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(quillmere::Picture picture READ picture WRITE setPicture NOTIFY pictureChanged)
    /// In the item's coordinates; all of it where it is empty.
    Q_PROPERTY(QRectF visibleArea READ visibleArea WRITE setVisibleArea NOTIFY visibleAreaChanged)
    /// Whether the picture that was set last is what is drawn.
    Q_PROPERTY(bool isReady READ isReady NOTIFY readyChanged)

public:
    explicit PictureItem(QQuickItem* parent = nullptr);

    const Picture& picture() const { return picture_; }
    void setPicture(const Picture& picture);
    QRectF visibleArea() const { return visibleArea_; }
    void setVisibleArea(const QRectF& area);
    bool isReady() const { return isReady_; }

signals:
    void pictureChanged();
    void visibleAreaChanged();
    void readyChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData*) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

private:
    void made(std::shared_ptr<const Pyramid> pyramid, quint64 number);

    Picture picture_;
    QRectF visibleArea_;
    std::shared_ptr<const Pyramid> pyramid_;
    quint64 number_ = 0;  // of the picture that was set last
    bool isReady_ = true;
};

}  // namespace quillmere
