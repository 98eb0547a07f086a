// Brightness in fractions of a level: what clips and training pictures are made from.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "Base/Geometry.h"
#include "Base/Result.h"

namespace quillmere::benchmark {

/// Rows from the top down, 0 to 255.
struct GreyPicture {
    PixelSize size;
    std::vector<float> pixels;

    GreyPicture() = default;
    explicit GreyPicture(PixelSize s)
        : size(s), pixels(static_cast<std::size_t>(s.width) * s.height) {}

    float* row(int y) { return pixels.data() + static_cast<std::size_t>(y) * size.width; }
    const float* row(int y) const {
        return pixels.data() + static_cast<std::size_t>(y) * size.width;
    }
    /// Beyond an edge, the edge.
    float at(int x, int y) const;
    /// Between pixels, by the cubic of Catmull and Rom.
    float at(float x, float y) const;
};

/// What a picture can have been made smaller by.
enum class Reduction {
    area,     // means of squares, as a sensor's pixels take them
    lanczos,  // Lanczos's filter of three lobes, as most programs do
};

/// The brightness (BT.601) of a picture file.
Result<GreyPicture> loadGrey(const std::filesystem::path& file);

/// `factor` times smaller; rows and columns that fill no square are left out.
GreyPicture reduced(const GreyPicture& picture, int factor, Reduction reduction);

/// `factor` times larger, by Lanczos's filter of three lobes.
GreyPicture enlarged(const GreyPicture& picture, int factor);

/// To whole levels from 0 to 255.
GreyPicture rounded(GreyPicture picture);

}  // namespace quillmere::benchmark
