#include "Desktop/AVFoundation/MatrixChange.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace quillmere {
namespace {

constexpr int bits = 14;
constexpr std::int32_t half = 1 << (bits - 1);

/// What red and blue weigh in luma.
struct Weights {
    double red, blue;
    double green() const { return 1 - red - blue; }
};
constexpr Weights bt709{0.2126, 0.0722};

std::optional<Weights> weightsOf(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT709:
            return bt709;
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M:
            return Weights{0.299, 0.114};
        case AVCOL_SPC_FCC:
            return Weights{0.30, 0.11};
        case AVCOL_SPC_SMPTE240M:
            return Weights{0.212, 0.087};
        case AVCOL_SPC_BT2020_NCL:
            return Weights{0.2627, 0.0593};
        default:
            return {};
    }
}

std::int32_t fixedPoint(double value) {
    return static_cast<std::int32_t>(std::lround(value * (1 << bits)));
}

std::uint8_t byteOf(std::int32_t value) {
    return static_cast<std::uint8_t>(std::clamp((value + half) >> bits, 0, 255));
}

}  // namespace

std::optional<MatrixChange> MatrixChange::of(AVColorSpace matrix, bool isFullRange) {
    const auto from = weightsOf(matrix);
    if (!from) return {};
    // R' = Y' + redOfCr Cr and B' = Y' + blueOfCb Cb, with chroma from -1/2 to 1/2.
    const double redOfCr = 2 * (1 - from->red), blueOfCb = 2 * (1 - from->blue);
    const double share = bt709.green() / from->green();
    const double lumaOfCb = blueOfCb * (bt709.blue - share * from->blue);
    const double lumaOfCr = redOfCr * (bt709.red - share * from->red);
    const double toCb = 0.5 / (1 - bt709.blue), toCr = 0.5 / (1 - bt709.red);
    // From the steps of the source to those of the standard range.
    const double lumaSteps = isFullRange ? 219.0 / 255 : 1;
    const double chromaSteps = isFullRange ? 224.0 / 255 : 1;
    const double chromaToLuma = isFullRange ? 219.0 / 255 : 219.0 / 224;
    MatrixChange change;
    change.luma_ = fixedPoint(lumaSteps);
    change.lumaOffset_ = fixedPoint(16) - (isFullRange ? 0 : fixedPoint(16 * lumaSteps));
    change.lumaOfCb_ = fixedPoint(chromaToLuma * lumaOfCb);
    change.lumaOfCr_ = fixedPoint(chromaToLuma * lumaOfCr);
    change.cbOfCb_ = fixedPoint(chromaSteps * toCb * (blueOfCb - lumaOfCb));
    change.cbOfCr_ = fixedPoint(chromaSteps * toCb * -lumaOfCr);
    change.crOfCb_ = fixedPoint(chromaSteps * toCr * -lumaOfCb);
    change.crOfCr_ = fixedPoint(chromaSteps * toCr * (redOfCr - lumaOfCr));
    return change;
}

void MatrixChange::apply(const AVFrame& from, CVPixelBuffer& to) const {
    const PixelSize chroma = to.sizeOfPlane(1);
    const auto source = [&](int plane, int y) {
        return from.data[plane] + y * from.linesize[plane];
    };
    const auto target = [&](std::size_t plane, int y) {
        return to.baseAddressOfPlane(plane) +
               static_cast<std::size_t>(y) * to.bytesPerRowOfPlane(plane);
    };
    constexpr std::int32_t grey = 128 << bits;
    std::vector<std::int32_t> offsets(static_cast<std::size_t>(chroma.width));
    for (int row = 0; row < chroma.height; ++row) {
        const std::uint8_t *cb = source(1, row), *cr = source(2, row);
        std::uint8_t *newCb = target(1, row), *newCr = target(2, row);
        for (int x = 0; x < chroma.width; ++x) {
            const std::int32_t b = cb[x] - 128, r = cr[x] - 128;
            offsets[static_cast<std::size_t>(x)] = lumaOffset_ + lumaOfCb_ * b + lumaOfCr_ * r;
            newCb[x] = byteOf(grey + cbOfCb_ * b + cbOfCr_ * r);
            newCr[x] = byteOf(grey + crOfCb_ * b + crOfCr_ * r);
        }
        for (int y = 2 * row; y < std::min(2 * row + 2, to.size().height); ++y) {
            const std::uint8_t* luma = source(0, y);
            std::uint8_t* newLuma = target(0, y);
            const int pairs = to.size().width / 2;
            for (int x = 0; x < pairs; ++x) {
                const std::int32_t offset = offsets[static_cast<std::size_t>(x)];
                newLuma[2 * x] = byteOf(luma_ * luma[2 * x] + offset);
                newLuma[2 * x + 1] = byteOf(luma_ * luma[2 * x + 1] + offset);
            }
            if (to.size().width % 2 != 0) {
                newLuma[2 * pairs] = byteOf(luma_ * luma[2 * pairs] + offsets.back());
            }
        }
    }
}

}  // namespace quillmere
