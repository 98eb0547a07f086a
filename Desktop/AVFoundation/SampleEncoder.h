// Encoding one track's samples into a movie.
#pragma once

#include "Base/Result.h"
#include "Platform/AVFoundation/CMSampleBuffer.h"

namespace quillmere {

/// Packets go to the muxer by themselves. Opened by the first sample. One thread at a time.
class SampleEncoder {
public:
    virtual ~SampleEncoder() = default;

    virtual Result<void> encode(const CMSampleBuffer& sample) = 0;
    /// After the last sample, once.
    virtual Result<void> finish() = 0;
};

}  // namespace quillmere
