// Which convolutions our networks are made of.
#pragma once

#include <compare>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Base/Geometry.h"
#include "Base/Result.h"

namespace quillmere::benchmark {

/// The tile that every network takes in the application.
inline constexpr PixelSize kTile{256, 256};

/// What the time of a convolution depends on.
struct LayerShape {
    int scale = 1;   // width and height in multiples of the network's input
    int kernel = 0;  // pixels a side
    int inputs = 0;  // channels
    int outputs = 0;
    bool activated = false;  // by ReLU or one of its kin

    PixelSize size() const { return {kTile.width * scale, kTile.height * scale}; }
    /// "64→32, activated": channels in, channels out.
    std::string name() const;
    /// Floating-point operations of the plain sum of products over `size()`; a multiplication and
    /// an addition are two.
    double operations() const;

    friend auto operator<=>(const LayerShape&, const LayerShape&) = default;
};

/// Shapes, and how many convolutions have each.
using LayerCounts = std::map<LayerShape, int>;

/// All convolutions of the compiled network in `directory`.
Result<LayerCounts> layersOf(const std::filesystem::path& directory);

/// What a layer is run on: noise, the same for each call. The times of the kernels don't depend on
/// values, as long as these are neither denormal nor infinite.
struct LayerData {
    /// Of what is below zero, where activated. ReLU stands for its kin, since their arithmetic
    /// takes ours the same time, while some kernels of oneDNN's know no other.
    static constexpr float kSlope = 0;

    PixelSize size;
    std::vector<float> source;   // [inputs, height, width], in -1 to 1
    std::vector<float> weights;  // [outputs, inputs, kernel, kernel]; results stay near 1
    std::vector<float> bias;     // [outputs]

    static LayerData of(const LayerShape& shape, PixelSize size);
};

}  // namespace quillmere::benchmark
