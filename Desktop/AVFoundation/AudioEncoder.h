// Sound into an AAC track.
#pragma once

#include <cstdint>

#include "Desktop/AVFoundation/MovieMuxer.h"
#include "Desktop/AVFoundation/SampleEncoder.h"
#include "Platform/AVFoundation/AVAssetWriter.h"

namespace quillmere {

/// FFmpeg's AAC encoder. The track is one unbroken run from the start of the session on: what is
/// missing is silence. Times that stray by less than an ear notices follow the run.
class AudioEncoder final : public SampleEncoder {
public:
    static bool canEncode(const AVAudioOutputSettings& settings);

    /// Adds its track to `muxer`. Times count from `sessionStart`, which is set before the first
    /// sample.
    AudioEncoder(const AVAudioOutputSettings& settings, const MediaTime& sessionStart,
                 MovieMuxer& muxer);

    /// Fails for sound of another rate than the track's.
    Result<void> encode(const CMSampleBuffer& sample) override;
    Result<void> finish() override;

private:
    int open();
    int rate() const { return codec_->sample_rate; }
    int mix(const CMAudioData& audio, std::size_t firstFrame);
    int addSilence(std::int64_t frames);
    int encodeWhole();
    int encodeFrames(int count);
    int send(const AVFrame* frame);

    AVAudioOutputSettings settings_;
    const MediaTime& sessionStart_;
    MovieMuxer& muxer_;
    std::size_t track_;
    AVCodecContextRef codec_;
    SwrContextRef mixer_;
    std::uint32_t mixerChannels_ = 0;
    AVAudioFifoRef fifo_;
    std::int64_t received_ = 0;  // frames since the start of the session
    std::int64_t encoded_ = 0;
};

}  // namespace quillmere
