// What the FFmpeg libraries hand out, held so that it is given back.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <memory>

namespace quillmere {

struct FFmpegDeleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(SwsContext* context) const { sws_freeContext(context); }
    void operator()(SwrContext* context) const { swr_free(&context); }
    void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
    void operator()(AVIOContext* context) const {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};

using AVCodecContextRef = std::unique_ptr<AVCodecContext, FFmpegDeleter>;
using AVFrameRef = std::unique_ptr<AVFrame, FFmpegDeleter>;
using AVPacketRef = std::unique_ptr<AVPacket, FFmpegDeleter>;
using SwsContextRef = std::unique_ptr<SwsContext, FFmpegDeleter>;
using SwrContextRef = std::unique_ptr<SwrContext, FFmpegDeleter>;
using AVAudioFifoRef = std::unique_ptr<AVAudioFifo, FFmpegDeleter>;
using AVIOContextRef = std::unique_ptr<AVIOContext, FFmpegDeleter>;

struct AVInputDeleter {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
using AVInputRef = std::unique_ptr<AVFormatContext, AVInputDeleter>;

struct AVOutputDeleter {
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};
using AVOutputRef = std::unique_ptr<AVFormatContext, AVOutputDeleter>;

}  // namespace quillmere
