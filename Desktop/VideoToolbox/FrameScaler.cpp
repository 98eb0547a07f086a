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

// The rows of a colour plane that go with a band of brightness.
RowBand colourOf(RowBand band) { return {band.first / 2, (band.end + 1) / 2}; }

void load(SourcePlane from, RowBand band, PaddedPlane<std::uint8_t>& to) {
    for (int y = band.first; y < band.end; ++y) {
        std::copy_n(from.row(y), from.size.width, to.row(y));
    }
    to.extendEdges(band.first, band.end);
}

void lanczosDouble(const PaddedPlane<std::uint8_t>& from, Siting siting, RowBand band,
                   PaddedPlane<std::uint8_t>& to) {
    lanczosDouble(from, siting, band, {to.row(0), to.stride(), to.size()});
    to.extendEdges(2 * band.first, 2 * band.end);
}

}  // namespace

struct FrameScaler::Buffers {
    /// What a thread needs for itself.
    struct Scratch {
        explicit Scratch(int width)
            : classifier(width),
              pitch(2 * static_cast<std::size_t>(width) + kVectorSlack),
              rows(4 * pitch),
              shares(pitch) {}

        StructureClassifier classifier;
        std::size_t pitch;
        std::vector<std::uint8_t> rows;  // four enlarged ones
        std::vector<std::uint8_t> shares;
        std::vector<std::int16_t> sums;
        DifferenceHistogram within, between;
    };

    Buffers(PixelSize source, std::size_t threads)
        : luma(source, kLumaBorder),
          frame(source),
          before(source),
          search(source),
          motion(source),
          mismatch(source, kTrustReach),
          residual(source, 1),
          enlarged(doubled(source), kWarpBorder),
          enlargedBefore(doubled(source), kWarpBorder),
          blue(colourOf(source), kDoublingBorder),
          red(blue),
          doubledBlue(doubled(colourOf(source)), kDoublingBorder),
          doubledRed(doubledBlue),
          scratch(threads, Scratch(source.width)) {}

    PaddedPlane<std::uint8_t> luma;
    Pyramid frame, before;
    BlockSearch search;
    MotionField motion;
    Mismatch mismatch;
    Residual residual;
    PaddedPlane<std::uint8_t> enlarged, enlargedBefore;
    PaddedPlane<std::uint8_t> blue, red, doubledBlue, doubledRed;
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
    load(source);
    if (hasHistory_) carry();
    enlarge();
    agree(target);
    if (factor_ == 4) doubleAgain(target);
    std::swap(b.frame, b.before);
    std::swap(b.enlarged, b.enlargedBefore);
    hasHistory_ = true;
}

void FrameScaler::load(const SourceFrame& source) {
    Buffers& b = *buffers_;
    forBands(size_.height, pool_, [&](RowBand band, std::size_t) {
        scaler::load(source.luma, band, b.luma);
        scaler::load(source.blue, colourOf(band), b.blue);
        scaler::load(source.red, colourOf(band), b.red);
    });
    const auto search = [&](RowBand band, std::size_t) {
        b.frame.build(b.luma, band);
        if (hasHistory_) b.search.searchCoarsely(b.frame, b.before, band);
    };
    forBands(size_.height, pool_, search, BlockSearch::kCoarseRows);
}

// Fills `enlarged` with the last result, moved to where this frame has it, and measures the noise.
void FrameScaler::carry() {
    Buffers& b = *buffers_;
    for (auto& scratch : b.scratch) {
        scratch.within.clear();
        scratch.between.clear();
    }
    forBands(size_.height, pool_, [&](RowBand band, std::size_t worker) {
        const int blockRow = band.first / MotionField::kBlock;
        for (int block = 0; block < b.motion.blocksWide; ++block) {
            const Step step = b.search.find(b.frame, b.before, block, blockRow);
            b.motion.at(block, blockRow) = refineMotion(b.frame, b.before, block, blockRow, step);
        }
        warpBlocks(b.enlargedBefore, b.motion, blockRow, b.enlarged);
        compareCarried(b.luma, b.enlarged, band, b.mismatch, b.scratch[worker].between);
        b.mismatch.extendEdges(band.first, band.end);
        addNoiseResponse(b.luma, band, b.scratch[worker].within);
    });
    DifferenceHistogram within, between;
    for (const auto& scratch : b.scratch) {
        within.add(scratch.within);
        between.add(scratch.between);
    }
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
        for (int y = band.first; y < band.end; ++y) {
            const std::uint8_t* upper = s.rows.data() + y % 2 * 2 * s.pitch;
            const std::uint8_t* lower = upper + s.pitch;
            if (y % 2 == 0) {
                doubleRows(b.luma, y, s.classifier.classify(b.luma, y), filters, s.rows.data(),
                           static_cast<std::ptrdiff_t>(s.pitch));
            }
            if (hasHistory_) {
                trustRow(b.mismatch, y, noise_, s.sums, s.shares.data());
                mixRow(upper, s.shares.data(), width, b.enlarged.row(2 * y));
                mixRow(lower, s.shares.data(), width, b.enlarged.row(2 * y + 1));
            } else {
                std::copy_n(upper, width, b.enlarged.row(2 * y));
                std::copy_n(lower, width, b.enlarged.row(2 * y + 1));
            }
        }
        findResidual(b.luma, b.enlarged, band, noise_, b.residual);
        b.residual.extendEdges(band.first, band.end);
    });
}

// Corrects the mixture, and doubles colour.
void FrameScaler::agree(const TargetFrame& target) {
    Buffers& b = *buffers_;
    forBands(size_.height, pool_, [&](RowBand band, std::size_t) {
        addResidual(b.residual, band, b.enlarged);
        b.enlarged.extendEdges(2 * band.first, 2 * band.end);
        if (factor_ == 4) {
            lanczosDouble(b.blue, Siting::left, colourOf(band), b.doubledBlue);
            lanczosDouble(b.red, Siting::left, colourOf(band), b.doubledRed);
            return;
        }
        for (int y = 2 * band.first; y < 2 * band.end; ++y) {
            std::copy_n(b.enlarged.row(y), target.luma.size.width, target.luma.row(y));
        }
        lanczosDouble(b.blue, Siting::left, colourOf(band), target.blue);
        lanczosDouble(b.red, Siting::left, colourOf(band), target.red);
    });
}

void FrameScaler::doubleAgain(const TargetFrame& target) {
    Buffers& b = *buffers_;
    forBands(2 * size_.height, pool_, [&](RowBand band, std::size_t) {
        lanczosDouble(b.enlarged, Siting::centre, band, target.luma);
        lanczosDouble(b.doubledBlue, Siting::left, colourOf(band), target.blue);
        lanczosDouble(b.doubledRed, Siting::left, colourOf(band), target.red);
    });
}

}  // namespace quillmere::scaler
