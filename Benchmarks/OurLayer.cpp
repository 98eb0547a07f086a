#include "Benchmarks/OurLayer.h"

#include <algorithm>

#include "Neural/Kernels/Border.h"

namespace quillmere::benchmark {
namespace {

using neural::kLanes;

std::size_t planesFor(int channels) {
    return (static_cast<std::size_t>(channels) + kLanes - 1) / kLanes;
}

}  // namespace

OurLayer::OurLayer(const LayerShape& shape, const LayerData& data, WorkerPool& pool)
    : pool_(pool),
      scratch_(pool.threadCount()),
      arena_(planesFor(shape.inputs) + planesFor(shape.outputs)) {
    const auto geometry = neural::PlaneGeometry::of(data.size, neural::reachOf(shape.kernel));
    input_ = planes(shape.inputs, geometry);
    output_ = planes(shape.outputs, geometry);
    neural::readPlanar(data.source.data(), input_, pool);

    std::vector<int> channels;
    for (const neural::Plane& plane : input_.planes) channels.push_back(plane.channels);
    const std::vector<float> slopes(data.bias.size(), shape.activated ? LayerData::kSlope : 1.0f);
    weights_ = neural::ConvolutionWeights::arrange(shape.kernel, channels, data.weights, data.bias,
                                                   slopes);
}

void OurLayer::run() {
    const int rows = input_.geometry.size.height;
    neural::convolve({weights_, input_, output_, {}, 1, {0, rows}}, scratch_, pool_);
}

std::vector<float> OurLayer::output() {
    const PixelSize size = output_.geometry.size;
    std::vector<float> values(output_.channels().size() * size.width * size.height);
    neural::writePlanar(output_, {0, size.height}, values.data(), pool_);
    return values;
}

neural::PlaneList OurLayer::planes(int channels, neural::PlaneGeometry geometry) {
    neural::PlaneList list{geometry, {}};
    for (int left = channels; left > 0; left -= kLanes) {
        float* block = arena_.block(nextSlot_++, geometry.floats);
        list.planes.push_back({block + geometry.origin(), std::min(left, kLanes)});
    }
    return list;
}

}  // namespace quillmere::benchmark
