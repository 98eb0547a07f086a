// One track's samples, one by one.
#pragma once

#include <memory>

#include "Base/Result.h"
#include "Platform/AVFoundation/CMSampleBuffer.h"

namespace quillmere {

/// One thread.
class SampleSource {
public:
    virtual ~SampleSource() = default;

    /// Null after the last one.
    virtual Result<CMSampleBufferRef> next() = 0;
};

}  // namespace quillmere
