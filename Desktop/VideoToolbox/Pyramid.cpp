#include "Desktop/VideoToolbox/Pyramid.h"

#include "Desktop/VideoToolbox/RowBands.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/Pyramid.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

// Plain loops: the compiler turns them into vectors of each target.
void SmoothRow(const std::uint8_t* HWY_RESTRICT above, const std::uint8_t* HWY_RESTRICT row,
               const std::uint8_t* HWY_RESTRICT below, int width, std::uint16_t* HWY_RESTRICT sums,
               std::uint8_t* HWY_RESTRICT to) {
    for (int x = 0; x < width + 2; ++x) {
        sums[x] = static_cast<std::uint16_t>(above[x - 1] + 2 * row[x - 1] + below[x - 1]);
    }
    for (int x = 0; x < width; ++x) {
        const auto sum = static_cast<std::uint16_t>(sums[x] + 2 * sums[x + 1] + sums[x + 2] + 8);
        to[x] = static_cast<std::uint8_t>(sum >> 4);
    }
}

void HalveRow(const std::uint8_t* HWY_RESTRICT upper, const std::uint8_t* HWY_RESTRICT lower,
              int width, std::uint8_t* HWY_RESTRICT to) {
    for (int x = 0; x < width; ++x) {
        const int sum = upper[2 * x] + upper[2 * x + 1] + lower[2 * x] + lower[2 * x + 1];
        to[x] = static_cast<std::uint8_t>((sum + 2) >> 2);
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

void halve(const PaddedPlane<std::uint8_t>& from, PaddedPlane<std::uint8_t>& to, WorkerPool& pool) {
    forBands(to.size().height, pool, [&](RowBand band, std::size_t) {
        for (int y = band.first; y < band.end; ++y) {
            HWY_DYNAMIC_DISPATCH(HalveRow)
            (from.row(2 * y), from.row(2 * y + 1), to.size().width, to.row(y));
        }
    });
    to.extendEdges();
}

}  // namespace

Pyramid::Pyramid(PixelSize size)
    : full(size, kBorder), half(halfOf(size), kBorder), quarter(halfOf(half.size()), kBorder) {}

void Pyramid::build(const PaddedPlane<std::uint8_t>& luma, WorkerPool& pool) {
    const int width = luma.size().width;
    forBands(luma.size().height, pool, [&](RowBand band, std::size_t) {
        std::vector<std::uint16_t> sums(static_cast<std::size_t>(width) + 2);
        for (int y = band.first; y < band.end; ++y) {
            HWY_DYNAMIC_DISPATCH(SmoothRow)
            (luma.row(y - 1), luma.row(y), luma.row(y + 1), width, sums.data(), full.row(y));
        }
    });
    full.extendEdges();
    halve(full, half, pool);
    halve(half, quarter, pool);
}

}  // namespace quillmere::scaler
#endif
