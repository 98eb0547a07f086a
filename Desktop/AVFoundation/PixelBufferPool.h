// Memory of frames that serves again and again.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "Platform/CoreImage/CVPixelBuffer.h"

namespace quillmere {

/// Keeps as much memory as was ever in use at once. Any thread.
class PixelBufferPool final : public CVPixelBufferPool {
public:
    PixelBufferPool(PixelSize size, CVPixelFormat format)
        : size_(size), format_(format), free_(std::make_shared<Free>()) {}

    PixelSize size() const { return size_; }
    CVPixelFormat format() const { return format_; }
    std::shared_ptr<CVPixelBuffer> createPixelBuffer() override;

private:
    /// Outlives the pool while buffers do.
    struct Free {
        std::mutex mutex;
        std::vector<std::unique_ptr<CVPixelBuffer>> buffers;
    };

    PixelSize size_;
    CVPixelFormat format_;
    std::shared_ptr<Free> free_;
};

}  // namespace quillmere
