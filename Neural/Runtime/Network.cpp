#include "Neural/Runtime/Network.h"

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <utility>

#include "Neural/Kernels/Border.h"
#include "Neural/Kernels/Convolution.h"
#include "Neural/Kernels/Elementwise.h"
#include "Neural/Model/CompiledModel.h"
#include "Neural/Model/NeuralError.h"
#include "Neural/Runtime/ExecutionPlan.h"
#include "Neural/Runtime/PlaneArena.h"
#include "Neural/Runtime/PreparedWeights.h"

namespace quillmere::neural {
namespace {

// Keeps every product of sides, scale and channels far from overflow.
constexpr int kMaxSide = 1 << 16;

Error outOfMemory() {
    return makeError(ErrorCode::outOfMemory, "There is not enough memory to run the network.");
}

Error wrongSize(const std::string& sentence) { return makeError(ErrorCode::wrongSize, sentence); }

PixelSize scaled(PixelSize size, int scale) { return {size.width * scale, size.height * scale}; }

std::optional<Error> checkSize(PixelSize size) {
    if (size.width < 1 || size.height < 1) return wrongSize("An empty image can't be enlarged.");
    if (size.width > kMaxSide || size.height > kMaxSide) {
        return wrongSize("The image is too large to be enlarged as one piece.");
    }
    return std::nullopt;
}

// One run: its own planes, the shared plan and weights.
class Run {
public:
    Run(const Graph& graph, const std::vector<ValueShape>& shapes, const ExecutionPlan& plan,
        const PreparedWeights& weights, PixelSize size, WorkerPool& pool)
        : shapes_(shapes),
          plan_(plan),
          weights_(weights),
          size_(size),
          pool_(pool),
          arena_(plan.slotScales.size()),
          scratch_(pool.threadCount()),
          graph_(graph) {}

    PlaneList planesOf(ValueId value) {
        PlaneList list;
        list.geometry = PlaneGeometry::of(scaled(size_, shapes_[value].scale), plan_.halo);
        for (const PlannedPlane& plane : plan_.values[value]) {
            float* block = arena_.block(plane.slot, list.geometry.floats);
            list.planes.push_back({block + list.geometry.origin(), plane.channels});
        }
        return list;
    }

    void retire(std::size_t step) {
        for (const SlotId slot : plan_.retired[step]) arena_.release(slot);
    }

    void execute(std::size_t operation) {
        current_ = operation;
        std::visit(*this, graph_.operations[operation]);
    }

    void operator()(const Convolution& op) {
        const int rows = planesOf(op.input).geometry.size.height;
        const ConvolutionCall call{
            weights_.of(current_), planesOf(op.input), output(), {}, 1, {0, rows}};
        convolve(call, scratch_, pool_);
    }
    void operator()(const Concatenation&) {}
    void operator()(const WeightedSum& op) {
        std::vector<PlaneList> inputs;
        for (const ValueId input : op.inputs) inputs.push_back(planesOf(input));
        weightedSum(inputs, op.factors, output(), pool_);
    }
    void operator()(const DepthToSpace& op) {
        depthToSpace(planesOf(op.input), op.factor, op.order, output(), pool_);
    }
    void operator()(const NearestEnlargement& op) {
        enlargeNearest(planesOf(op.input), op.factor, output(), pool_);
    }

private:
    PlaneList output() { return planesOf(current_ + 1); }

    const std::vector<ValueShape>& shapes_;
    const ExecutionPlan& plan_;
    const PreparedWeights& weights_;
    const PixelSize size_;
    WorkerPool& pool_;
    PlaneArena arena_;
    KernelScratch scratch_;
    const Graph& graph_;
    std::size_t current_ = 0;
};

}  // namespace

struct Network::Parts {
    Graph graph;
    std::vector<ValueShape> shapes;
    ExecutionPlan plan;
    PreparedWeights weights;
    WorkerPool& pool;
};

Network::Network(std::unique_ptr<const Parts> parts) : parts_(std::move(parts)) {}
Network::~Network() = default;

Result<std::shared_ptr<const Network>> Network::load(const std::filesystem::path& directory,
                                                     WorkerPool& pool) try {
    auto model = CompiledModel::open(directory);
    if (!model) return model.error();
    ExecutionPlan plan = ExecutionPlan::of(model->graph(), model->shapes());
    PreparedWeights weights = PreparedWeights::of(*model, plan, pool);
    auto parts = std::make_unique<const Parts>(
        Parts{model->graph(), model->shapes(), std::move(plan), std::move(weights), pool});
    return std::shared_ptr<const Network>(new Network(std::move(parts)));
} catch (const std::bad_alloc&) {
    return makeError(ErrorCode::outOfMemory, "There is not enough memory to load the network.");
}

const std::string& Network::inputName() const { return parts_->graph.values.front(); }

int Network::scale() const { return parts_->shapes[parts_->graph.output].scale; }

template <class Fill, class Drain>
void Network::runSteps(PixelSize size, const Fill& fill, const Drain& drain) const {
    const auto& [graph, shapes, plan, weights, pool] = *parts_;
    Run run(graph, shapes, plan, weights, size, pool);
    fill(run.planesOf(0));
    run.retire(0);
    for (std::size_t n = 0; n < graph.operations.size(); ++n) {
        run.execute(n);
        run.retire(n + 1);
    }
    drain(run.planesOf(graph.output));
}

Result<void> Network::run(const ImageView& input, const MutableImageView& output) const try {
    if (const auto error = checkSize(input.size)) return *error;
    if (output.size != scaled(input.size, scale())) {
        return wrongSize("The enlarged image must be " + std::to_string(scale()) +
                         " times as wide and high as the original.");
    }
    constexpr std::size_t kPixelBytes = 4;
    if (input.pixels == nullptr || input.bytesPerRow < kPixelBytes * input.size.width ||
        output.pixels == nullptr || output.bytesPerRow < kPixelBytes * output.size.width) {
        return wrongSize("An image has rows that are shorter than its width.");
    }
    if (parts_->graph.inputChannels != 3 || parts_->shapes[parts_->graph.output].channels != 3) {
        return wrongSize("The network doesn't turn colours into colours.");
    }
    const float unit = static_cast<float>(parts_->graph.range) / 255.0f;
    runSteps(
        input.size,
        [&](const PlaneList& to) {
            readPixels(input.pixels, input.bytesPerRow, unit, to, parts_->pool);
        },
        [&](const PlaneList& from) {
            writePixels(from, unit, output.pixels, output.bytesPerRow, parts_->pool);
        });
    return {};
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

Result<PlanarImage> Network::evaluate(const PlanarImage& input) const try {
    if (const auto error = checkSize(input.size)) return *error;
    const std::size_t pixels = static_cast<std::size_t>(input.size.width) * input.size.height;
    if (input.channels != parts_->graph.inputChannels ||
        input.values.size() != pixels * input.channels) {
        return wrongSize("The network needs " + std::to_string(parts_->graph.inputChannels) +
                         " channels of the image's size.");
    }
    const ValueShape shape = parts_->shapes[parts_->graph.output];
    auto output = PlanarImage::blank(shape.channels, scaled(input.size, shape.scale));
    runSteps(
        input.size, [&](const PlaneList& to) { readPlanar(input.values.data(), to, parts_->pool); },
        [&](const PlaneList& from) { writePlanar(from, output.values.data(), parts_->pool); });
    return output;
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

}  // namespace quillmere::neural
