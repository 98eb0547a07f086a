#include "Desktop/AVFoundation/DecodedFrame.h"

#include <cstdint>
#include <new>
#include <utility>

#include "Desktop/AVFoundation/PixelBufferFrame.h"

namespace quillmere {
namespace {

void makeOpaque(CVPixelBuffer& buffer) {
    for (int y = 0; y < buffer.size().height; ++y) {
        std::uint8_t* row =
            buffer.baseAddress() + static_cast<std::size_t>(y) * buffer.bytesPerRow();
        for (int x = 0; x < buffer.size().width; ++x) row[4 * x + 3] = 255;
    }
}

}  // namespace

DecodedFrame::DecodedFrame(AVFrameRef frame, std::shared_ptr<SharedScaler> shared)
    : frame_(std::move(frame)), shared_(std::move(shared)) {}

void DecodedFrame::fill(CVPixelBuffer& buffer) const {
    const FrameLayout source = FrameLayout::of(*frame_);
    const AVFrameRef result = frameSharing(CVPixelBufferRef(CVPixelBufferRef(), &buffer));
    if (!result) throw std::bad_alloc();
    {
        const std::lock_guard lock(shared_->mutex);
        const int answer = shared_->scaler.scale(*frame_, source, *result,
                                                 FrameLayout::of(buffer.size(), buffer.format()));
        if (answer < 0) throw std::bad_alloc();
    }
    if (buffer.planeCount() == 1 && source.hasAlpha()) makeOpaque(buffer);
}

}  // namespace quillmere
