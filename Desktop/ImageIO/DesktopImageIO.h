// Picture files on the desktop: libvips, and the formats' own libraries where it is slow.
#pragma once

#include "Base/WorkerPool.h"
#include "Platform/ImageIO/ImageIO.h"

namespace quillmere {

/// Errors have the domain "quillmere.imageio" and the codes of `ImageIOErrorCode`. See
/// `readPicture` for the sizes that are refused, and `PictureWriter.h` for the encodings.
class DesktopImageIO : public ImageIO {
public:
    /// Encoding works on the calling thread and on `pool`, which outlives this.
    explicit DesktopImageIO(WorkerPool& pool) : pool_(pool) {}

    Result<UIImage> imageWithData(std::span<const std::byte> data) override;
    Result<std::vector<std::byte>> jpegRepresentation(const UIImage& picture,
                                                      double quality) override;
    Result<std::vector<std::byte>> pngRepresentation(const UIImage& picture) override;
    Result<std::vector<std::byte>> heicRepresentation(const UIImage& picture,
                                                      double quality) override;

private:
    WorkerPool& pool_;
};

}  // namespace quillmere
