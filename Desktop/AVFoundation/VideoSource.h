// A video track as frames in standard colours, with exact times.
#pragma once

#include <cstdint>
#include <memory>

#include "Desktop/AVFoundation/FrameConverter.h"
#include "Desktop/AVFoundation/SampleSource.h"
#include "Desktop/AVFoundation/TrackDecoder.h"

namespace quillmere {

/// Times are those of the file, in its own units. Where two frames have the same, the later one is
/// put off by one unit. Of frames before the start of the movie, the one that is still seen at the
/// start has time zero, and the others are left out.
class VideoSource final : public SampleSource {
public:
    VideoSource(std::unique_ptr<TrackDecoder> decoder, PixelSize size, CVPixelFormat format);

    Result<CMSampleBufferRef> next() override;

private:
    std::int64_t timeOf(const AVFrame& frame) const;

    std::unique_ptr<TrackDecoder> decoder_;
    FrameConverter converter_;
    AVRational unit_;             // of the times here, in seconds; its numerator is part of them
    std::int64_t usualDuration_;  // in those units; 0 where it is not known
    std::int64_t last_ = -1;
};

}  // namespace quillmere
