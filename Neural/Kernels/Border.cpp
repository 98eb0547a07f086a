#include "Neural/Kernels/Border.h"

#include <algorithm>

namespace quillmere::neural {
namespace {

constexpr std::size_t kPixelBytes = 4;
constexpr std::size_t kColours = 3;

std::size_t widthOf(const PlaneList& list) {
    return static_cast<std::size_t>(list.geometry.size.width);
}
std::size_t heightOf(const PlaneList& list) {
    return static_cast<std::size_t>(list.geometry.size.height);
}

// The comparisons are false for what is no number.
std::uint8_t toByte(float value) {
    if (!(value > 0)) return 0;
    if (value > 255) return 255;
    const auto whole = static_cast<int>(value);
    return static_cast<std::uint8_t>(value - static_cast<float>(whole) >= 0.5f ? whole + 1 : whole);
}

// Kernels read spare lanes, so that they must hold something; zero is what costs nothing later.
void clearRow(const PlaneList& to, std::size_t y) {
    for (const Plane& plane : to.planes) {
        float* row = plane.pixels + y * to.geometry.pitch;
        std::fill(row, row + widthOf(to) * kLanes, 0.0f);
    }
}

}  // namespace

void readPixels(const std::uint8_t* pixels, std::size_t bytesPerRow, float unit,
                const PlaneList& to, WorkerPool& pool) {
    const std::vector<float*> channels = to.channels();
    pool.parallelFor(heightOf(to), [&](std::size_t y, std::size_t) {
        clearRow(to, y);
        const std::uint8_t* row = pixels + y * bytesPerRow;
        for (std::size_t c = 0; c < kColours; ++c) {
            float* out = channels[c] + y * to.geometry.pitch;
            for (std::size_t x = 0; x < widthOf(to); ++x) {
                out[x * kLanes] = static_cast<float>(row[x * kPixelBytes + c]) * unit;
            }
        }
    });
}

void writePixels(const PlaneList& from, float unit, std::uint8_t* pixels, std::size_t bytesPerRow,
                 WorkerPool& pool) {
    const std::vector<float*> channels = from.channels();
    const float scale = 1 / unit;
    pool.parallelFor(heightOf(from), [&](std::size_t y, std::size_t) {
        std::uint8_t* row = pixels + y * bytesPerRow;
        for (std::size_t c = 0; c < kColours; ++c) {
            const float* in = channels[c] + y * from.geometry.pitch;
            for (std::size_t x = 0; x < widthOf(from); ++x) {
                row[x * kPixelBytes + c] = toByte(in[x * kLanes] * scale);
            }
        }
        for (std::size_t x = 0; x < widthOf(from); ++x) row[x * kPixelBytes + kColours] = 255;
    });
}

void readPlanar(const float* planar, const PlaneList& to, WorkerPool& pool) {
    const std::vector<float*> channels = to.channels();
    pool.parallelFor(heightOf(to), [&](std::size_t y, std::size_t) {
        clearRow(to, y);
        for (std::size_t c = 0; c < channels.size(); ++c) {
            const float* in = planar + (c * heightOf(to) + y) * widthOf(to);
            float* out = channels[c] + y * to.geometry.pitch;
            for (std::size_t x = 0; x < widthOf(to); ++x) out[x * kLanes] = in[x];
        }
    });
}

void writePlanar(const PlaneList& from, float* planar, WorkerPool& pool) {
    const std::vector<float*> channels = from.channels();
    pool.parallelFor(heightOf(from), [&](std::size_t y, std::size_t) {
        for (std::size_t c = 0; c < channels.size(); ++c) {
            const float* in = channels[c] + y * from.geometry.pitch;
            float* out = planar + (c * heightOf(from) + y) * widthOf(from);
            for (std::size_t x = 0; x < widthOf(from); ++x) out[x] = in[x * kLanes];
        }
    });
}

}  // namespace quillmere::neural
