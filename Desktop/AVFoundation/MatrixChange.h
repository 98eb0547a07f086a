// The Y'CbCr of one matrix and range in that of BT.709, without a way through R'G'B'.
#pragma once

#include <cstdint>
#include <optional>

#include "Desktop/AVFoundation/FFmpegHandles.h"
#include "Platform/CoreImage/CVPixelBuffer.h"

namespace quillmere {

/// For planar 8-bit 4:2:0, where the way through R'G'B' would take chroma up and down again and
/// ten times as long. The part of the luma that depends on chroma takes it from the nearest
/// sample. The constants are those of ITU-T H.273. Immutable; any thread.
class MatrixChange {
public:
    /// Nothing for a matrix that isn't made of constants of luma.
    static std::optional<MatrixChange> of(AVColorSpace matrix, bool isFullRange);

    /// Both of one size.
    void apply(const AVFrame& from, CVPixelBuffer& to) const;

private:
    explicit MatrixChange() = default;

    // All times 2^14: of luma, of chroma to luma, and of chroma to chroma.
    std::int32_t luma_ = 0, lumaOffset_ = 0;
    std::int32_t lumaOfCb_ = 0, lumaOfCr_ = 0;
    std::int32_t cbOfCb_ = 0, cbOfCr_ = 0, crOfCb_ = 0, crOfCr_ = 0;
};

}  // namespace quillmere
