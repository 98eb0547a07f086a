#include "Desktop/VideoToolbox/FrameScaler.h"

#include <utility>

#include "Base/Invariant.h"
#include "Desktop/VideoToolbox/BackProjection.h"
#include "Desktop/VideoToolbox/BlockSearch.h"
#include "Desktop/VideoToolbox/ClassedDoubling.h"
#include "Desktop/VideoToolbox/LanczosDoubling.h"
#include "Desktop/VideoToolbox/MotionCompensation.h"
#include "Desktop/VideoToolbox/SubpixelMotion.h"
#include "Desktop/VideoToolbox/Trust.h"

namespace quillmere::scaler {
namespace {

constexpr int kLumaBorder = 8;    // of the source: what the filters read
constexpr int kVectorSlack = 64;  // what kernels may write beyond a row

PixelSize doubled(PixelSize size) { return {2 * size.width, 2 * size.height}; }

PixelSize colourOf(PixelSize size) { return {(size.width + 1) / 2, (size.height + 1) / 2}; }

void copyRows(const PaddedPlane<std::uint8_t>& from, RowBand band, TargetPlane to) {
    for (int y = band.first; y < band.end; ++y) {
        std::copy_n(from.row(y), to.size.width, to.row(y));
    }
}

void loadRows(SourcePlane from, PaddedPlane<std::uint8_t>& to) {
    for (int y = 0; y < from.size.height; ++y) {
        std::copy_n(from.row(y), from.size.width, to.row(y));
    }
    to.extendEdges();
}

}  // namespace

struct FrameScaler::Buffers {
    /// What a thread needs for itself.
    struct Scratch {
        explicit Scratch(int width)
            : classifier(width),
              classes(static_cast<std::size_t>(width) * kBandRows),
              upper(2 * static_cast<std::size_t>(width) + kVectorSlack),
              lower(upper.size()),
              shares(upper.size()) {}

        StructureClassifier classifier;
        std::vector<std::uint8_t> classes;
        std::vector<std::uint8_t> upper;
        std::vector<std::uint8_t> lower;
        std::vector<std::uint8_t> shares;
        std::vector<std::int16_t> sums;
        DifferenceHistogram differences;
    };

    Buffers(PixelSize source, std::size_t threads)
        : luma(source, kLumaBorder),
          wideLuma(source, kLumaBorder),
          frame(source),
          before(source),
          search(source),
          motion(source),
          mismatch(source, kTrustReach),
          residual(source, 1),
          enlarged(doubled(source), kWarpBorder),
          enlargedBefore(doubled(source), kWarpBorder),
          colour(colourOf(source), kDoublingBorder),
          doubledColour(doubled(colourOf(source)), kDoublingBorder),
          scratch(threads, Scratch(source.width)) {}

    PaddedPlane<std::uint8_t> luma;
    PaddedPlane<std::int16_t> wideLuma;  // the same levels, as the filters multiply them
    Pyramid frame, before;
    BlockSearch search;
    MotionField motion;
    Mismatch mismatch;
    Residual residual;
    PaddedPlane<std::uint8_t> enlarged, enlargedBefore;
    PaddedPlane<std::uint8_t> colour, doubledColour;
    std::vector<Scratch> scratch;
};

FrameScaler::FrameScaler(PixelSize source, int factor, WorkerPool& pool)
    : size_(source), factor_(factor), pool_(pool) {
    if (source.width < 1 || source.height < 1 || (factor != 2 && factor != 4)) invariantBroken();
    buffers_ = std::make_unique<Buffers>(source, pool.threadCount());
}

FrameScaler::~FrameScaler() = default;

void FrameScaler::forget() { hasHistory_ = false; }

void FrameScaler::scale(const SourceFrame& source, const TargetFrame& target) {
    const PixelSize targetSize{factor_ * size_.width, factor_ * size_.height};
    if (source.luma.size != size_ || target.luma.size != targetSize) invariantBroken();
    Buffers& b = *buffers_;
    loadLuma(source.luma);
    if (hasHistory_) carry();
    enlarge();
    agree();
    if (factor_ == 2) {
        forBands(targetSize.height, pool_,
                 [&](RowBand band, std::size_t) { copyRows(b.enlarged, band, target.luma); });
    } else {
        lanczosDouble(b.enlarged, Siting::centre, target.luma, pool_);
    }
    scaleColour(source.blue, target.blue);
    scaleColour(source.red, target.red);
    std::swap(b.frame, b.before);
    std::swap(b.enlarged, b.enlargedBefore);
    hasHistory_ = true;
}

void FrameScaler::loadLuma(SourcePlane luma) {
    Buffers& b = *buffers_;
    loadRows(luma, b.luma);
    for (int y = 0; y < size_.height; ++y) {
        std::copy_n(luma.row(y), size_.width, b.wideLuma.row(y));
    }
    b.wideLuma.extendEdges();
    b.frame.build(b.luma, pool_);
}

// Fills `enlarged` with the last result, moved to where this frame has it, and measures the noise.
void FrameScaler::carry() {
    Buffers& b = *buffers_;
    b.search.searchCoarsely(b.frame, b.before, pool_);
    for (auto& scratch : b.scratch) scratch.differences.clear();
    forBands(size_.height, pool_, [&](RowBand band, std::size_t worker) {
        const int blockRow = band.first / MotionField::kBlock;
        for (int block = 0; block < b.motion.blocksWide; ++block) {
            const Step step = b.search.find(b.frame, b.before, block, blockRow);
            b.motion.at(block, blockRow) = refineMotion(b.frame, b.before, block, blockRow, step);
        }
        warpBlocks(b.enlargedBefore, b.motion, blockRow, b.enlarged);
        compareCarried(b.luma, b.enlarged, band, b.mismatch, b.scratch[worker].differences);
    });
    b.mismatch.extendEdges();
    DifferenceHistogram within, between;
    addNoiseResponse(b.luma, within);
    for (const auto& scratch : b.scratch) between.add(scratch.differences);
    noise_ = noiseLevel(within, between);
}

// Enlarges the frame by itself and mixes the result into what was carried, where there is such.
void FrameScaler::enlarge() {
    Buffers& b = *buffers_;
    if (!hasHistory_) noise_ = 0;
    const int width = 2 * size_.width;
    const DoublingFilters& filters = DoublingFilters::trained();
    forBands(size_.height, pool_, [&](RowBand band, std::size_t worker) {
        Buffers::Scratch& s = b.scratch[worker];
        s.classifier.classify(b.luma, band, s.classes.data());
        const std::uint8_t* classes = s.classes.data();
        for (int y = band.first; y < band.end; ++y, classes += size_.width) {
            doubleRow(b.wideLuma, y, classes, filters, s.upper.data(), s.lower.data());
            if (hasHistory_) {
                trustRow(b.mismatch, y, noise_, s.sums, s.shares.data());
                mixRow(s.upper.data(), s.shares.data(), width, b.enlarged.row(2 * y));
                mixRow(s.lower.data(), s.shares.data(), width, b.enlarged.row(2 * y + 1));
            } else {
                std::copy_n(s.upper.data(), width, b.enlarged.row(2 * y));
                std::copy_n(s.lower.data(), width, b.enlarged.row(2 * y + 1));
            }
        }
        findResidual(b.luma, b.enlarged, band, noise_, b.residual);
    });
}

void FrameScaler::agree() {
    Buffers& b = *buffers_;
    b.residual.extendEdges();
    forBands(size_.height, pool_,
             [&](RowBand band, std::size_t) { addResidual(b.residual, band, b.enlarged); });
    b.enlarged.extendEdges();
}

void FrameScaler::scaleColour(SourcePlane from, TargetPlane to) {
    Buffers& b = *buffers_;
    loadRows(from, b.colour);
    if (factor_ == 2) return lanczosDouble(b.colour, Siting::left, to, pool_);
    const TargetPlane doubled{b.doubledColour.row(0), b.doubledColour.stride(),
                              b.doubledColour.size()};
    lanczosDouble(b.colour, Siting::left, doubled, pool_);
    b.doubledColour.extendEdges();
    lanczosDouble(b.doubledColour, Siting::left, to, pool_);
}

}  // namespace quillmere::scaler
