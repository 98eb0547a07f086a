#include "Benchmarks/SoftwareScaler.h"

#include <stdexcept>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

namespace quillmere::benchmark {
namespace {

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

// The scaler wants frames that it may share with its threads: these share nothing, since all ends
// with the call.
void ignore(void*, std::uint8_t*) {}

template <class T>
Frame borrowed(const scaler::PlanarFrame<T>& planes, PixelSize size) {
    Frame frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = size.width;
    frame->height = size.height;
    const scaler::PlaneView<T>* views[] = {&planes.luma, &planes.blue, &planes.red};
    for (int n = 0; n < 3; ++n) {
        auto* bytes = const_cast<std::uint8_t*>(views[n]->pixels);
        frame->data[n] = bytes;
        frame->linesize[n] = static_cast<int>(views[n]->stride);
        frame->buf[n] = av_buffer_create(
            bytes, static_cast<std::size_t>(views[n]->stride * views[n]->size.height), ignore,
            nullptr, 0);
    }
    return frame;
}

}  // namespace

void SoftwareScaler::Free::operator()(SwsContext* context) const { sws_freeContext(context); }

SoftwareScaler::SoftwareScaler(PixelSize source, int factor, int threads, bool exactly)
    : source_(source),
      target_{source.width * factor, source.height * factor},
      context_(sws_alloc_context()) {
    const auto set = [&](const char* name, int value) {
        av_opt_set_int(context_.get(), name, value, 0);
    };
    set("srcw", source_.width);
    set("srch", source_.height);
    set("dstw", target_.width);
    set("dsth", target_.height);
    set("src_format", AV_PIX_FMT_YUV420P);
    set("dst_format", AV_PIX_FMT_YUV420P);
    set("sws_flags", SWS_LANCZOS | (exactly ? SWS_ACCURATE_RND : 0));
    set("threads", threads);
    if (sws_init_context(context_.get(), nullptr, nullptr) < 0) {
        throw std::runtime_error("swscale can't be set up.");
    }
}

void SoftwareScaler::scale(const scaler::SourceFrame& source, const scaler::TargetFrame& target) {
    const Frame from = borrowed(source, source_), to = borrowed(target, target_);
    if (sws_scale_frame(context_.get(), to.get(), from.get()) < 0) {
        throw std::runtime_error("swscale failed.");
    }
}

}  // namespace quillmere::benchmark
