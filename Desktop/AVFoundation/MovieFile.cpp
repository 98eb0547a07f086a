#include "Desktop/AVFoundation/MovieFile.h"

#include <unistd.h>

#include <cerrno>
#include <span>

#include "Desktop/AVFoundation/MovieError.h"

namespace quillmere {
namespace {

constexpr int bufferBytes = 256 << 10;
constexpr unsigned anyoneMayReadAndWrite = 0666;  // less the process's mask

}  // namespace

Result<void> MovieFile::open() {
    if (const int failed = file_.open(anyoneMayReadAndWrite); failed != 0) {
        return writingError(AVERROR(failed));
    }
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    if (!buffer) return movieOutOfMemory();
    io_.reset(avio_alloc_context(buffer, bufferBytes, 1, this, nullptr, write, seek));
    if (!io_) {
        av_free(buffer);
        return movieOutOfMemory();
    }
    return {};
}

int MovieFile::write(void* opaque, std::uint8_t* bytes, int size) {
    auto& self = *static_cast<MovieFile*>(opaque);
    const int failed =
        self.file_.write(std::as_bytes(std::span(bytes, static_cast<std::size_t>(size))));
    return failed == 0 ? size : AVERROR(failed);
}

std::int64_t MovieFile::seek(void* opaque, std::int64_t offset, int whence) {
    if ((whence & AVSEEK_SIZE) != 0) return AVERROR(ENOSYS);
    auto& self = *static_cast<MovieFile*>(opaque);
    const off_t place = lseek(self.file_.descriptor(), offset, whence);
    return place < 0 ? AVERROR(errno) : place;
}

int MovieFile::flush() {
    avio_flush(io_.get());
    if (io_->error < 0) return io_->error;
    return AVERROR(file_.flush());
}

int MovieFile::commit() { return AVERROR(file_.commit()); }

}  // namespace quillmere
