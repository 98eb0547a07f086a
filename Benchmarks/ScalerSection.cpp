// The time of a frame, beside FFmpeg's scaler, and of what it is made of.
#include <array>
#include <functional>
#include <random>

#include "Benchmarks/PlanarBuffer.h"
#include "Benchmarks/ScalerClip.h"
#include "Benchmarks/ScalerStages.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/SoftwareScaler.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"

namespace quillmere::benchmark {
namespace {

constexpr PixelSize kSource{640, 360};
constexpr int kThreads = 2;
constexpr Rounds kRounds{9, 60, 8.0};

/// Some frames of a shaken photograph with a little noise, so that no part has it easy.
Result<std::vector<PlanarBuffer>> makeFrames() {
    const ScalerClip& clip = scalerClips().front();
    const auto pictures = picturesOf(clip, "/usr/share/backgrounds");
    if (!pictures) return pictures.error();
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0, 1.5f);
    std::vector<PlanarBuffer> frames;
    for (int n = 0; n < 4; ++n) {
        GreyPicture picture = clip.frame(*pictures, kSource, n);
        for (float& pixel : picture.pixels) pixel += noise(random);
        picture = rounded(std::move(picture));
        const scaler::TargetPlane luma = frames.emplace_back(kSource).target().luma;
        for (int y = 0; y < kSource.height; ++y) {
            std::copy_n(picture.row(y), kSource.width, luma.row(y));
        }
    }
    return frames;
}

void measureFactor(int factor, std::vector<PlanarBuffer>& frames, Table& table) {
    WorkerPool pool(kThreads);
    scaler::FrameScaler ours(kSource, factor, pool);
    SoftwareScaler quick(kSource, factor, kThreads, false), exact(kSource, factor, kThreads, true);
    PlanarBuffer target({factor * kSource.width, factor * kSource.height});
    std::size_t next = 0;
    const auto timed = [&](auto& scaler) {
        return [&] {
            const PlanarBuffer& frame = frames[next++ % frames.size()];
            return processorSecondsOf([&] { scaler.scale(frame.source(), target.target()); });
        };
    };
    const std::array<std::function<double()>, 3> contestants{timed(ours), timed(quick),
                                                             timed(exact)};
    const std::vector<Spread> times = takeTurns(kRounds, contestants);
    const double wall = secondsOf([&] {
        for (int n = 0; n < 20; ++n) {
            ours.scale(frames[n % frames.size()].source(), target.target());
        }
    });
    table.row({"By " + std::to_string(factor), figure(times[0], kMilliseconds),
               figure(times[1], kMilliseconds), figure(times[2], kMilliseconds),
               figure(times[1].median / times[0].median), figure(times[2].median / times[0].median),
               figure(wall / 20 * kMilliseconds)});
}

}  // namespace

void measureScaler(const Setting&) {
    auto frames = makeFrames();
    Table table("Frames of 640 by 360, two threads, processor time in ms",
                {"Enlarged", "Ours", "swscale, Lanczos", "swscale, Lanczos, exact rounding",
                 "Our speed to swscale's", "to its exact one's", "Ours, ms by the clock"});
    if (!frames) return table.missing("All", frames.error().localizedDescription);
    for (const int factor : {2, 4}) measureFactor(factor, *frames, table);
    measureScalerStages((*frames)[0], (*frames)[1], kSource);
}

}  // namespace quillmere::benchmark
