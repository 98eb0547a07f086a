#include "Desktop/AVFoundation/PixelBufferFrame.h"

#include <memory>

namespace quillmere {

AVPixelFormat pixelFormatOf(CVPixelFormat format) {
    switch (format) {
        case CVPixelFormat::rgba8:
            return AV_PIX_FMT_RGBA;
        case CVPixelFormat::bgra8:
            return AV_PIX_FMT_BGRA;
        case CVPixelFormat::yCbCr8Planar420:
            return AV_PIX_FMT_YUV420P;
    }
    return AV_PIX_FMT_NONE;
}

AVFrameRef frameSharing(const CVPixelBufferRef& buffer) {
    AVFrameRef frame(av_frame_alloc());
    if (!frame) return nullptr;
    frame->format = pixelFormatOf(buffer->format());
    frame->width = buffer->size().width;
    frame->height = buffer->size().height;
    const bool isRGB = buffer->planeCount() == 1;
    frame->colorspace = isRGB ? AVCOL_SPC_RGB : AVCOL_SPC_BT709;
    frame->color_range = isRGB ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    for (std::size_t plane = 0; plane < buffer->planeCount(); ++plane) {
        frame->data[plane] = const_cast<std::uint8_t*>(buffer->baseAddressOfPlane(plane));
        frame->linesize[plane] = static_cast<int>(buffer->bytesPerRowOfPlane(plane));
    }
    auto owner = std::make_unique<CVPixelBufferRef>(buffer);
    frame->buf[0] = av_buffer_create(
        frame->data[0], buffer->bytesPerRow() * static_cast<std::size_t>(buffer->size().height),
        [](void* opaque, std::uint8_t*) { delete static_cast<CVPixelBufferRef*>(opaque); },
        owner.get(), 0);
    if (!frame->buf[0]) return nullptr;
    (void)owner.release();
    return frame;
}

CVPixelBufferRef bufferSharing(const AVFrame& frame, CVPixelFormat format) {
    const std::shared_ptr<AVFrame> owner(av_frame_clone(&frame), FFmpegDeleter());
    if (!owner) return nullptr;
    CVPixelBuffer::Planes planes;
    for (std::size_t plane = 0; plane < CVPixelBuffer::planeCount(format); ++plane) {
        planes[plane] = {owner->data[plane], static_cast<std::size_t>(owner->linesize[plane])};
    }
    return std::make_shared<CVPixelBuffer>(PixelSize{frame.width, frame.height}, format, planes,
                                           owner);
}

}  // namespace quillmere
