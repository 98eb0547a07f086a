#include "Neural/Kernels/Elementwise.h"

#include <algorithm>
#include <cstring>

namespace quillmere::neural {
namespace {

std::size_t heightOf(const PlaneList& list) {
    return static_cast<std::size_t>(list.geometry.size.height);
}

bool sameLayout(const PlaneList& a, const PlaneList& b) {
    return std::equal(a.planes.begin(), a.planes.end(), b.planes.begin(), b.planes.end(),
                      [](const Plane& p, const Plane& q) { return p.channels == q.channels; });
}

// to = or += factor * from, for `count` pixels of kLanes floats.
void addRow(const float* from, float factor, bool first, std::size_t count, float* to) {
    if (first) {
        for (std::size_t i = 0; i < count * kLanes; ++i) to[i] = factor * from[i];
    } else {
        for (std::size_t i = 0; i < count * kLanes; ++i) to[i] += factor * from[i];
    }
}

// The same for one channel.
void addChannelRow(const float* from, float factor, bool first, std::size_t count, float* to) {
    for (std::size_t i = 0; i < count * kLanes; i += kLanes) {
        to[i] = (first ? 0.0f : to[i]) + factor * from[i];
    }
}

}  // namespace

void weightedSum(std::span<const PlaneList> inputs, std::span<const float> factors,
                 const PlaneList& output, WorkerPool& pool) {
    const auto width = static_cast<std::size_t>(output.geometry.size.width);
    const std::vector<float*> outputChannels = output.channels();
    std::vector<std::vector<float*>> inputChannels;  // empty where planes go with planes
    for (const PlaneList& input : inputs) {
        inputChannels.push_back(sameLayout(input, output) ? std::vector<float*>{}
                                                          : input.channels());
    }
    pool.parallelFor(heightOf(output), [&](std::size_t y, std::size_t) {
        const std::size_t row = y * output.geometry.pitch;
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            const bool first = i == 0;
            if (inputChannels[i].empty()) {
                for (std::size_t p = 0; p < output.planes.size(); ++p) {
                    addRow(inputs[i].planes[p].pixels + row, factors[i], first, width,
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
                  WorkerPool& pool) {
    const std::vector<float*> from = input.channels();
    const std::vector<float*> to = output.channels();
    const std::size_t phases = static_cast<std::size_t>(factor) * factor;
    const auto width = static_cast<std::size_t>(input.geometry.size.width);
    pool.parallelFor(heightOf(output), [&](std::size_t y, std::size_t) {
        for (std::size_t c = 0; c < to.size(); ++c) {
            for (std::size_t dx = 0; dx < static_cast<std::size_t>(factor); ++dx) {
                const std::size_t phase = y % factor * factor + dx;
                const std::size_t source =
                    order == DepthOrder::channelFirst ? c * phases + phase : phase * to.size() + c;
                const float* in = from[source] + y / factor * input.geometry.pitch;
                float* out = to[c] + y * output.geometry.pitch + dx * kLanes;
                for (std::size_t x = 0; x < width; ++x) {
                    out[x * factor * kLanes] = in[x * kLanes];
                }
            }
        }
    });
}

void enlargeNearest(const PlaneList& input, int factor, const PlaneList& output, WorkerPool& pool) {
    const auto width = static_cast<std::size_t>(input.geometry.size.width);
    pool.parallelFor(heightOf(output), [&](std::size_t y, std::size_t) {
        for (std::size_t p = 0; p < input.planes.size(); ++p) {
            const float* in = input.planes[p].pixels + y / factor * input.geometry.pitch;
            float* out = output.planes[p].pixels + y * output.geometry.pitch;
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
