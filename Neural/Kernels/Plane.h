// The layout of activations: planes of eight interleaved channels with a border of zeros.
#pragma once

#include <cstddef>
#include <vector>

#include "Base/Geometry.h"

namespace quillmere::neural {

/// Channels of a plane. One AVX2 register, two of SSE4 or NEON.
inline constexpr int kLanes = 8;

/// Pixels that kernels may read, and never use, behind a row's right border or the last row.
inline constexpr int kOverread = 16;

/// Kernels work on squares of this side, and on rows from a multiple of it.
inline constexpr int kTileSide = 4;

/// How a plane lies in memory; the same for all planes of one size in one network.
///
/// A pixel is `kLanes` floats. Around the pixels lies a border of zeros: `halo` above and to the
/// left; below and to the right `halo` more than what fills the last squares of `kTileSide`.
/// Kernels write pixels inside only, so that a border once zero stays so.
struct PlaneGeometry {
    PixelSize size;
    int halo = 0;
    std::size_t pitch = 0;   // floats from one row to the next
    std::size_t floats = 0;  // of a whole plane, over-read included

    static PlaneGeometry of(PixelSize size, int halo) {
        const std::size_t border = 2 * static_cast<std::size_t>(halo);
        std::size_t pixels = wholeTiles(size.width) + border;
        // Rows that lie a multiple of 2 KiB apart compete for the same few cache lines.
        if (pixels * kLanes * sizeof(float) % 2048 == 0) ++pixels;
        const std::size_t pitch = pixels * kLanes;
        const std::size_t rows = wholeTiles(size.height) + border;
        return {size, halo, pitch, rows * pitch + kOverread * std::size_t{kLanes}};
    }

    static std::size_t wholeTiles(int side) {
        return static_cast<std::size_t>(side + kTileSide - 1) / kTileSide * kTileSide;
    }

    /// From a plane's start to its pixel (0, 0).
    std::size_t origin() const { return halo * pitch + static_cast<std::size_t>(halo) * kLanes; }
};

/// A plane by its pixel (0, 0).
struct Plane {
    float* pixels = nullptr;
    int channels = 0;  // lanes in use, 1 to kLanes; the others hold finite values without meaning
};

/// The planes of one value, in the order of its channels. A concatenation is simply more planes,
/// which is why a plane in the middle may have lanes to spare.
struct PlaneList {
    PlaneGeometry geometry;
    std::vector<Plane> planes;

    /// Pixel (0, 0) of every single channel, `kLanes` floats from its neighbour.
    std::vector<float*> channels() const {
        std::vector<float*> all;
        for (const Plane& plane : planes) {
            for (int lane = 0; lane < plane.channels; ++lane) all.push_back(plane.pixels + lane);
        }
        return all;
    }
};

}  // namespace quillmere::neural
