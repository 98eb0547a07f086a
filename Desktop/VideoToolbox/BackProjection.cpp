#include "Desktop/VideoToolbox/BackProjection.h"

#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/BackProjection.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

#include "Desktop/VideoToolbox/RowVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

using namespace row_vectors;

// Of a residual, the part |residual| * slope - most is taken over, within the bounds, in 1/16384.
// From `enough` on, that is all.
void ResidualRow(const std::uint8_t* source, const std::uint8_t* upper, const std::uint8_t* lower,
                 int width, std::int16_t slope, std::int16_t enough, std::int16_t leastPart,
                 std::int16_t mostPart, std::int16_t* residual) {
    const D16 d;
    const auto least = hn::Set(d, leastPart), most = hn::Set(d, mostPart);
    for (int x = 0; x < width; x += lanes()) {
        const auto missing =
            hn::Sub(hn::ShiftLeft<2>(levels(source + x)), sumsOfFour(upper + 2 * x, lower + 2 * x));
        const auto size = hn::Abs(missing);
        const auto grown = hn::Mul(hn::Min(size, hn::Set(d, enough)), hn::Set(d, slope));
        const auto part = hn::Max(hn::Min(hn::Sub(grown, most), most), least);
        const auto step = hn::MulFixedPoint15(hn::Add(size, size), part);
        const auto sign = hn::ShiftRight<15>(missing);
        hn::StoreU(hn::Sub(hn::Xor(step, sign), sign), d, residual + x);
    }
}

// `near` and `far` are the residual's rows; sums are in sixty-fourths of a level.
void AddRow(const std::int16_t* near, const std::int16_t* far, int width, std::uint8_t* to) {
    const D16 d;
    const auto between = [&](int x) {
        const auto here = hn::LoadU(d, near + x);
        return hn::Add(hn::Add(here, hn::LoadU(d, far + x)), hn::Add(here, here));
    };
    const auto round = hn::Set(d, 32);
    for (int x = 0; x < width; x += lanes()) {
        const auto here = between(x);
        const auto most = hn::Add(hn::Add(here, round), hn::Add(here, here));
        const auto left = hn::ShiftRight<6>(hn::Add(most, between(x - 1)));
        const auto right = hn::ShiftRight<6>(hn::Add(most, between(x + 1)));
        const Pairs before = pairs(to + 2 * x);
        storePairs(hn::Add(before.even, left), hn::Add(before.odd, right), to + 2 * x);
    }
}

}  // namespace
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::scaler {

HWY_EXPORT(ResidualRow);
HWY_EXPORT(AddRow);

void findResidual(const PaddedPlane<std::uint8_t>& luma, const PaddedPlane<std::uint8_t>& enlarged,
                  RowBand band, float noise, Residual& residual) {
    constexpr float unit = 1 << 14, most = 0.8f * unit, least = 0.15f * most;
    // Less noise than this would need a steeper slope than 16 bits hold, and moves no level.
    const bool isNoisy = noise >= 0.25f;
    const float slope = isNoisy ? std::ceil(most / (4 * 2 * noise)) : 32767;
    const float enough = isNoisy ? std::ceil(4 * 4 * noise) : 1;
    for (int y = band.first; y < band.end; ++y) {
        HWY_DYNAMIC_DISPATCH(ResidualRow)
        (luma.row(y), enlarged.row(2 * y), enlarged.row(2 * y + 1), luma.size().width,
         static_cast<std::int16_t>(slope), static_cast<std::int16_t>(enough),
         static_cast<std::int16_t>(least), static_cast<std::int16_t>(most), residual.row(y));
    }
}

void addResidual(const Residual& residual, RowBand band, PaddedPlane<std::uint8_t>& enlarged) {
    const int width = residual.size().width;
    for (int y = band.first; y < band.end; ++y) {
        HWY_DYNAMIC_DISPATCH(AddRow)
        (residual.row(y), residual.row(y - 1), width, enlarged.row(2 * y));
        HWY_DYNAMIC_DISPATCH(AddRow)
        (residual.row(y), residual.row(y + 1), width, enlarged.row(2 * y + 1));
    }
}

}  // namespace quillmere::scaler
#endif
