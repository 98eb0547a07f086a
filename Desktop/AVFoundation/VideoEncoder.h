// Frames into an H.264 track.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "Desktop/AVFoundation/FrameConverter.h"
#include "Desktop/AVFoundation/MovieMuxer.h"
#include "Desktop/AVFoundation/SampleEncoder.h"
#include "Platform/AVFoundation/AVAssetWriter.h"

namespace quillmere {

/// x264, 8-bit 4:2:0, BT.709. A frame that still is as it was decoded is taken from its own layout,
/// and unchanged where it is in that of the track. The time unit of the first frame is that of the
/// track; frames keep their times to that unit.
class VideoEncoder final : public SampleEncoder {
public:
    /// The size that frames are brought to, before it is made even; nothing where it can't be
    /// encoded.
    static std::optional<PixelSize> frameSize(const AVVideoOutputSettings& settings);

    /// Adds its track to `muxer`. Times count from `sessionStart`, which is set before the first
    /// sample.
    VideoEncoder(const AVVideoOutputSettings& settings, const AffineTransform& transform,
                 const MediaTime& sessionStart, MovieMuxer& muxer);

    Result<void> encode(const CMSampleBuffer& sample) override;
    Result<void> finish() override;

private:
    int open(const CMSampleBuffer& first);
    AVFrameRef prepare(const CVPixelBufferRef& image);
    AVFrameRef padded(AVFrameRef picture) const;
    int send(const AVFrame* frame);
    void noteDuration(const CMSampleBuffer& sample, std::int64_t time);

    AVVideoOutputSettings settings_;
    PixelSize size_;
    FrameConverter converter_;
    AffineTransform transform_;
    const MediaTime& sessionStart_;
    MovieMuxer& muxer_;
    std::size_t track_;
    AVCodecContextRef codec_;
    std::map<std::int64_t, std::int64_t> durations_;  // by time, of frames still in the encoder
    std::optional<std::int64_t> lastTime_;
};

}  // namespace quillmere
