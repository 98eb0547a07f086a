#include "Desktop/AVFoundation/PixelBufferPool.h"

#include <array>
#include <new>
#include <utility>

namespace quillmere {
namespace {

/// swscale works on whole vectors: it writes a little beyond the end of a row.
std::unique_ptr<CVPixelBuffer> makeBuffer(PixelSize size, CVPixelFormat format) {
    constexpr std::size_t vector = 64;
    CVPixelBuffer::Planes planes;
    std::array<std::size_t, CVPixelBuffer::mostPlanes> offsets{};
    const std::size_t count = CVPixelBuffer::planeCount(format);
    std::size_t bytes = 0;
    for (std::size_t plane = 0; plane < count; ++plane) {
        const PixelSize own = CVPixelBuffer::sizeOfPlane(size, format, plane);
        const std::size_t used = static_cast<std::size_t>(own.width) * (count == 1 ? 4 : 1);
        planes[plane].bytesPerRow = (used + vector - 1) / vector * vector;
        offsets[plane] = bytes;
        bytes += planes[plane].bytesPerRow * static_cast<std::size_t>(own.height) + vector;
    }
    const std::shared_ptr<std::uint8_t[]> memory(
        new (std::align_val_t(vector)) std::uint8_t[bytes],
        [](std::uint8_t* used) { operator delete[](used, std::align_val_t(vector)); });
    for (std::size_t plane = 0; plane < count; ++plane) {
        planes[plane].baseAddress = memory.get() + offsets[plane];
    }
    return std::make_unique<CVPixelBuffer>(size, format, planes, memory);
}

}  // namespace

std::shared_ptr<CVPixelBuffer> PixelBufferPool::createPixelBuffer() {
    try {
        std::unique_ptr<CVPixelBuffer> buffer;
        {
            const std::lock_guard lock(free_->mutex);
            if (!free_->buffers.empty()) {
                buffer = std::move(free_->buffers.back());
                free_->buffers.pop_back();
            }
        }
        if (!buffer) buffer = makeBuffer(size_, format_);
        return {buffer.release(), [weak = std::weak_ptr(free_)](CVPixelBuffer* used) {
                    std::unique_ptr<CVPixelBuffer> back(used);
                    const auto free = weak.lock();
                    if (!free) return;
                    back->setBacking(nullptr);  // with a frame's memory
                    const std::lock_guard lock(free->mutex);
                    free->buffers.push_back(std::move(back));
                }};
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace quillmere
