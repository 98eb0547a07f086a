#include "Desktop/AVFoundation/FrameGrabber.h"

#include <atomic>
#include <cmath>
#include <new>
#include <utility>

#include "Desktop/AVFoundation/FrameConverter.h"
#include "Desktop/AVFoundation/MovieError.h"
#include "Desktop/AVFoundation/TrackDecoder.h"

namespace quillmere {
namespace {

Error noImage() {
    return movieError(AVErrorCode::noImageAtTime, "The movie has no picture at that time.");
}

/// The frame as `t` turns or mirrors it, in RGBA. Only quarter turns are known; others count as
/// none.
CGImage turned(const CVPixelBuffer& bgra, const AffineTransform& t) {
    const PixelSize size = bgra.size();
    const bool isQuarterTurn = std::abs(t.b) > std::abs(t.a);
    const bool flipsX = isQuarterTurn ? t.c < 0 : t.a < 0;
    const bool flipsY = isQuarterTurn ? t.b < 0 : t.d < 0;
    const PixelSize upright = isQuarterTurn ? PixelSize{size.height, size.width} : size;
    const std::size_t bytesPerRow =
        CGImage::bytesPerPixel * static_cast<std::size_t>(upright.width);
    const std::shared_ptr<std::uint8_t[]> pixels(
        new std::uint8_t[bytesPerRow * static_cast<std::size_t>(upright.height)]);
    for (int y = 0; y < upright.height; ++y) {
        for (int x = 0; x < upright.width; ++x) {
            const int ownX = flipsX ? upright.width - 1 - x : x;
            const int ownY = flipsY ? upright.height - 1 - y : y;
            const int row = isQuarterTurn ? ownX : ownY;
            const int column = isQuarterTurn ? ownY : ownX;
            const std::uint8_t* from = bgra.baseAddress() +
                                       static_cast<std::size_t>(row) * bgra.bytesPerRow() +
                                       4 * static_cast<std::size_t>(column);
            std::uint8_t* to = pixels.get() + static_cast<std::size_t>(y) * bytesPerRow +
                               4 * static_cast<std::size_t>(x);
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
            to[3] = 255;
        }
    }
    return CGImage(upright, bytesPerRow, std::shared_ptr<const std::uint8_t>(pixels, pixels.get()));
}

Result<CGImage> grab(const MovieAsset& asset, MediaTime time, bool appliesTransform) {
    if (asset.error()) return *asset.error();
    const auto tracks = asset.tracksWithMediaType(AVMediaType::video);
    if (tracks.empty()) return noImage();
    const auto& track = static_cast<const MovieTrack&>(*tracks.front());
    auto decoder = TrackDecoder::open(track.path(), track.stream(),
                                      std::make_shared<std::atomic<bool>>(false));
    if (!decoder) return decoder.error();
    if (time > MediaTime::zero()) {
        const AVRational unit = (*decoder)->stream().time_base;
        (*decoder)->seek(av_rescale_q(time.value, {1, time.timescale}, unit) +
                         (*decoder)->origin());
    }
    auto frame = (*decoder)->next();
    if (!frame) return frame.error();
    if (!*frame) return noImage();
    FrameConverter converter(track.size(), CVPixelFormat::bgra8);
    auto buffer = converter.convert(**frame);
    if (!buffer) return buffer.error();
    return turned(**buffer, appliesTransform ? track.preferredTransform() : AffineTransform());
}

Result<CGImage> grabOrSayWhy(const MovieAsset& asset, MediaTime time, bool appliesTransform) {
    try {
        return grab(asset, time, appliesTransform);
    } catch (const std::bad_alloc&) {
        return movieOutOfMemory();
    }
}

}  // namespace

void FrameGrabber::generateCGImagesAsynchronouslyForTimes(std::vector<MediaTime> times,
                                                          CompletionHandler handler) {
    dispatch_.globalQueue(QualityOfService::userInitiated)
        .async([asset = asset_, applies = applies_, times = std::move(times),
                handler = std::move(handler)] {
            for (const MediaTime& time : times) {
                handler(time, grabOrSayWhy(*asset, time, applies));
            }
        });
}

}  // namespace quillmere
