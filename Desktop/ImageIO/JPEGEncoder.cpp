#include "Desktop/ImageIO/JPEGEncoder.h"

#include <algorithm>
#include <atomic>
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

struct FreeDeleter {
    void operator()(unsigned char* memory) const { std::free(memory); }
};

/// A whole JPEG file of some rows of a picture.
struct Strip {
    int firstRow = 0;
    int rows = 0;
    std::unique_ptr<unsigned char, FreeDeleter> bytes;
    std::size_t count = 0;
};

constexpr int kBlockSide = 8;

// Rows of a strip: some dozen strips of a large picture keep all cores busy to the end, and no
// strip has more blocks than a restart interval can count.
int stripRows(int width) {
    constexpr int kWantedBlockRows = 32;
    constexpr int kLongestInterval = 65'535;
    const int blocksInRow = (width + kBlockSide - 1) / kBlockSide;
    return std::min(kWantedBlockRows, kLongestInterval / blocksInRow) * kBlockSide;
}

void start(jpeg_compress_struct& encoder, int width, int rows, int quality) {
    encoder.image_width = static_cast<JDIMENSION>(width);
    encoder.image_height = static_cast<JDIMENSION>(rows);
    encoder.input_components = CGImage::bytesPerPixel;
    encoder.in_color_space = JCS_EXT_RGBX;
    // Codes made for the picture (`optimize_coding`) would save 3 to 9 % of the bytes, but more
    // than double the time and keep all coefficients, twice the picture's size, in memory.
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, quality, TRUE);
    encoder.comp_info[0].h_samp_factor = encoder.comp_info[0].v_samp_factor = 1;
    // A strip ends before its first restart marker, but its header says where they are.
    encoder.restart_in_rows = stripRows(width) / kBlockSide;
    jpeg_start_compress(&encoder, TRUE);
}

// Plain old data only: a longjmp runs no destructors.
bool encode(const CGImage& bitmap, int quality, std::span<const std::byte> profile, int firstRow,
            int rows, unsigned char*& bytes, unsigned long& count) {
    jpeg_compress_struct encoder;
    Errors errors;
    encoder.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = leave;
    errors.manager.output_message = printNothing;
    if (setjmp(errors.leave) != 0) {
        jpeg_destroy_compress(&encoder);
        bytes = nullptr;  // the library may have freed them in growing; it keeps no better pointer
        return false;
    }
    jpeg_create_compress(&encoder);
    jpeg_mem_dest(&encoder, &bytes, &count);
    start(encoder, bitmap.size().width, rows, quality);
    jpeg_write_icc_profile(&encoder, reinterpret_cast<const JOCTET*>(profile.data()),
                           static_cast<unsigned>(profile.size()));
    while (encoder.next_scanline < encoder.image_height) {
        // The row is only read; the parameter lacks its const.
        JSAMPROW row =
            const_cast<JSAMPROW>(bitmap.row(firstRow + static_cast<int>(encoder.next_scanline)));
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    return true;
}

constexpr std::size_t kMarkerBytes = 2;

/// Where the parts of a file that libjpeg wrote begin (ITU-T T.81, annex B).
struct Places {
    std::size_t height = 0;   // two bytes, in the frame header
    std::size_t entropy = 0;  // the coded data, up to the end marker
};

Places placesIn(const unsigned char* bytes) {
    constexpr unsigned char kFrame = 0xC0, kScan = 0xDA;
    Places places;
    for (std::size_t at = kMarkerBytes; places.entropy == 0;) {
        const unsigned char marker = bytes[at + 1];
        const std::size_t length = bytes[at + 2] << 8 | bytes[at + 3];
        if (marker == kFrame) places.height = at + 5;
        at += kMarkerBytes + length;
        if (marker == kScan) places.entropy = at;
    }
    return places;
}

// The header of the first strip, with the height of the whole; then the coded data of all, with
// restart markers between them.
std::vector<std::byte> joined(const std::vector<Strip>& strips, int height) {
    const Places first = placesIn(strips.front().bytes.get());
    std::size_t count = 0;
    for (const Strip& strip : strips) count += strip.count;
    std::vector<std::byte> file;
    file.reserve(count);
    const auto append = [&file](const unsigned char* bytes, std::size_t length) {
        const auto* begin = reinterpret_cast<const std::byte*>(bytes);
        file.insert(file.end(), begin, begin + length);
    };
    append(strips.front().bytes.get(), first.entropy);
    file[first.height] = static_cast<std::byte>(height >> 8);
    file[first.height + 1] = static_cast<std::byte>(height & 0xFF);
    for (std::size_t n = 0; n < strips.size(); ++n) {
        const unsigned char* bytes = strips[n].bytes.get();
        const std::size_t begin = placesIn(bytes).entropy;
        append(bytes + begin, strips[n].count - begin - kMarkerBytes);
        const unsigned char restart = static_cast<unsigned char>(0xD0 + n % 8);
        const unsigned char end = 0xD9;
        const unsigned char marker[] = {0xFF, n + 1 < strips.size() ? restart : end};
        append(marker, kMarkerBytes);
    }
    return file;
}

}  // namespace

std::optional<std::vector<std::byte>> encodeJPEG(const CGImage& bitmap, int quality,
                                                 std::span<const std::byte> profile,
                                                 WorkerPool& pool) try {
    const int height = bitmap.size().height;
    const int most = stripRows(bitmap.size().width);
    std::vector<Strip> strips;
    for (int row = 0; row < height; row += most) {
        strips.push_back({row, std::min(most, height - row), nullptr, 0});
    }
    std::atomic<bool> failed{false};
    pool.parallelFor(strips.size(), [&](std::size_t n, std::size_t) {
        Strip& strip = strips[n];
        unsigned char* bytes = nullptr;  // from malloc
        unsigned long count = 0;
        if (!encode(bitmap, quality, profile, strip.firstRow, strip.rows, bytes, count)) {
            failed = true;
        }
        strip.bytes.reset(bytes);
        strip.count = count;
    });
    if (failed) return {};
    return joined(strips, height);
} catch (const std::bad_alloc&) {
    return {};
}

}  // namespace quillmere
