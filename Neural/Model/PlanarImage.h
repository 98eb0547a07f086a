// An image as plain floats, for whoever wants a network's values before they become a picture.
#pragma once

#include <cstddef>
#include <vector>

#include "Base/Geometry.h"

namespace quillmere::neural {

/// Channels one after the other, each rows (top first) of width floats without gaps, in the range
/// of the network's border.
struct PlanarImage {
    int channels = 0;
    PixelSize size;
    std::vector<float> values;

    static PlanarImage blank(int channels, PixelSize size) {
        const std::size_t pixels = static_cast<std::size_t>(size.width) * size.height;
        return {channels, size, std::vector<float>(channels * pixels)};
    }

    /// Row `y` of channel `c`.
    float* row(int c, int y) {
        return values.data() + (static_cast<std::size_t>(c) * size.height + y) * size.width;
    }
    const float* row(int c, int y) const { return const_cast<PlanarImage*>(this)->row(c, y); }
};

}  // namespace quillmere::neural
