#include "Neural/Kernels/Border.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Neural/Kernels/Border.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::neural::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// RGBA into the first three lanes of a plane's pixels; the others become 0.
void ReadRow(const std::uint8_t* HWY_RESTRICT pixels, float unit, std::size_t count,
             float* HWY_RESTRICT to) {
#if HWY_TARGET == HWY_SCALAR
    for (std::size_t x = 0; x < count; ++x) {
        for (int lane = 0; lane < kLanes; ++lane) {
            to[x * kLanes + lane] = lane < 3 ? static_cast<float>(pixels[x * 4 + lane]) * unit : 0;
        }
    }
#else
    const hn::FixedTag<float, 4> d;
    const hn::Rebind<std::int32_t, decltype(d)> di;
    const hn::Rebind<std::uint8_t, decltype(d)> d8;
    HWY_ALIGN const float units[4] = {unit, unit, unit, 0};
    const auto scale = hn::Load(d, units);
    for (std::size_t x = 0; x < count; ++x, to += kLanes) {
        const auto whole = hn::PromoteTo(di, hn::LoadU(d8, pixels + x * 4));
        hn::StoreU(hn::Mul(hn::ConvertTo(d, whole), scale), d, to);
        hn::StoreU(hn::Zero(d), d, to + 4);
    }
#endif
}

// A value in 0..255 to the nearest whole number, halves up. Adding a half before would carry
// 0.49999997 over; the comparisons are false for what is no number.
std::uint8_t toByte(float value) {
    if (!(value > 0)) return 0;
    if (value > 255) return 255;
    const auto whole = static_cast<int>(value);
    return static_cast<std::uint8_t>(value - static_cast<float>(whole) >= 0.5f ? whole + 1 : whole);
}

// The first three lanes of a plane's pixels into RGBA, as `toByte` does it.
void WriteRow(const float* HWY_RESTRICT from, float scale, std::size_t count,
              std::uint8_t* HWY_RESTRICT pixels) {
#if HWY_TARGET == HWY_SCALAR
    for (std::size_t x = 0; x < count; ++x) {
        for (int c = 0; c < 3; ++c) pixels[x * 4 + c] = toByte(from[x * kLanes + c] * scale);
        pixels[x * 4 + 3] = 255;
    }
#else
    (void)toByte;
    const hn::FixedTag<float, 4> d;
    const hn::Rebind<std::int32_t, decltype(d)> di;
    const hn::Rebind<std::uint8_t, decltype(d)> d8;
    const auto factor = hn::Set(d, scale);
    const auto zero = hn::Zero(d), half = hn::Set(d, 0.5f), most = hn::Set(d, 255.0f);
    HWY_ALIGN const std::int32_t alphas[4] = {0, 0, 0, 255};
    const auto alpha = hn::Load(di, alphas);
    for (std::size_t x = 0; x < count; ++x) {
        const auto value = hn::Mul(hn::LoadU(d, from + x * kLanes), factor);
        const auto clamped = hn::Min(hn::IfThenElseZero(hn::Gt(value, zero), value), most);
        const auto whole = hn::ConvertTo(di, clamped);
        const auto rest = hn::Sub(clamped, hn::ConvertTo(d, whole));
        const auto carry =
            hn::IfThenElseZero(hn::RebindMask(di, hn::Ge(rest, half)), hn::Set(di, 1));
        // The fourth lane may hold anything from 0 to 255: with the alpha it saturates.
        hn::StoreU(hn::DemoteTo(d8, hn::Add(hn::Add(whole, carry), alpha)), d8, pixels + x * 4);
    }
#endif
}

}  // namespace
}  // namespace quillmere::neural::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::neural {
namespace {

HWY_EXPORT(ReadRow);
HWY_EXPORT(WriteRow);

std::size_t widthOf(const PlaneList& list) {
    return static_cast<std::size_t>(list.geometry.size.width);
}
std::size_t heightOf(const PlaneList& list) {
    return static_cast<std::size_t>(list.geometry.size.height);
}

}  // namespace

void readPixels(const std::uint8_t* pixels, std::size_t bytesPerRow, float unit,
                const PlaneList& to, WorkerPool& pool) {
    pool.parallelFor(heightOf(to), [&](std::size_t y, std::size_t) {
        HWY_DYNAMIC_DISPATCH(ReadRow)
        (pixels + y * bytesPerRow, unit, widthOf(to),
         to.planes.front().pixels + y * to.geometry.pitch);
    });
}

void writePixels(const PlaneList& from, float unit, RowRange rows, std::uint8_t* pixels,
                 std::size_t bytesPerRow, WorkerPool& pool) {
    pool.parallelFor(static_cast<std::size_t>(rows.end - rows.first), [&](std::size_t n,
                                                                          std::size_t) {
        const std::ptrdiff_t y = rows.first + static_cast<std::ptrdiff_t>(n);
        const auto pitch = static_cast<std::ptrdiff_t>(from.geometry.pitch);
        HWY_DYNAMIC_DISPATCH(WriteRow)
        (from.planes.front().pixels + y * pitch, 1 / unit, widthOf(from), pixels + y * bytesPerRow);
    });
}

void readPlanar(const float* planar, const PlaneList& to, WorkerPool& pool) {
    const std::vector<float*> channels = to.channels();
    pool.parallelFor(heightOf(to), [&](std::size_t y, std::size_t) {
        const std::size_t row = y * to.geometry.pitch;
        for (const Plane& plane : to.planes) {
            std::fill_n(plane.pixels + row, widthOf(to) * kLanes, 0.0f);
        }
        for (std::size_t c = 0; c < channels.size(); ++c) {
            const float* in = planar + (c * heightOf(to) + y) * widthOf(to);
            float* out = channels[c] + row;
            for (std::size_t x = 0; x < widthOf(to); ++x) out[x * kLanes] = in[x];
        }
    });
}

void writePlanar(const PlaneList& from, RowRange rows, float* planar, WorkerPool& pool) {
    const std::vector<float*> channels = from.channels();
    pool.parallelFor(static_cast<std::size_t>(rows.end - rows.first),
                     [&](std::size_t n, std::size_t) {
                         const std::ptrdiff_t y = rows.first + static_cast<std::ptrdiff_t>(n);
                         const auto pitch = static_cast<std::ptrdiff_t>(from.geometry.pitch);
                         for (std::size_t c = 0; c < channels.size(); ++c) {
                             const float* in = channels[c] + y * pitch;
                             float* out = planar + (c * heightOf(from) + y) * widthOf(from);
                             for (std::size_t x = 0; x < widthOf(from); ++x)
                                 out[x] = in[x * kLanes];
                         }
                     });
}

}  // namespace quillmere::neural
#endif
