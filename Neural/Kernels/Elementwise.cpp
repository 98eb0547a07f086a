#include "Neural/Kernels/Elementwise.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Neural/Kernels/Elementwise.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::neural::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// to = or += factor * from, for `count` pixels.
void AddRow(const float* HWY_RESTRICT from, float factor, bool first, std::size_t count,
            float* HWY_RESTRICT to) {
    const hn::CappedTag<float, kLanes> d;
    const auto scale = hn::Set(d, factor);
    for (std::size_t i = 0; i < count * kLanes; i += hn::Lanes(d)) {
        const auto added = hn::LoadU(d, from + i);
        const auto sum =
            first ? hn::Mul(added, scale) : hn::MulAdd(added, scale, hn::LoadU(d, to + i));
        hn::StoreU(sum, d, to + i);
    }
}

// Row `dy` of the squares that `count` pixels of 48 channels become: three channels of sixteen
// phases each, channel first, in planes 0 to 5. The first lanes of the output's pixels are written.
void ShuffleColours4(const float* const* planes, int dy, std::size_t count,
                     float* HWY_RESTRICT to) {
#if HWY_TARGET == HWY_SCALAR
    for (std::size_t x = 0; x < count; ++x) {
        for (int dx = 0; dx < 4; ++dx) {
            const std::size_t lane = x * kLanes + dy % 2 * 4 + dx;
            for (int c = 0; c < 3; ++c)
                to[(x * 4 + dx) * kLanes + c] = planes[2 * c + dy / 2][lane];
        }
    }
#else
    const hn::FixedTag<float, 4> d;
    const auto none = hn::Zero(d);
    const float* HWY_RESTRICT red = planes[dy / 2] + dy % 2 * 4;
    const float* HWY_RESTRICT green = planes[2 + dy / 2] + dy % 2 * 4;
    const float* HWY_RESTRICT blue = planes[4 + dy / 2] + dy % 2 * 4;
    for (std::size_t x = 0; x < count; ++x, to += 4 * kLanes) {
        const auto r = hn::LoadU(d, red + x * kLanes);
        const auto g = hn::LoadU(d, green + x * kLanes);
        const auto b = hn::LoadU(d, blue + x * kLanes);
        const auto rb01 = hn::InterleaveLower(d, r, b), rb23 = hn::InterleaveUpper(d, r, b);
        const auto g01 = hn::InterleaveLower(d, g, none), g23 = hn::InterleaveUpper(d, g, none);
        hn::StoreU(hn::InterleaveLower(d, rb01, g01), d, to);
        hn::StoreU(hn::InterleaveUpper(d, rb01, g01), d, to + kLanes);
        hn::StoreU(hn::InterleaveLower(d, rb23, g23), d, to + 2 * kLanes);
        hn::StoreU(hn::InterleaveUpper(d, rb23, g23), d, to + 3 * kLanes);
    }
#endif
}

}  // namespace
}  // namespace quillmere::neural::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::neural {
namespace {

HWY_EXPORT(AddRow);
HWY_EXPORT(ShuffleColours4);

// body(y) for every row of the range.
template <class Body>
void forRows(RowRange rows, WorkerPool& pool, const Body& body) {
    pool.parallelFor(static_cast<std::size_t>(rows.end - rows.first),
                     [&](std::size_t n, std::size_t) { body(rows.first + std::ptrdiff_t(n)); });
}

bool sameLayout(const PlaneList& a, const PlaneList& b) {
    return std::equal(a.planes.begin(), a.planes.end(), b.planes.begin(), b.planes.end(),
                      [](const Plane& p, const Plane& q) { return p.channels == q.channels; });
}

// AddRow for one channel.
void addChannelRow(const float* from, float factor, bool first, std::size_t count, float* to) {
    for (std::size_t i = 0; i < count * kLanes; i += kLanes) {
        to[i] = (first ? 0.0f : to[i]) + factor * from[i];
    }
}

}  // namespace

void weightedSum(std::span<const PlaneList> inputs, std::span<const float> factors,
                 const PlaneList& output, RowRange rows, WorkerPool& pool) {
    const auto width = static_cast<std::size_t>(output.geometry.size.width);
    const auto pitch = static_cast<std::ptrdiff_t>(output.geometry.pitch);
    const std::vector<float*> outputChannels = output.channels();
    std::vector<std::vector<float*>> inputChannels;  // empty where planes go with planes
    for (const PlaneList& input : inputs) {
        inputChannels.push_back(sameLayout(input, output) ? std::vector<float*>{}
                                                          : input.channels());
    }
    forRows(rows, pool, [&](std::ptrdiff_t y) {
        const std::ptrdiff_t row = y * pitch;
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            const bool first = i == 0;
            if (inputChannels[i].empty()) {
                for (std::size_t p = 0; p < output.planes.size(); ++p) {
                    HWY_DYNAMIC_DISPATCH(AddRow)
                    (inputs[i].planes[p].pixels + row, factors[i], first, width,
                     output.planes[p].pixels + row);
                }
                continue;
            }
            for (std::size_t c = 0; c < outputChannels.size(); ++c) {
                addChannelRow(inputChannels[i][c] + row, factors[i], first, width,
                              outputChannels[c] + row);
            }
        }
    });
}

void depthToSpace(const PlaneList& input, int factor, DepthOrder order, const PlaneList& output,
                  RowRange rows, WorkerPool& pool) {
    const std::vector<float*> from = input.channels();
    const std::vector<float*> to = output.channels();
    const std::size_t phases = static_cast<std::size_t>(factor) * factor;
    const auto width = static_cast<std::size_t>(input.geometry.size.width);
    const auto pitch = static_cast<std::ptrdiff_t>(input.geometry.pitch);
    const auto outputPitch = static_cast<std::ptrdiff_t>(output.geometry.pitch);
    const bool isColours = factor == 4 && order == DepthOrder::channelFirst && to.size() == 3 &&
                           input.planes.size() == 6;
    forRows(rows, pool, [&](std::ptrdiff_t y) {
        const std::ptrdiff_t row = y / factor * pitch;
        if (isColours) {
            const float* planes[6];
            for (int p = 0; p < 6; ++p) planes[p] = input.planes[p].pixels + row;
            HWY_DYNAMIC_DISPATCH(ShuffleColours4)
            (planes, static_cast<int>(y % 4), width, to.front() + y * outputPitch);
            return;
        }
        for (std::size_t c = 0; c < to.size(); ++c) {
            for (std::size_t dx = 0; dx < static_cast<std::size_t>(factor); ++dx) {
                const std::size_t phase = y % factor * factor + dx;
                const std::size_t source =
                    order == DepthOrder::channelFirst ? c * phases + phase : phase * to.size() + c;
                const float* in = from[source] + row;
                float* out = to[c] + y * outputPitch + dx * kLanes;
                for (std::size_t x = 0; x < width; ++x) {
                    out[x * factor * kLanes] = in[x * kLanes];
                }
            }
        }
    });
}

void enlargeNearest(const PlaneList& input, int factor, const PlaneList& output, RowRange rows,
                    WorkerPool& pool) {
    const auto width = static_cast<std::size_t>(input.geometry.size.width);
    const auto pitch = static_cast<std::ptrdiff_t>(input.geometry.pitch);
    const auto outputPitch = static_cast<std::ptrdiff_t>(output.geometry.pitch);
    forRows(rows, pool, [&](std::ptrdiff_t y) {
        for (std::size_t p = 0; p < input.planes.size(); ++p) {
            const float* in = input.planes[p].pixels + y / factor * pitch;
            float* out = output.planes[p].pixels + y * outputPitch;
            for (std::size_t x = 0; x < width; ++x) {
                for (int dx = 0; dx < factor; ++dx) {
                    std::memcpy(out + (x * factor + dx) * kLanes, in + x * kLanes,
                                kLanes * sizeof(float));
                }
            }
        }
    });
}

}  // namespace quillmere::neural
#endif
