// Where pictures become planes and planes become pictures.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Base/WorkerPool.h"
#include "Neural/Kernels/Convolution.h"
#include "Neural/Kernels/Plane.h"

namespace quillmere::neural {

/// 8-bit RGBA rows of `to`'s size into three channels: red, green and blue times `unit`.
void readPixels(const std::uint8_t* pixels, std::size_t bytesPerRow, float unit,
                const PlaneList& to, WorkerPool& pool);

/// `rows` of three channels into an RGBA image of their size: divided by `unit`, clamped to 0..255,
/// rounded half away from zero; what is no number becomes 0. Alpha becomes 255.
void writePixels(const PlaneList& from, float unit, RowRange rows, std::uint8_t* pixels,
                 std::size_t bytesPerRow, WorkerPool& pool);

/// Channels one after the other, each rows of width floats without gaps.
void readPlanar(const float* planar, const PlaneList& to, WorkerPool& pool);
void writePlanar(const PlaneList& from, RowRange rows, float* planar, WorkerPool& pool);

}  // namespace quillmere::neural
