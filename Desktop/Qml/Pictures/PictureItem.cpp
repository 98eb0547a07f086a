#include "Desktop/Qml/Pictures/PictureItem.h"

#include <QPointer>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTransformNode>
#include <QThreadPool>
#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace quillmere {
namespace {

constexpr int tileSide = 512;

/// The tiles that are on the screen, each with its texture. It moves nothing, but Qt's software
/// renderer places new children by the last node above them that could.
class TilesNode final : public QSGTransformNode {
public:
    struct Key {
        std::size_t level;
        int x, y;
        auto operator<=>(const Key&) const = default;
    };

    std::shared_ptr<const Pyramid> pyramid;
    std::map<Key, QSGImageNode*> tiles;

    void drop(std::map<Key, QSGImageNode*>::iterator tile) {
        removeChildNode(tile->second);
        delete tile->second;
        tiles.erase(tile);
    }
    void dropAll() {
        while (!tiles.empty()) drop(tiles.begin());
    }
};

}  // namespace

PictureItem::PictureItem(QQuickItem* parent) : QQuickItem(parent) { setFlag(ItemHasContents); }

void PictureItem::setPicture(const Picture& picture) {
    if (picture.sameAs(picture_)) return;
    picture_ = picture;
    ++number_;
    emit pictureChanged();
    if (!picture.isThere()) return made(nullptr, number_);
    if (std::exchange(isReady_, false)) emit readyChanged();
    QThreadPool::globalInstance()->start(
        [item = QPointer<PictureItem>(this), image = *picture.image, number = number_] {
            auto pyramid = std::make_shared<const Pyramid>(Pyramid::of(image));
            QMetaObject::invokeMethod(QCoreApplication::instance(),
                                      [item, pyramid = std::move(pyramid), number] {
                                          if (item) item->made(pyramid, number);
                                      });
        });
}

void PictureItem::made(std::shared_ptr<const Pyramid> pyramid, quint64 number) {
    if (number != number_) return;
    pyramid_ = std::move(pyramid);
    update();
    if (!std::exchange(isReady_, true)) emit readyChanged();
}

void PictureItem::setVisibleArea(const QRectF& area) {
    if (area == visibleArea_) return;
    visibleArea_ = area;
    update();
    emit visibleAreaChanged();
}

void PictureItem::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    update();
}

QSGNode* PictureItem::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
    auto* tiles = static_cast<TilesNode*>(node);
    if (!pyramid_ || pyramid_->levels.empty() || width() <= 0 || height() <= 0) {
        delete tiles;
        return nullptr;
    }
    if (!tiles) tiles = new TilesNode;
    if (tiles->pyramid != pyramid_) {
        tiles->dropAll();
        tiles->pyramid = pyramid_;
    }
    const double ratio = window()->effectiveDevicePixelRatio();
    const std::size_t level = pyramid_->levelForWidth(width() * ratio);
    const QImage& image = pyramid_->levels[level];
    const QRectF all(0, 0, width(), height());
    const QRectF seen = visibleArea_.isEmpty() ? all : all.intersected(visibleArea_);
    const double pointsPerPixelX = width() / image.width();
    const double pointsPerPixelY = height() / image.height();
    const auto firstTile = [](double point, double scale) {
        return static_cast<int>(std::floor(point / scale / tileSide));
    };
    std::set<TilesNode::Key> wanted;
    for (int y = firstTile(seen.top(), pointsPerPixelY);
         y <= firstTile(seen.bottom(), pointsPerPixelY); ++y) {
        for (int x = firstTile(seen.left(), pointsPerPixelX);
             x <= firstTile(seen.right(), pointsPerPixelX); ++x) {
            if (x * tileSide < image.width() && y * tileSide < image.height() && !seen.isEmpty()) {
                wanted.insert({level, x, y});
            }
        }
    }
    for (auto tile = tiles->tiles.begin(); tile != tiles->tiles.end();) {
        const auto next = std::next(tile);
        if (!wanted.contains(tile->first)) tiles->drop(tile);
        tile = next;
    }
    // Neighbours meet on whole pixels of the screen, so that nothing shines through between them.
    const auto onScreen = [&](double point) { return std::round(point * ratio) / ratio; };
    for (const TilesNode::Key& key : wanted) {
        const QRect part =
            QRect(key.x * tileSide, key.y * tileSide, tileSide, tileSide).intersected(image.rect());
        QSGImageNode*& tile = tiles->tiles[key];
        if (!tile) {
            tile = window()->createImageNode();
            tile->setTexture(window()->createTextureFromImage(image.copy(part)));
            tile->setOwnsTexture(true);
            tile->setFiltering(QSGTexture::Linear);
            tiles->appendChildNode(tile);
        }
        const double left = onScreen(part.x() * pointsPerPixelX);
        const double top = onScreen(part.y() * pointsPerPixelY);
        const double right = onScreen((part.x() + part.width()) * pointsPerPixelX);
        const double bottom = onScreen((part.y() + part.height()) * pointsPerPixelY);
        tile->setRect(left, top, right - left, bottom - top);
    }
    return tiles;
}

}  // namespace quillmere
