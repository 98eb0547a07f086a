#include "Desktop/ImageIO/JPEGWarnings.h"

#include <csetjmp>
#include <cstdio>

// jpeglib.h needs <cstdio> before it.
#include <jerror.h>
#include <jpeglib.h>

namespace quillmere {
namespace {

struct Errors {
    jpeg_error_mgr manager;  // first, so that a pointer to it is one to this
    std::jmp_buf leave;
    bool whole = true;
};

[[noreturn]] void leave(j_common_ptr info) {
    std::longjmp(reinterpret_cast<Errors*>(info->err)->leave, 1);
}

void judge(j_common_ptr info, int level) {
    if (level >= 0) return;  // a trace message
    switch (info->err->msg_code) {
        case JWRN_ADOBE_XFORM:
        case JWRN_EXTRANEOUS_DATA:
        case JWRN_JFIF_MAJOR:
            break;
        default:
            reinterpret_cast<Errors*>(info->err)->whole = false;
    }
}

void printNothing(j_common_ptr) {}

}  // namespace

bool isJPEGDataWhole(std::span<const std::byte> data) {
    // Plain old data only: a longjmp runs no destructors.
    jpeg_decompress_struct decoder;
    Errors errors;
    decoder.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = leave;
    errors.manager.emit_message = judge;
    errors.manager.output_message = printNothing;
    if (setjmp(errors.leave) != 0) {
        jpeg_destroy_decompress(&decoder);
        return false;
    }
    jpeg_create_decompress(&decoder);
    jpeg_mem_src(&decoder, reinterpret_cast<const unsigned char*>(data.data()),
                 static_cast<unsigned long>(data.size()));
    jpeg_read_header(&decoder, TRUE);
    jpeg_read_coefficients(&decoder);
    jpeg_finish_decompress(&decoder);
    jpeg_destroy_decompress(&decoder);
    return errors.whole;
}

}  // namespace quillmere
