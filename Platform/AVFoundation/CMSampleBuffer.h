// One frame, or a stretch of sound, with its place in time.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "Base/MediaTime.h"
#include "Platform/AudioToolbox/AudioToolbox.h"
#include "Platform/CoreImage/CVPixelBuffer.h"

namespace quillmere {

/// Linear PCM: 32-bit floats, full scale at -1 and 1, the channels of a moment beside each other.
/// One channel is mono, two are left and right.
struct CMAudioData {
    AudioStreamBasicDescription format;
    std::vector<float> interleaved;

    std::size_t frameCount() const {
        return format.mChannelsPerFrame == 0 ? 0 : interleaved.size() / format.mChannelsPerFrame;
    }
};

/// Immutable, and safe to read from any thread. Holds a picture or sound; a buffer with neither
/// only marks a place.
class CMSampleBuffer {
public:
    /// `duration` may be unknown.
    CMSampleBuffer(MediaTime presentationTimeStamp, MediaTime duration, CVPixelBufferRef image)
        : presentationTimeStamp_(presentationTimeStamp),
          duration_(duration),
          imageBuffer_(std::move(image)) {}
    CMSampleBuffer(MediaTime presentationTimeStamp, std::shared_ptr<const CMAudioData> audio)
        : presentationTimeStamp_(presentationTimeStamp), audioData_(std::move(audio)) {}

    /// From the start of the movie.
    MediaTime presentationTimeStamp() const { return presentationTimeStamp_; }
    MediaTime duration() const { return duration_; }
    /// Null where the sample is no picture.
    const CVPixelBufferRef& imageBuffer() const { return imageBuffer_; }
    /// Null where the sample is no sound.
    const std::shared_ptr<const CMAudioData>& audioData() const { return audioData_; }

private:
    MediaTime presentationTimeStamp_;
    MediaTime duration_;
    CVPixelBufferRef imageBuffer_;
    std::shared_ptr<const CMAudioData> audioData_;
};

using CMSampleBufferRef = std::shared_ptr<const CMSampleBuffer>;

}  // namespace quillmere
