// Small pictures of the library's assets for QML.
#pragma once

#include <QImage>
#include <QQuickAsyncImageProvider>
#include <QThreadPool>

#include "Desktop/Photos/DesktopPhotoLibrary.h"
#include "Platform/AVFoundation/AVFoundation.h"

namespace quillmere {

/// `image://thumbnails/IDENTIFIER`, made on threads of its own. Shares the desktop's cache of
/// thumbnails (the freedesktop.org Thumbnail Managing Standard, size "large"), so that what any
/// file manager has shown is there at once.
class ThumbnailProvider final : public QQuickAsyncImageProvider {
public:
    /// Pixels of the longer side, as the standard has it.
    static constexpr int side = 256;

    ThumbnailProvider(DesktopPhotoLibrary& library, AVFoundation& avFoundation)
        : library_(library), avFoundation_(avFoundation) {}
    ~ThumbnailProvider() override { threads_.waitForDone(); }

    QQuickImageResponse* requestImageResponse(const QString& identifier,
                                              const QSize& requestedSize) override;

private:
    QImage thumbnailOf(const QString& identifier);
    QImage made(const LibraryAsset& asset);

    DesktopPhotoLibrary& library_;
    AVFoundation& avFoundation_;
    QThreadPool threads_;
};

}  // namespace quillmere
