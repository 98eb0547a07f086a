// Pixel buffers as FFmpeg's frames and back, sharing the pixels.
#pragma once

#include "Desktop/AVFoundation/FFmpegHandles.h"
#include "Platform/CoreImage/CVPixelBuffer.h"

namespace quillmere {

AVPixelFormat pixelFormatOf(CVPixelFormat format);

/// Null if memory ran out. The frame keeps the buffer; whether it may be written is up to whoever
/// has it.
AVFrameRef frameSharing(const CVPixelBufferRef& buffer);

/// `frame` has the size and the layout of `format`.
CVPixelBufferRef bufferSharing(const AVFrame& frame, CVPixelFormat format);

}  // namespace quillmere
