#include "Desktop/AVFoundation/PixelBufferPool.h"

#include <new>
#include <utility>

namespace quillmere {

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
        if (!buffer) buffer = std::make_unique<CVPixelBuffer>(size_, format_);
        return {buffer.release(), [weak = std::weak_ptr(free_)](CVPixelBuffer* used) {
                    std::unique_ptr<CVPixelBuffer> back(used);
                    const auto free = weak.lock();
                    if (!free) return;
                    const std::lock_guard lock(free->mutex);
                    free->buffers.push_back(std::move(back));
                }};
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace quillmere
