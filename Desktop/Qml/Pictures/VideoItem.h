// A playing video on the screen.
#pragma once

#include <QImage>
#include <QQuickItem>
#include <QVideoFrame>
#include <QVideoSink>

namespace quillmere {

/// The whole frame, centred, as large as the item lets it be; what a player takes as its output.
/// Qt's own video item shows nothing where there is no graphics card; this one is a picture like
/// any other. Frames become pictures on another thread, one at a time: those that come meanwhile
/// are left out, but for the last.
class VideoItem : public QQuickItem {
    Q_OBJECT

public:
    explicit VideoItem(QQuickItem* parent = nullptr);

    /// Called by the player, by its name.
    Q_INVOKABLE QVideoSink* videoSink() { return &sink_; }

protected:
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData*) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

private:
    void show(const QVideoFrame& frame);
    void made(const QImage& image);

    QVideoSink sink_;
    QVideoFrame waiting_;
    bool isConverting_ = false;
    QImage image_;
    bool isNew_ = false;  // image_ has not become a texture yet
};

}  // namespace quillmere
