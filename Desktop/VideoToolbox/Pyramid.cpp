#include "Desktop/VideoToolbox/Pyramid.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/Pyramid.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

#include "Desktop/VideoToolbox/RowVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

using namespace row_vectors;

void SmoothRow(const std::uint8_t* row, std::ptrdiff_t stride, int width, std::uint8_t* to) {
    const auto column = [&](int x) {
        const auto middle = levels(row + x);
        return hn::Add(hn::Add(levels(row + x - stride), levels(row + x + stride)),
                       hn::Add(middle, middle));
    };
    const auto round = hn::Set(D16(), 8);
    for (int x = 0; x < width; x += lanes()) {
        const auto middle = column(x);
        const auto sum = hn::Add(hn::Add(column(x - 1), column(x + 1)), hn::Add(middle, middle));
        storeLevels(hn::ShiftRight<4>(hn::Add(sum, round)), to + x);
    }
}

void HalveRow(const std::uint8_t* upper, const std::uint8_t* lower, int width, std::uint8_t* to) {
    const auto round = hn::Set(D16(), 2);
    for (int x = 0; x < width; x += lanes()) {
        const auto sum = sumsOfFour(upper + 2 * x, lower + 2 * x);
        storeLevels(hn::ShiftRight<2>(hn::Add(sum, round)), to + x);
    }
}

}  // namespace
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::scaler {
namespace {

HWY_EXPORT(SmoothRow);
HWY_EXPORT(HalveRow);

PixelSize halfOf(PixelSize size) { return {(size.width + 1) / 2, (size.height + 1) / 2}; }

void halve(const PaddedPlane<std::uint8_t>& from, RowBand band, PaddedPlane<std::uint8_t>& to) {
    for (int y = band.first; y < band.end; ++y) {
        HWY_DYNAMIC_DISPATCH(HalveRow)
        (from.row(2 * y), from.row(2 * y + 1), to.size().width, to.row(y));
    }
    to.extendEdges(band.first, band.end);
}

}  // namespace

Pyramid::Pyramid(PixelSize size)
    : full(size, kBorder), half(halfOf(size), kBorder), quarter(halfOf(half.size()), kBorder) {}

void Pyramid::build(const PaddedPlane<std::uint8_t>& luma, RowBand band) {
    for (int y = band.first; y < band.end; ++y) {
        HWY_DYNAMIC_DISPATCH(SmoothRow)
        (luma.row(y), luma.stride(), luma.size().width, full.row(y));
    }
    full.extendEdges(band.first, band.end);
    halve(full, {band.first / 2, (band.end + 1) / 2}, half);
    halve(half, {band.first / 4, (band.end + 3) / 4}, quarter);
}

}  // namespace quillmere::scaler
#endif
