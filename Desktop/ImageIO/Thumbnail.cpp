#include "Desktop/ImageIO/Thumbnail.h"

#include <optional>

#include "Desktop/ImageIO/BitmapBuffer.h"
#include "Desktop/ImageIO/ImageIOError.h"
#include "Desktop/ImageIO/QuietDecoders.h"
#include "Desktop/ImageIO/StandardColour.h"
#include "Desktop/ImageIO/VipsBitmap.h"
#include "Desktop/ImageIO/VipsHandles.h"
#include "Desktop/ImageIO/VipsLibrary.h"

namespace quillmere {

Result<CGImage> thumbnailOfFile(const std::filesystem::path& file, int side) {
    if (!startVips()) return imageIOUnavailable();
    // All of them: the name of a file is no proof of its format.
    loadVipsModule(VipsModule::heif);
    loadVipsModule(VipsModule::jxl);
    const QuietDecoders quiet;
    VipsImageRef image = vipsResult([&](VipsImage** out) {
        return vips_thumbnail(file.c_str(), out, side, "height", side, "size", VIPS_SIZE_DOWN,
                              nullptr);
    });
    if (image) image = toStandardColour(std::move(image));
    std::optional<BitmapBuffer> buffer;
    if (image) buffer = BitmapBuffer::create({image->Xsize, image->Ysize});
    const auto take = [&](int y, const std::uint8_t* source) {
        std::uint8_t* target = buffer->row(y);
        for (int x = 0; x < image->Xsize; ++x, source += image->Bands, target += 4) {
            storePremultiplied(target, source, image->Bands == 4 ? source[3] : 255);
        }
    };
    if (!buffer || !pullRows(image.get(), take)) {
        forgetVipsErrors();
        return imageIOError(ImageIOErrorCode::damaged, "The picture can't be shown small.");
    }
    return std::move(*buffer).bitmap();
}

}  // namespace quillmere
