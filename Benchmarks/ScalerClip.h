// Clips whose every frame is known at the size that a scaler is to reach.
#pragma once

#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "Benchmarks/GreyPicture.h"

namespace quillmere::benchmark {

/// Where a camera looks: an offset in pixels of its frames, an angle in radians, and how many
/// frames' pixels a pixel covers.
struct Pose {
    float x = 0;
    float y = 0;
    float angle = 0;
    float zoom = 1;
};

/// A frame of `size` about the middle of a picture that is twice as fine, taken as a sensor does:
/// the mean of two by two samples a pixel.
GreyPicture photographed(const GreyPicture& picture, PixelSize size, const Pose& pose);

/// What is seen at frame `n` of a clip, from pictures of the clip's own choice.
struct ScalerClip {
    std::string name;
    std::vector<std::string> pictures;  // files under a folder of backgrounds
    float noise;                        // standard deviation in levels, added to the small frames
    std::function<GreyPicture(std::span<const GreyPicture>, PixelSize, int)> frame;
};

/// Hand-held, pan, still camera with something that crosses, drawing, noise, zoom, cut and fade.
std::span<const ScalerClip> scalerClips();

/// The pictures of a clip, brought to a width of 2000.
Result<std::vector<GreyPicture>> picturesOf(const ScalerClip& clip,
                                            const std::filesystem::path& folder);

}  // namespace quillmere::benchmark
