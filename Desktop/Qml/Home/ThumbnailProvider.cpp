#include "Desktop/Qml/Home/ThumbnailProvider.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>
#include <atomic>
#include <condition_variable>
#include <mutex>

#include "Desktop/ImageIO/Thumbnail.h"
#include "Desktop/Qml/Pictures/Pyramid.h"

namespace quillmere {
namespace {

class Response final : public QQuickImageResponse {
public:
    QQuickTextureFactory* textureFactory() const override {
        return QQuickTextureFactory::textureFactoryForImage(image);
    }
    QString errorString() const override {
        return image.isNull() ? QStringLiteral("no thumbnail") : QString();
    }
    /// It scrolled out of sight before its turn came.
    void cancel() override { isCancelled = true; }

    QImage image;
    std::atomic<bool> isCancelled = false;
};

/// Where the standard keeps the thumbnail of a file.
struct CachedThumbnail {
    explicit CachedThumbnail(const QString& file)
        : uri(QString::fromLatin1(QUrl::fromLocalFile(file).toEncoded())),
          modified(QString::number(QFileInfo(file).lastModified().toSecsSinceEpoch())),
          folder(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                 "/thumbnails/large"),
          path(folder + "/" +
               QCryptographicHash::hash(uri.toLatin1(), QCryptographicHash::Md5).toHex() + ".png") {
    }

    QImage read() const {
        const QImage image(path);
        return image.text("Thumb::URI") == uri && image.text("Thumb::MTime") == modified ? image
                                                                                         : QImage();
    }
    void write(QImage image) const {
        if (!QDir().mkpath(folder)) return;
        image.setText("Thumb::URI", uri);
        image.setText("Thumb::MTime", modified);
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly)) return;
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        if (image.save(&file, "PNG")) file.commit();
    }

    QString uri, modified, folder, path;
};

QImage imageOf(const CGImage& bitmap) {
    const Pyramid pyramid = Pyramid::of(UIImage(bitmap));
    return pyramid.levels.empty() ? QImage() : pyramid.levels.front();
}

QImage firstFrame(AVFoundation& avFoundation, const std::filesystem::path& file) {
    std::mutex mutex;
    std::condition_variable ended;
    bool done = false;
    QImage frame;
    const auto generator =
        avFoundation.assetImageGeneratorWithAsset(avFoundation.assetWithURL(file));
    generator->setAppliesPreferredTrackTransform(true);
    generator->generateCGImagesAsynchronouslyForTimes({MediaTime::zero()},
                                                      [&](MediaTime, const Result<CGImage>& image) {
                                                          const std::lock_guard lock(mutex);
                                                          if (image) frame = imageOf(*image);
                                                          done = true;
                                                          ended.notify_one();
                                                      });
    std::unique_lock lock(mutex);
    ended.wait(lock, [&] { return done; });
    if (frame.isNull()) return frame;
    return frame.scaled(ThumbnailProvider::side, ThumbnailProvider::side, Qt::KeepAspectRatio,
                        Qt::SmoothTransformation);
}

}  // namespace

QQuickImageResponse* ThumbnailProvider::requestImageResponse(const QString& identifier,
                                                             const QSize&) {
    auto* response = new Response;
    threads_.start([this, identifier, response] {
        if (!response->isCancelled) response->image = thumbnailOf(identifier);
        emit response->finished();
    });
    return response;
}

QImage ThumbnailProvider::thumbnailOf(const QString& identifier) {
    const auto asset = library_.assetWithIdentifier(identifier.toStdString());
    if (!asset || !*asset) return {};
    const CachedThumbnail cached(QString::fromStdString((*asset)->path.string()));
    if (const QImage image = cached.read(); !image.isNull()) return image;
    const QImage image = made(**asset);
    if (!image.isNull()) cached.write(image);
    return image;
}

QImage ThumbnailProvider::made(const LibraryAsset& asset) {
    if (asset.asset.mediaType == PHAssetMediaType::video) {
        return firstFrame(avFoundation_, asset.path);
    }
    const auto bitmap = thumbnailOfFile(asset.path, side);
    return bitmap ? imageOf(*bitmap) : QImage();
}

}  // namespace quillmere
