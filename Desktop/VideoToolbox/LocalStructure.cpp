#include "Desktop/VideoToolbox/LocalStructure.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/LocalStructure.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

// Plain loops: the compiler turns them into vectors of each target.

/// The products of one row's differences: `to` holds gx * gx, gx * gy and gy * gy in rows of
/// `pitch`, from the pixel left of the first one on.
void MultiplyDifferences(const std::uint8_t* row, std::ptrdiff_t stride, int width, int pitch,
                         std::int32_t* HWY_RESTRICT to) {
    for (int x = -1; x <= width; ++x) {
        const int gx = row[x + 1] - row[x - 1];
        const int gy = row[x + stride] - row[x - stride];
        to[x + 1] = gx * gx;
        to[pitch + x + 1] = gx * gy;
        to[2 * pitch + x + 1] = gy * gy;
    }
}

void WeighRows(const std::int32_t* HWY_RESTRICT above, const std::int32_t* HWY_RESTRICT row,
               const std::int32_t* HWY_RESTRICT below, int count, std::int32_t* HWY_RESTRICT to) {
    for (int x = 0; x < count; ++x) to[x] = above[x] + 2 * row[x] + below[x];
}

/// `sums`: three rows of products as above, weighed from top to bottom.
void ClassifyRow(const std::int32_t* HWY_RESTRICT sums, int width, int pitch,
                 std::uint8_t* HWY_RESTRICT classes) {
    const auto weigh = [](const std::int32_t* at) {
        return static_cast<float>(at[0] + 2 * at[1] + at[2]);
    };
    for (int x = 0; x < width; ++x) {
        const float xx = weigh(sums + x);
        const float xy = weigh(sums + pitch + x);
        const float yy = weigh(sums + 2 * pitch + x);
        const float trace = xx + yy;  // of sixteen times the tensor
        const float along = xx - yy, across = 2 * xy;  // the doubled angle's cosine and sine
        const int strength = (trace >= 16 * 60.0f) + (trace >= 16 * 300.0f) +
                             (trace >= 16 * 1500.0f);
        const float difference = along * along + across * across;
        const int coherence = (difference >= 0.09f * (trace * trace)) +
                              (difference >= 0.49f * (trace * trace));
        constexpr float tangent = 0.41421356f;  // of an eighth of a half turn
        const float c = along < 0 ? -along : along, s = across < 0 ? -across : across;
        const int alongX = along > 0 ? 0 : 4;
        const int diagonal = across > 0 ? 2 : 6;
        const int right = across > 0 ? 1 : 7, left = across > 0 ? 3 : 5;
        const int between = along > 0 ? right : left;
        const int steep = c < tangent * s ? diagonal : between;
        const int direction = s < tangent * c ? alongX : steep;
        classes[x] = static_cast<std::uint8_t>(
            (strength * LocalStructure::kCoherences + coherence) * LocalStructure::kDirections +
            direction);
    }
}

}  // namespace
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::scaler {

HWY_EXPORT(MultiplyDifferences);
HWY_EXPORT(WeighRows);
HWY_EXPORT(ClassifyRow);

// Three rows' products, three sums each, and the weighed ones.
StructureClassifier::StructureClassifier(int width)
    : pitch_(width + 2), rows_(static_cast<std::size_t>(pitch_) * 3 * 4) {}

void StructureClassifier::classify(const PaddedPlane<std::uint8_t>& luma, RowBand band,
                                   std::uint8_t* classes) {
    const int width = luma.size().width;
    const auto products = [&](int y) { return rows_.data() + (y + 3) % 3 * 3 * pitch_; };
    const auto multiply = [&](int y) {
        HWY_DYNAMIC_DISPATCH(MultiplyDifferences)
        (luma.row(y), luma.stride(), width, pitch_, products(y));
    };
    std::int32_t* weighed = rows_.data() + 9 * pitch_;
    multiply(band.first - 1);
    multiply(band.first);
    for (int y = band.first; y < band.end; ++y, classes += width) {
        multiply(y + 1);
        HWY_DYNAMIC_DISPATCH(WeighRows)
        (products(y - 1), products(y), products(y + 1), 3 * pitch_, weighed);
        HWY_DYNAMIC_DISPATCH(ClassifyRow)(weighed, width, pitch_, classes);
    }
}

}  // namespace quillmere::scaler
#endif
