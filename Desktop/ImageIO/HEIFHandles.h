// Owners of what libheif hands out.
#pragma once

#include <libheif/heif.h>

#include <memory>

namespace quillmere {

struct HEIFContextDeleter {
    void operator()(heif_context* context) const { heif_context_free(context); }
};
using HEIFContextRef = std::unique_ptr<heif_context, HEIFContextDeleter>;

struct HEIFEncoderDeleter {
    void operator()(heif_encoder* encoder) const { heif_encoder_release(encoder); }
};
using HEIFEncoderRef = std::unique_ptr<heif_encoder, HEIFEncoderDeleter>;

struct HEIFImageDeleter {
    void operator()(heif_image* image) const { heif_image_release(image); }
};
using HEIFImageRef = std::unique_ptr<heif_image, HEIFImageDeleter>;

}  // namespace quillmere
