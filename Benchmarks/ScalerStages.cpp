#include "Benchmarks/ScalerStages.h"

#include <functional>

#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"
#include "Desktop/VideoToolbox/BackProjection.h"
#include "Desktop/VideoToolbox/BlockSearch.h"
#include "Desktop/VideoToolbox/ClassedDoubling.h"
#include "Desktop/VideoToolbox/LanczosDoubling.h"
#include "Desktop/VideoToolbox/MotionCompensation.h"
#include "Desktop/VideoToolbox/SubpixelMotion.h"
#include "Desktop/VideoToolbox/Trust.h"

namespace quillmere::benchmark {
namespace {

using namespace quillmere::scaler;

constexpr Rounds kRounds{9, 60, 8.0};

PaddedPlane<std::uint8_t> loaded(SourcePlane from, int border) {
    PaddedPlane<std::uint8_t> plane(from.size, border);
    for (int y = 0; y < from.size.height; ++y) {
        std::copy_n(from.row(y), from.size.width, plane.row(y));
    }
    plane.extendEdges();
    return plane;
}

}  // namespace

void measureScalerStages(const PlanarBuffer& before, const PlanarBuffer& frame, PixelSize size) {
    const auto luma = loaded(frame.source().luma, 8);
    const auto lumaBefore = loaded(before.source().luma, 8);
    const auto colour = loaded(frame.source().blue, kDoublingBorder);
    Pyramid pyramid(size), pyramidBefore(size);
    pyramidBefore.build(lumaBefore, {0, size.height});
    BlockSearch search(size);
    MotionField field(size);
    std::vector<Step> steps(field.vectors.size());
    const PixelSize large{2 * size.width, 2 * size.height};
    PaddedPlane<std::uint8_t> enlarged(large, kWarpBorder), enlargedBefore(large, kWarpBorder);
    PlanarBuffer target(large);
    Mismatch mismatch(size, kTrustReach);
    Residual residual(size, 1);
    StructureClassifier classifier(size.width);
    const RowBand all{0, size.height};
    const auto pixels = static_cast<std::size_t>(size.width) * size.height;
    std::vector<std::uint8_t> classes(pixels / 4 + 16), alone(4 * pixels + 16),
        shares(large.width + 64);
    std::vector<std::int16_t> sums;
    DifferenceHistogram histogram;

    const auto forBlocks = [&](const auto& body) {
        for (int y = 0; y < field.blocksHigh; ++y) {
            for (int x = 0; x < field.blocksWide; ++x) body(x, y, steps[y * field.blocksWide + x]);
        }
    };
    const auto rowOf = [&](int y) {
        return alone.data() + static_cast<std::size_t>(y) * large.width;
    };
    const auto classesOf = [&](int y) { return classes.data() + y / 2 * (size.width / 2); };
    struct Stage {
        const char* name;
        std::function<void()> work;
    };
    const Stage stages[] = {
        {"Smoothing and halving", [&] { pyramid.build(luma, all); }},
        {"Coarse search", [&] { search.searchCoarsely(pyramid, pyramidBefore, all); }},
        {"Block search",
         [&] {
             forBlocks([&](int x, int y, Step& step) {
                 step = search.find(pyramid, pyramidBefore, x, y);
             });
         }},
        {"Motion within a pixel",
         [&] {
             forBlocks([&](int x, int y, Step& step) {
                 field.at(x, y) = refineMotion(pyramid, pyramidBefore, x, y, step);
             });
         }},
        {"Motion compensation",
         [&] {
             for (int y = 0; y < field.blocksHigh; ++y) {
                 warpBlocks(enlargedBefore, field, y, enlarged);
             }
         }},
        {"Local structure",
         [&] {
             for (int y = 0; y < size.height; y += 2) {
                 std::copy_n(classifier.classify(luma, y), size.width / 2, classesOf(y));
             }
         }},
        {"Filters",
         [&] {
             for (int y = 0; y < size.height; y += 2) {
                 doubleRows(luma, y, classesOf(y), DoublingFilters::trained(), rowOf(2 * y),
                            large.width);
             }
         }},
        {"Comparing", [&] { compareCarried(luma, enlarged, all, mismatch, histogram); }},
        {"Trust and mixing",
         [&] {
             mismatch.extendEdges();
             for (int y = 0; y < size.height; ++y) {
                 trustRow(mismatch, y, 1, sums, shares.data());
                 mixRow(rowOf(2 * y), shares.data(), large.width, enlarged.row(2 * y));
                 mixRow(rowOf(2 * y + 1), shares.data(), large.width, enlarged.row(2 * y + 1));
             }
         }},
        {"Residual", [&] { findResidual(luma, enlarged, all, 1, residual); }},
        {"Back-projection",
         [&] {
             residual.extendEdges();
             addResidual(residual, all, enlarged);
             enlarged.extendEdges();
         }},
        {"Colour, both planes",
         [&] {
             const RowBand rows{0, colour.size().height};
             lanczosDouble(colour, Siting::left, rows, target.target().blue);
             lanczosDouble(colour, Siting::left, rows, target.target().red);
         }},
    };
    for (int y = 0; y < large.height; ++y) {
        for (int x = 0; x < large.width; ++x)
            enlargedBefore.row(y)[x] = lumaBefore.row(y / 2)[x / 2];
    }
    enlargedBefore.extendEdges();

    std::vector<std::function<double()>> contestants;
    for (const Stage& stage : stages) {
        contestants.push_back([&stage] { return processorSecondsOf(stage.work); });
    }
    // Forwards only: each works on what the one before made.
    for (const Stage& stage : stages) stage.work();
    const std::vector<Spread> times = takeTurns(kRounds, contestants);
    Table table("The stages of a frame by 2, one thread", {"Stage", "Processor time, ms"});
    for (std::size_t n = 0; n < times.size(); ++n) {
        table.row({stages[n].name, figure(times[n], kMilliseconds)});
    }
}

}  // namespace quillmere::benchmark
