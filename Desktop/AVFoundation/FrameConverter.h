// Decoded frames of any kind as pixel buffers of one kind.
#pragma once

#include <optional>

#include "Base/Result.h"
#include "Desktop/AVFoundation/FFmpegHandles.h"
#include "Desktop/AVFoundation/MatrixChange.h"
#include "Desktop/AVFoundation/PixelBufferPool.h"
#include "Desktop/AVFoundation/StandardColour.h"

namespace quillmere {

/// Brings size, bits, matrix, range and colours to those of the format; transparency is left out.
/// A frame without a matrix counts as BT.709 if it is high definition, as BT.601 otherwise. One
/// thread.
class FrameConverter {
public:
    FrameConverter(PixelSize size, CVPixelFormat format) : pool_(size, format) {}

    /// Shares the frame's pixels where they are what is asked for.
    Result<CVPixelBufferRef> convert(const AVFrame& frame);

private:
    /// What a scaler was made for.
    struct Layout {
        PixelSize size;
        AVPixelFormat format = AV_PIX_FMT_NONE;
        AVColorSpace matrix = AVCOL_SPC_BT709;
        bool isFullRange = true;

        friend bool operator==(const Layout&, const Layout&) = default;
    };
    struct Scaler {
        Layout from, to;
        SwsContextRef context;
    };

    static Layout layoutOf(const AVFrame& frame);
    Layout target() const;
    /// 0, or an error of FFmpeg.
    static int scale(Scaler& scaler, const AVFrame& from, const Layout& source, AVFrame& to,
                     const Layout& result);
    void updateColour(const AVFrame& frame);
    std::optional<MatrixChange> matrixChange(const Layout& source) const;
    Result<CVPixelBufferRef> mapColours(const AVFrame& frame, const Layout& source);

    PixelBufferPool pool_;
    Scaler scaler_;
    MovieColour colour_;
    std::optional<StandardColour> standardColour_;
    Scaler wideScaler_;
    AVFrameRef wide_;  // 16 bits a channel, in the movie's own colours
    std::optional<PixelBufferPool> mapped_;
};

}  // namespace quillmere
