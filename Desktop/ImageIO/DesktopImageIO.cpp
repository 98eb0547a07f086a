#include "Desktop/ImageIO/DesktopImageIO.h"

#include "Desktop/ImageIO/PictureReader.h"
#include "Desktop/ImageIO/PictureWriter.h"

namespace quillmere {

Result<UIImage> DesktopImageIO::imageWithData(std::span<const std::byte> data) {
    return readPicture(data);
}

Result<std::vector<std::byte>> DesktopImageIO::jpegRepresentation(const UIImage& picture,
                                                                  double quality) {
    return writeJPEG(picture, quality, pool_);
}

Result<std::vector<std::byte>> DesktopImageIO::pngRepresentation(const UIImage& picture) {
    return writePNG(picture);
}

Result<std::vector<std::byte>> DesktopImageIO::heicRepresentation(const UIImage& picture,
                                                                  double quality) {
    return writeHEIC(picture, quality);
}

}  // namespace quillmere
