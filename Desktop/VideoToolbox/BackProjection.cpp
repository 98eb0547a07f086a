#include "Desktop/VideoToolbox/BackProjection.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/BackProjection.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

// Plain loops: the compiler turns them into vectors of each target.

constexpr float kStep = 0.8f;
constexpr float kNoiseShare = 0.15f;

// The part that is taken over is |residual| * perUnit - 1, within its bounds.
void ResidualRow(const std::uint8_t* HWY_RESTRICT source, const std::uint8_t* HWY_RESTRICT upper,
                 const std::uint8_t* HWY_RESTRICT lower, int width, float perUnit,
                 std::int16_t* HWY_RESTRICT residual) {
    for (int x = 0; x < width; ++x) {
        const auto sum = static_cast<std::int16_t>(upper[2 * x] + upper[2 * x + 1] + lower[2 * x] +
                                                   lower[2 * x + 1]);
        const auto missing = static_cast<float>(4 * source[x] - sum);
        const float size = missing < 0 ? -missing : missing;
        float part = size * perUnit - 1;
        part = part < kNoiseShare ? kNoiseShare : part;
        part = part > 1 ? 1 : part;
        const float step = missing * (part * kStep);
        residual[x] = static_cast<std::int16_t>(static_cast<int>(step + (step < 0 ? -0.5f : 0.5f)));
    }
}

// `near` and `far` are the residual's rows; sums are in sixty-fourths of a level.
void AddRow(const std::int16_t* HWY_RESTRICT near, const std::int16_t* HWY_RESTRICT far, int width,
            std::uint8_t* HWY_RESTRICT to) {
    const auto corrected = [](std::uint8_t level, int sum) {
        const int value = level + ((sum + 32) >> 6);
        return static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
    };
    for (int x = 0; x < width; ++x) {
        const int before = 3 * near[x - 1] + far[x - 1];
        const int here = 3 * near[x] + far[x];
        const int after = 3 * near[x + 1] + far[x + 1];
        to[2 * x] = corrected(to[2 * x], 3 * here + before);
        to[2 * x + 1] = corrected(to[2 * x + 1], 3 * here + after);
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
    // A noise of 0 makes everything count in full.
    const float perUnit = 1 / (4 * 2 * noise + 1e-6f);
    for (int y = band.first; y < band.end; ++y) {
        HWY_DYNAMIC_DISPATCH(ResidualRow)
        (luma.row(y), enlarged.row(2 * y), enlarged.row(2 * y + 1), luma.size().width, perUnit,
         residual.row(y));
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
