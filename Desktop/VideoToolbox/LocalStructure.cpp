#include "Desktop/VideoToolbox/LocalStructure.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/LocalStructure.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

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

/// `sums`: three rows of products as above, weighed from top to bottom. Up to a vector more than
/// `width` is read and written.
void ClassifyRow(const std::int32_t* sums, int width, int pitch, std::uint8_t* classes) {
    using S = LocalStructure;
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> d32;
    const hn::Rebind<std::uint8_t, decltype(d)> d8;
    const auto set = [&](float value) { return hn::Set(d, value); };
    const auto weigh = [&](const std::int32_t* at) {
        const auto middle = hn::LoadU(d32, at + 1);
        return hn::ConvertTo(d, hn::Add(hn::Add(hn::LoadU(d32, at), hn::LoadU(d32, at + 2)),
                                        hn::Add(middle, middle)));
    };
    const auto countsIf = [&](auto condition, int count) {
        return hn::IfThenElseZero(condition, set(static_cast<float>(count)));
    };
    for (int x = 0; x < width; x += static_cast<int>(hn::Lanes(d))) {
        const auto xx = weigh(sums + x), xy = weigh(sums + pitch + x);
        const auto yy = weigh(sums + 2 * pitch + x);
        const auto trace = hn::Add(xx, yy);  // of sixteen times the tensor
        auto result = set(0);                // exact: whole numbers
        for (const float bound : {60.0f, 300.0f, 1500.0f}) {
            result = hn::Add(
                result, countsIf(hn::Ge(trace, set(16 * bound)), S::kCoherences * S::kDirections));
        }
        // The doubled angle's cosine and sine.
        const auto cosine = hn::Sub(xx, yy), sine = hn::Add(xy, xy);
        const auto difference = hn::Add(hn::Mul(cosine, cosine), hn::Mul(sine, sine));
        const auto square = hn::Mul(trace, trace);
        for (const float bound : {0.3f, 0.7f}) {
            result = hn::Add(
                result,
                countsIf(hn::Ge(difference, hn::Mul(set(bound * bound), square)), S::kDirections));
        }
        const auto tangent = set(0.41421356f);  // of an eighth of a half turn
        const auto c = hn::Abs(cosine), s = hn::Abs(sine), zero = set(0);
        const auto right = hn::Ge(cosine, zero), down = hn::Gt(sine, zero);
        const auto choose = [&](auto mask, float yes, float no) {
            return hn::IfThenElse(mask, set(yes), set(no));
        };
        const auto between = hn::IfThenElse(right, choose(down, 1, 7), choose(down, 3, 5));
        const auto steep =
            hn::IfThenElse(hn::Lt(c, hn::Mul(tangent, s)), choose(down, 2, 6), between);
        const auto direction =
            hn::IfThenElse(hn::Le(s, hn::Mul(tangent, c)), choose(right, 0, 4), steep);
        result = hn::Add(result, direction);
        hn::StoreU(hn::DemoteTo(d8, hn::ConvertTo(d32, result)), d8, classes + x);
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

namespace {

constexpr int kVectorSlack = 64;

}  // namespace

// Three rows' products, three sums each, and the weighed ones.
StructureClassifier::StructureClassifier(int width)
    : pitch_(width + 2),
      rows_(static_cast<std::size_t>(pitch_) * 3 * 4 + kVectorSlack),
      row_(static_cast<std::size_t>(width) + kVectorSlack) {}

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
        HWY_DYNAMIC_DISPATCH(ClassifyRow)(weighed, width, pitch_, row_.data());
        std::copy_n(row_.data(), width, classes);
    }
}

}  // namespace quillmere::scaler
#endif
