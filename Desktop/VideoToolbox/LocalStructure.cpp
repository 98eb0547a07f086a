#include "Desktop/VideoToolbox/LocalStructure.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/LocalStructure.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

#include "Desktop/VideoToolbox/RowVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

using namespace row_vectors;

using D32 = hn::RepartitionToWide<D16>;

/// The sums, over four rows from `row` on, of the products of neighbours' differences: `to` holds
/// those of gx * gx, gx * gy and gy * gy in rows of `pitch`, two pixels a sum.
void MultiplyDifferences(const std::uint8_t* row, std::ptrdiff_t stride, int width, int pitch,
                         std::int32_t* to) {
    for (int x = 0; x < width; x += lanes()) {
        auto xx = hn::Zero(D32()), xy = xx, yy = xx, xxHigh = xx, xyHigh = xx, yyHigh = xx;
        for (int y = 0; y < 4; ++y) {
            const std::uint8_t* at = row + y * stride + x;
            const auto gx = hn::Sub(levels(at + 1), levels(at - 1));
            const auto gy = hn::Sub(levels(at + stride), levels(at - stride));
            xx = hn::ReorderWidenMulAccumulate(D32(), gx, gx, xx, xxHigh);
            xy = hn::ReorderWidenMulAccumulate(D32(), gx, gy, xy, xyHigh);
            yy = hn::ReorderWidenMulAccumulate(D32(), gy, gy, yy, yyHigh);
        }
        std::int32_t* sums = to + x / 2;
        hn::StoreU(hn::RearrangeToOddPlusEven(xx, xxHigh), D32(), sums);
        hn::StoreU(hn::RearrangeToOddPlusEven(xy, xyHigh), D32(), sums + pitch);
        hn::StoreU(hn::RearrangeToOddPlusEven(yy, yyHigh), D32(), sums + 2 * pitch);
    }
}

/// `sums` as above, from the pixel left of the first block on. Up to a vector more than `blocks`
/// is read and written.
void ClassifyRow(const std::int32_t* sums, int blocks, int pitch, std::uint8_t* classes) {
    using S = LocalStructure;
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> d32;
    const hn::Rebind<std::uint8_t, decltype(d)> d8;
    const auto set = [&](float value) { return hn::Set(d, value); };
    const auto sum = [&](const std::int32_t* at) {
        return hn::ConvertTo(d, hn::Add(hn::LoadU(d32, at), hn::LoadU(d32, at + 1)));
    };
    const auto countsIf = [&](auto condition, int count) {
        return hn::IfThenElseZero(condition, set(static_cast<float>(count)));
    };
    for (int x = 0; x < blocks; x += static_cast<int>(hn::Lanes(d))) {
        const auto xx = sum(sums + x), xy = sum(sums + pitch + x);
        const auto yy = sum(sums + 2 * pitch + x);
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
HWY_EXPORT(ClassifyRow);

namespace {

constexpr int kVectorSlack = 64;

}  // namespace

StructureClassifier::StructureClassifier(int width)
    : blocks_((width + 1) / 2),
      pitch_(blocks_ + kVectorSlack),
      sums_(3 * static_cast<std::size_t>(pitch_)),
      classes_(static_cast<std::size_t>(pitch_)) {}

const std::uint8_t* StructureClassifier::classify(const PaddedPlane<std::uint8_t>& luma, int y) {
    HWY_DYNAMIC_DISPATCH(MultiplyDifferences)
    (luma.row(y - 1) - 1, luma.stride(), 2 * (blocks_ + 1), pitch_, sums_.data());
    HWY_DYNAMIC_DISPATCH(ClassifyRow)(sums_.data(), blocks_, pitch_, classes_.data());
    return classes_.data();
}

}  // namespace quillmere::scaler
#endif
