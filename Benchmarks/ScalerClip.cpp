#include "Benchmarks/ScalerClip.h"

#include <algorithm>
#include <cmath>

namespace quillmere::benchmark {
namespace {

constexpr int kWidth = 2000;
constexpr int kCut = 6;  // the frame at which a cut comes

using Pictures = std::span<const GreyPicture>;

/// A hand's shake, seconds long, in steps of some pixels.
Pose shaken(int n) {
    const auto t = static_cast<float>(n);
    return {3.1f * std::sin(t * 0.7f) + 1.3f * std::sin(t * 1.9f + 1),
            2.3f * std::sin(t * 0.9f + 0.4f) + 0.9f * std::sin(t * 2.3f),
            0.004f * std::sin(t * 0.5f), 1 + 0.004f * std::sin(t * 0.43f)};
}

Pose moved(Pose pose, float x, float y) {
    pose.x += x;
    pose.y += y;
    return pose;
}

/// A round piece of one picture crosses another, turning.
GreyPicture crossed(Pictures pictures, PixelSize size, int n) {
    const auto t = static_cast<float>(n);
    GreyPicture frame = photographed(pictures[0], size, {0, 200});
    const PixelSize part{size.width / 3, size.height / 3};
    const GreyPicture thing = photographed(pictures[1], part, {0, -100, 0.02f * t});
    const float left = 40 + 5.63f * t, top = 60 + 1.3f * t;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const float u = static_cast<float>(x) - left, v = static_cast<float>(y) - top;
            const float fromMiddle = std::hypot(u / static_cast<float>(part.width) - 0.5f,
                                                v / static_cast<float>(part.height) - 0.5f);
            if (fromMiddle < 0.48f) frame.row(y)[x] = thing.at(u, v);
        }
    }
    return frame;
}

GreyPicture dimmed(GreyPicture frame, float share) {
    for (float& pixel : frame.pixels) pixel *= share;
    return frame;
}

const char* const kMountains = "picosdeeuropa_by_Aitzol_Berasategi.jpg";
const char* const kHills = "aitzgorri_by_Aitzol_Berasategi.jpg";
const char* const kRoom = "Wine_by_Jakkub_Mede.jpg";
const char* const kDogs = "friends_by_Aitzol_Berasategi.jpg";
const char* const kMask = "firstgeneration.jpg";
const char* const kStream = "life_by_Aitzol_Berasategi.jpg";
const char* const kLeaves = "Dragonfly_by_Bolly.jpg";

const ScalerClip kClips[] = {
    {"Hand-held",
     {kMountains},
     0,
     [](Pictures p, PixelSize s, int n) { return photographed(p[0], s, shaken(n)); }},
    {"Pan",
     {kHills},
     0,
     [](Pictures p, PixelSize s, int n) {
         return photographed(p[0], s, moved({-50, 0}, 7.3f * float(n), 0.37f * float(n)));
     }},
    {"Still camera, something crosses", {kRoom, kDogs}, 0, crossed},
    {"Drawing, moving and turning",
     {kMask},
     0,
     [](Pictures p, PixelSize s, int n) {
         const auto t = static_cast<float>(n);
         return photographed(p[0], s, {150 + 1.9f * t, 20 + 0.85f * t, 0.002f * t, 1 - 0.002f * t});
     }},
    {"Hand-held, noise of 5 levels",
     {kStream},
     5,
     [](Pictures p, PixelSize s, int n) { return photographed(p[0], s, shaken(n + 5)); }},
    {"Still camera, noise of 3 levels",
     {kDogs},
     3,
     [](Pictures p, PixelSize s, int) {
         return photographed(p[0], s, {0, 300});
     }},
    {"Zoom with a turn",
     {kLeaves},
     0,
     [](Pictures p, PixelSize s, int n) {
         const auto t = static_cast<float>(n);
         return photographed(p[0], s, {0, 0, 0.003f * t, 1 - 0.006f * t});
     }},
    {"Cut in the middle",
     {kLeaves, kRoom},
     0,
     [](Pictures p, PixelSize s, int n) {
         return n < kCut ? photographed(p[0], s, shaken(n))
                         : photographed(p[1], s, {10 + 2.2f * static_cast<float>(n), 100});
     }},
    {"Hand-held, fading in",
     {kDogs},
     0,
     [](Pictures p, PixelSize s, int n) {
         return dimmed(photographed(p[0], s, shaken(n)), 0.45f + 0.04f * static_cast<float>(n));
     }},
};

}  // namespace

GreyPicture photographed(const GreyPicture& picture, PixelSize size, const Pose& pose) {
    GreyPicture frame(size);
    const float cosine = std::cos(pose.angle) * pose.zoom, sine = std::sin(pose.angle) * pose.zoom;
    const float middleX = static_cast<float>(picture.size.width) / 2 + 2 * pose.x - 0.5f;
    const float middleY = static_cast<float>(picture.size.height) / 2 + 2 * pose.y - 0.5f;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            float sum = 0;
            for (int sample = 0; sample < 4; ++sample) {
                const float u = static_cast<float>(2 * x - size.width + sample % 2) + 0.5f;
                const float v = static_cast<float>(2 * y - size.height + sample / 2) + 0.5f;
                sum += picture.at(middleX + cosine * u - sine * v, middleY + sine * u + cosine * v);
            }
            frame.row(y)[x] = std::clamp(sum / 4, 0.0f, 255.0f);
        }
    }
    return frame;
}

std::span<const ScalerClip> scalerClips() { return kClips; }

Result<std::vector<GreyPicture>> picturesOf(const ScalerClip& clip,
                                            const std::filesystem::path& folder) {
    std::vector<GreyPicture> pictures;
    for (const std::string& name : clip.pictures) {
        const auto picture = loadGrey(folder / name);
        if (!picture) return picture.error();
        // Sampled after whole steps of the reduction: what is left is a factor of one to two.
        GreyPicture fine =
            reduced(*picture, std::max(1, picture->size.width / kWidth), Reduction::area);
        const float step = static_cast<float>(fine.size.width) / kWidth;
        GreyPicture& result = pictures.emplace_back(
            PixelSize{kWidth, static_cast<int>(static_cast<float>(fine.size.height) / step)});
        for (int y = 0; y < result.size.height; ++y) {
            for (int x = 0; x < result.size.width; ++x) {
                result.row(y)[x] = fine.at((static_cast<float>(x) + 0.5f) * step - 0.5f,
                                           (static_cast<float>(y) + 0.5f) * step - 0.5f);
            }
        }
    }
    return pictures;
}

}  // namespace quillmere::benchmark
