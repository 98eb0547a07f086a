// An audio track as linear PCM at the rate that is asked for.
#pragma once

#include <cstdint>
#include <memory>

#include "Desktop/AVFoundation/SampleSource.h"
#include "Desktop/AVFoundation/TrackDecoder.h"

namespace quillmere {

/// Times are those of the file, less what the resampler still holds, counted in samples of the
/// rate. Sound before the start of the movie is cut off.
class AudioSource final : public SampleSource {
public:
    AudioSource(std::unique_ptr<TrackDecoder> decoder, int sampleRate)
        : decoder_(std::move(decoder)), rate_(sampleRate) {}

    Result<CMSampleBufferRef> next() override;

private:
    int makeResampler(const AVFrame& frame);
    Result<CMSampleBufferRef> resample(const AVFrame* frame);

    std::unique_ptr<TrackDecoder> decoder_;
    int rate_;
    SwrContextRef resampler_;
    int sourceFormat_ = -1;
    int sourceRate_ = 0;
    int sourceChannels_ = 0;
    int channels_ = 0;       // of what is given out, the same for the whole track
    std::int64_t next_ = 0;  // the time after the last sample given out
    bool isFlushed_ = false;
};

}  // namespace quillmere
