#include "Desktop/ImageIO/JPEGEncoder.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

// jpeglib.h needs <cstdio> before it.
#include <jpeglib.h>

namespace quillmere {
namespace {

struct Errors {
    jpeg_error_mgr manager;  // first, so that a pointer to it is one to this
    std::jmp_buf leave;
};

[[noreturn]] void leave(j_common_ptr info) {
    std::longjmp(reinterpret_cast<Errors*>(info->err)->leave, 1);
}

void printNothing(j_common_ptr) {}

struct File {
    unsigned char* bytes = nullptr;  // from malloc
    unsigned long count = 0;
};

void start(jpeg_compress_struct& encoder, PixelSize size, int quality) {
    encoder.image_width = static_cast<JDIMENSION>(size.width);
    encoder.image_height = static_cast<JDIMENSION>(size.height);
    encoder.input_components = CGImage::bytesPerPixel;
    encoder.in_color_space = JCS_EXT_RGBX;
    // Codes made for the picture (`optimize_coding`) would save 3 to 9 % of the bytes, but more
    // than double the time and keep all coefficients, twice the picture's size, in memory.
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, quality, TRUE);
    encoder.comp_info[0].h_samp_factor = encoder.comp_info[0].v_samp_factor = 1;
    jpeg_start_compress(&encoder, TRUE);
}

// Plain old data only: a longjmp runs no destructors.
bool encode(const CGImage& bitmap, int quality, std::span<const std::byte> profile, File& file) {
    jpeg_compress_struct encoder;
    Errors errors;
    encoder.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = leave;
    errors.manager.output_message = printNothing;
    if (setjmp(errors.leave) != 0) {
        jpeg_destroy_compress(&encoder);
        return false;
    }
    jpeg_create_compress(&encoder);
    jpeg_mem_dest(&encoder, &file.bytes, &file.count);
    start(encoder, bitmap.size(), quality);
    jpeg_write_icc_profile(&encoder, reinterpret_cast<const JOCTET*>(profile.data()),
                           static_cast<unsigned>(profile.size()));
    while (encoder.next_scanline < encoder.image_height) {
        // The row is only read; the parameter lacks its const.
        JSAMPROW row = const_cast<JSAMPROW>(bitmap.row(static_cast<int>(encoder.next_scanline)));
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    return true;
}

struct FreeDeleter {
    void operator()(unsigned char* memory) const { std::free(memory); }
};

}  // namespace

std::optional<std::vector<std::byte>> encodeJPEG(const CGImage& bitmap, int quality,
                                                 std::span<const std::byte> profile) try {
    File file;
    const bool done = encode(bitmap, quality, profile, file);
    const std::unique_ptr<unsigned char, FreeDeleter> owner(file.bytes);
    if (!done) return {};
    const auto* bytes = reinterpret_cast<const std::byte*>(file.bytes);
    return std::vector<std::byte>(bytes, bytes + file.count);
} catch (const std::bad_alloc&) {
    return {};
}

}  // namespace quillmere
