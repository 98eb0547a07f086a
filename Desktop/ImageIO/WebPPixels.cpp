#include "Desktop/ImageIO/WebPPixels.h"

#include <webp/demux.h>

namespace quillmere {
namespace {

struct DecoderDeleter {
    void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};

void copyProfile(VipsImage* from, VipsImage* to) {
    const void* profile = nullptr;
    std::size_t bytes = 0;
    if (vips_image_get_typeof(from, VIPS_META_ICC_NAME) == 0) return;
    if (vips_image_get_blob(from, VIPS_META_ICC_NAME, &profile, &bytes) != 0) return;
    vips_image_set_blob_copy(to, VIPS_META_ICC_NAME, profile, bytes);
}

}  // namespace

VipsImageRef webPPixels(std::span<const std::byte> data, VipsImage* header) {
    WebPAnimDecoderOptions options;
    if (WebPAnimDecoderOptionsInit(&options) == 0) return nullptr;
    options.color_mode = MODE_RGBA;
    const WebPData file = {reinterpret_cast<const std::uint8_t*>(data.data()), data.size()};
    const std::unique_ptr<WebPAnimDecoder, DecoderDeleter> decoder(
        WebPAnimDecoderNew(&file, &options));
    std::uint8_t* pixels = nullptr;  // the decoder's
    int time = 0;
    if (!decoder || WebPAnimDecoderGetNext(decoder.get(), &pixels, &time) == 0) return nullptr;
    const std::size_t bytes = std::size_t{4} * static_cast<std::size_t>(header->Xsize) *
                              static_cast<std::size_t>(header->Ysize);
    WebPAnimInfo info;
    if (WebPAnimDecoderGetInfo(decoder.get(), &info) == 0 ||
        info.canvas_width != static_cast<unsigned>(header->Xsize) ||
        info.canvas_height != static_cast<unsigned>(header->Ysize)) {
        return nullptr;
    }
    VipsImageRef image(vips_image_new_from_memory_copy(pixels, bytes, header->Xsize, header->Ysize,
                                                       4, VIPS_FORMAT_UCHAR));
    if (!image) return nullptr;
    image->Type = VIPS_INTERPRETATION_sRGB;
    copyProfile(header, image.get());
    return image;
}

}  // namespace quillmere
