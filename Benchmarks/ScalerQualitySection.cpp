// What frames that were reduced and enlarged again have kept, beside Lanczos's filter.
#include <cmath>
#include <cstdio>
#include <random>

#include "Benchmarks/PlanarBuffer.h"
#include "Benchmarks/ScalerClip.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/SoftwareScaler.h"
#include "Benchmarks/Table.h"

namespace quillmere::benchmark {
namespace {

// Of Debian's mate-backgrounds and lomiri-wallpapers-16.04 and ukui-wallpapers; none was learned
// from.
constexpr const char* kFolder = "/usr/share/backgrounds";
constexpr PixelSize kTruth{768, 432};
constexpr int kFrames = 12;
constexpr int kEdge = 16;  // not compared: what lies there is guessed from one side

double meanSquare(const scaler::TargetPlane& a, const GreyPicture& b) {
    double sum = 0;
    for (int y = kEdge; y < b.size.height - kEdge; ++y) {
        for (int x = kEdge; x < b.size.width - kEdge; ++x) {
            const double difference = a.row(y)[x] - b.row(y)[x];
            sum += difference * difference;
        }
    }
    return sum / ((b.size.width - 2 * kEdge) * (b.size.height - 2 * kEdge));
}

double decibels(double meanSquare) { return 10 * std::log10(255 * 255 / meanSquare); }

GreyPicture pictureOf(const scaler::TargetPlane& plane) {
    GreyPicture picture(plane.size);
    for (int y = 0; y < plane.size.height; ++y) {
        std::copy_n(plane.row(y), plane.size.width, picture.row(y));
    }
    return picture;
}

std::vector<GreyPicture> framesOf(const ScalerClip& clip, std::span<const GreyPicture> pictures) {
    std::vector<GreyPicture> frames;
    for (int n = 0; n < kFrames; ++n) frames.push_back(clip.frame(pictures, kTruth, n));
    return frames;
}

/// A small frame with its noise, always the same.
void fill(const GreyPicture& truth, int factor, Reduction reduction, float noise,
          std::mt19937& random, PlanarBuffer& source) {
    GreyPicture small = reduced(truth, factor, reduction);
    std::normal_distribution<float> normal(0, 1);
    if (noise > 0) {
        for (float& pixel : small.pixels) pixel += noise * normal(random);
    }
    small = rounded(std::move(small));
    const scaler::TargetPlane luma = source.target().luma;
    for (int y = 0; y < small.size.height; ++y) {
        std::copy_n(small.row(y), small.size.width, luma.row(y));
    }
}

/// Means over a clip's frames but the first, of which nothing precedes.
struct Score {
    double lanczos = 0;  // dB
    double alone = 0;    // dB: each frame without the ones before
    double ours = 0;     // dB
    double worst = 100;  // dB: the least that a frame gains over Lanczos
    double flicker = 0;  // levels: the deviation from the frame before
    double flickerLanczos = 0;
};

Score measure(const ScalerClip& clip, const std::vector<GreyPicture>& truth, int factor,
              Reduction reduction) {
    const PixelSize small{kTruth.width / factor, kTruth.height / factor};
    WorkerPool pool;
    scaler::FrameScaler ours(small, factor, pool), alone(small, factor, pool);
    SoftwareScaler lanczos(small, factor, 1, true);
    PlanarBuffer source(small), target(kTruth);
    std::mt19937 random(3);
    Score score;
    GreyPicture before[2];
    const auto flickerOf = [&](GreyPicture& last) {
        const double square = last.pixels.empty() ? 0 : meanSquare(target.target().luma, last);
        last = pictureOf(target.target().luma);
        return std::sqrt(square) / (kFrames - 1);
    };
    for (int n = 0; n < kFrames; ++n) {
        fill(truth[n], factor, reduction, clip.noise, random, source);
        const auto quality = [&] { return decibels(meanSquare(target.target().luma, truth[n])); };
        lanczos.scale(source.source(), target.target());
        const double plain = quality();
        score.flickerLanczos += flickerOf(before[0]);
        alone.forget();
        alone.scale(source.source(), target.target());
        const double single = quality();
        ours.scale(source.source(), target.target());
        const double result = quality();
        score.flicker += flickerOf(before[1]);
        if (n == 0) continue;
        score.lanczos += plain / (kFrames - 1);
        score.alone += single / (kFrames - 1);
        score.ours += result / (kFrames - 1);
        score.worst = std::min(score.worst, result - plain);
    }
    return score;
}

std::string signedFigure(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%+.2f", value);
    return text;
}

void measureAll(int factor, Reduction reduction) {
    const std::string how = reduction == Reduction::area ? "means of squares" : "Lanczos's filter";
    Table table("Enlarging by " + std::to_string(factor) + " what " + how + " reduced, in dB",
                {"Clip", "Lanczos", "A frame alone", "Ours", "Least of a frame", "Flicker, levels",
                 "Lanczos's"});
    double alone = 0, ours = 0;
    int clips = 0;
    for (const ScalerClip& clip : scalerClips()) {
        const auto pictures = picturesOf(clip, kFolder);
        if (!pictures) {
            table.missing(clip.name, pictures.error().localizedDescription);
            continue;
        }
        const Score score = measure(clip, framesOf(clip, *pictures), factor, reduction);
        table.row({clip.name, figure(score.lanczos), signedFigure(score.alone - score.lanczos),
                   signedFigure(score.ours - score.lanczos), signedFigure(score.worst),
                   figure(score.flicker), figure(score.flickerLanczos)});
        alone += score.alone - score.lanczos;
        ours += score.ours - score.lanczos;
        ++clips;
    }
    if (clips == 0) return;
    table.row({"Mean", "", signedFigure(alone / clips), signedFigure(ours / clips), "", "", ""});
}

}  // namespace

void measureScalerQuality(const Setting&) {
    for (const int factor : {2, 4}) {
        for (const Reduction reduction : {Reduction::area, Reduction::lanczos}) {
            measureAll(factor, reduction);
        }
    }
}

}  // namespace quillmere::benchmark
