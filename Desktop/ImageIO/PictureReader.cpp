#include "Desktop/ImageIO/PictureReader.h"

#include <optional>
#include <string>
#include <utility>

#include "Desktop/ImageIO/BMPReader.h"
#include "Desktop/ImageIO/BitmapBuffer.h"
#include "Desktop/ImageIO/ImageIOError.h"
#include "Desktop/ImageIO/JPEGWarnings.h"
#include "Desktop/ImageIO/PictureFormat.h"
#include "Desktop/ImageIO/QuietDecoders.h"
#include "Desktop/ImageIO/StandardColour.h"
#include "Desktop/ImageIO/VipsBitmap.h"
#include "Desktop/ImageIO/VipsHandles.h"
#include "Desktop/ImageIO/VipsLibrary.h"
#include "Desktop/ImageIO/WebPPixels.h"

namespace quillmere {
namespace {

// Reads the header; the pixels follow when they are asked for, from the top down.
VipsImageRef open(PictureFormat format, std::span<const std::byte> data, VipsFailOn failOn) {
    const auto load = [&](auto loader) {
        return vipsResult([&](VipsImage** out) {
            return loader(const_cast<std::byte*>(data.data()), data.size(), out, "access",
                          VIPS_ACCESS_SEQUENTIAL, "fail_on", failOn, nullptr);
        });
    };
    switch (format) {
        case PictureFormat::jpeg:
            return load(vips_jpegload_buffer);
        case PictureFormat::png:
            return load(vips_pngload_buffer);
        case PictureFormat::webp:
            return load(vips_webpload_buffer);
        case PictureFormat::heif:
            loadVipsModule(VipsModule::heif);
            return load(vips_heifload_buffer);
        case PictureFormat::tiff:
            return load(vips_tiffload_buffer);
        case PictureFormat::jpegXL:
            loadVipsModule(VipsModule::jxl);
            return load(vips_jxlload_buffer);
        case PictureFormat::gif:
            return load(vips_gifload_buffer);
        case PictureFormat::bmp:
        case PictureFormat::unknown:
            break;
    }
    invariantBroken();
}

UIImageOrientation orientationOf(const VipsImage* image, PictureFormat format) {
    // These two decoders have turned the pixels already, whatever a copy in Exif still says.
    if (format == PictureFormat::heif || format == PictureFormat::jpegXL) {
        return UIImageOrientation::up;
    }
    switch (vips_image_get_orientation(const_cast<VipsImage*>(image))) {
        case 2:
            return UIImageOrientation::upMirrored;
        case 3:
            return UIImageOrientation::down;
        case 4:
            return UIImageOrientation::downMirrored;
        case 5:
            return UIImageOrientation::leftMirrored;
        case 6:
            return UIImageOrientation::right;
        case 7:
            return UIImageOrientation::rightMirrored;
        case 8:
            return UIImageOrientation::left;
        default:
            return UIImageOrientation::up;
    }
}

bool takePixels(VipsImage* image, BitmapBuffer& buffer) {
    const int bands = image->Bands;
    return pullRows(image, [&](int y, const std::uint8_t* source) {
        std::uint8_t* target = buffer.row(y);
        for (int x = 0; x < image->Xsize; ++x, source += bands, target += 4) {
            storePremultiplied(target, source, bands == 4 ? source[3] : 255);
        }
    });
}

Error damaged(PictureFormat format) {
    return imageIOError(ImageIOErrorCode::damaged,
                        "The picture is damaged: its %@ data is incomplete or wrong.",
                        {nameOf(format)});
}

Result<UIImage> decode(PictureFormat format, std::span<const std::byte> data,
                       VipsFailOn failOn = VIPS_FAIL_ON_ERROR) {
    std::optional<QuietDecoders> quiet;
    if (format == PictureFormat::heif || format == PictureFormat::jpegXL) quiet.emplace();
    VipsImageRef image = open(format, data, failOn);
    if (!image) {
        return imageIOError(ImageIOErrorCode::damaged,
                            "The picture is damaged, or a kind of %@ that Quillmere can't read.",
                            {nameOf(format)});
    }
    const UIImageOrientation orientation = orientationOf(image.get(), format);
    Result<BitmapBuffer> buffer = BitmapBuffer::createForFile({image->Xsize, image->Ysize});
    if (!buffer) return buffer.error();
    if (format == PictureFormat::webp) image = webPPixels(data, image.get());
    if (image) image = toStandardColour(std::move(image));
    if (!image || !takePixels(image.get(), *buffer)) return damaged(format);
    return UIImage((*std::move(buffer)).bitmap(), 1, orientation);
}

// A JPEG decoder goes on after what it calls a warning, be that a wrong version number or half of
// the picture that is missing. So no warning is let pass at first, and then only harmless ones.
Result<UIImage> decodeJPEG(std::span<const std::byte> data) {
    Result<UIImage> picture = decode(PictureFormat::jpeg, data, VIPS_FAIL_ON_WARNING);
    const bool mayBeHarmless =
        !picture && picture.error().code == static_cast<int>(ImageIOErrorCode::damaged);
    if (!mayBeHarmless || !isJPEGDataWhole(data)) return picture;
    return decode(PictureFormat::jpeg, data);
}

}  // namespace

Result<UIImage> readPicture(std::span<const std::byte> data) {
    if (data.empty()) return imageIOError(ImageIOErrorCode::empty, "The picture is empty.");
    const PictureFormat format = pictureFormat(data);
    if (format == PictureFormat::unknown) {
        return imageIOError(ImageIOErrorCode::unknownFormat,
                            "This is not a picture in a format that Quillmere knows.");
    }
    if (format == PictureFormat::bmp) return readBMP(data);
    if (!startVips()) return imageIOUnavailable();
    Result<UIImage> picture =
        format == PictureFormat::jpeg ? decodeJPEG(data) : decode(format, data);
    if (!picture) forgetVipsErrors();
    return picture;
}

}  // namespace quillmere
