#include "Neural/Runtime/Network.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

#include "Neural/Kernels/Border.h"
#include "Neural/Model/CompiledModel.h"
#include "Neural/Model/NeuralError.h"
#include "Neural/Runtime/Execution.h"
#include "Neural/Runtime/ExecutionPlan.h"
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

}  // namespace

struct Network::Parts {
    Graph graph;
    Schedule schedule;
    ExecutionPlan plan;
    PreparedWeights weights;
    WorkerPool& pool;
};

// What the last run kept, for the next of the same size.
struct Network::Kept {
    std::mutex mutex;
    std::unique_ptr<PlaneArena> arena;
    PixelSize size;

    std::unique_ptr<PlaneArena> take(PixelSize wanted, std::size_t slots) {
        const std::lock_guard lock(mutex);
        if (arena && size == wanted) return std::move(arena);
        return std::make_unique<PlaneArena>(slots);
    }

    void keep(std::unique_ptr<PlaneArena> used, PixelSize usedFor) {
        const std::lock_guard lock(mutex);
        arena = std::move(used);
        size = usedFor;
    }

    void drop() {
        const std::lock_guard lock(mutex);
        arena.reset();
    }
};

Network::Network(std::unique_ptr<const Parts> parts)
    : parts_(std::move(parts)), kept_(std::make_unique<Kept>()) {}
Network::~Network() = default;

Result<std::shared_ptr<const Network>> Network::load(const std::filesystem::path& directory,
                                                     WorkerPool& pool) {
    WeightsTable table;
    return load(directory, pool, table);
}

Result<std::shared_ptr<const Network>> Network::load(const std::filesystem::path& directory,
                                                     WorkerPool& pool, WeightsTable& table) try {
    auto model = CompiledModel::open(directory);
    if (!model) return model.error();
    Schedule schedule = Schedule::of(model->graph(), model->shapes());
    ExecutionPlan plan = ExecutionPlan::of(schedule);
    auto weights = PreparedWeights::of(*model, schedule, plan, pool, table);
    if (!weights) return weights.error();
    auto parts = std::make_unique<const Parts>(
        Parts{model->graph(), std::move(schedule), std::move(plan), *std::move(weights), pool});
    return std::shared_ptr<const Network>(new Network(std::move(parts)));
} catch (const std::bad_alloc&) {
    return makeError(ErrorCode::outOfMemory, "There is not enough memory to load the network.");
}

const std::string& Network::inputName() const { return parts_->graph.values.front(); }

int Network::scale() const { return parts_->schedule.shapes[parts_->graph.output].scale; }

void Network::rest() const { kept_->drop(); }

template <class Fill, class Drain>
void Network::execute(PixelSize size, const Fill& fill, const Drain& drain) const {
    const auto& [graph, schedule, plan, weights, pool] = *parts_;
    std::unique_ptr<PlaneArena> arena = kept_->take(size, plan.slots);
    Execution execution(schedule, plan, weights, size, *arena, pool);
    execution.run(fill, drain);
    if (execution.keepsArena()) kept_->keep(std::move(arena), size);
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
    if (parts_->graph.inputChannels != 3 ||
        parts_->schedule.shapes[parts_->graph.output].channels != 3) {
        return wrongSize("The network doesn't turn colours into colours.");
    }
    const float unit = static_cast<float>(parts_->graph.range) / 255.0f;
    WorkerPool& pool = parts_->pool;
    execute(
        input.size,
        [&](const PlaneList& to) { readPixels(input.pixels, input.bytesPerRow, unit, to, pool); },
        [&](const PlaneList& from, RowRange rows) {
            writePixels(from, unit, rows, output.pixels, output.bytesPerRow, pool);
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
    const ValueShape shape = parts_->schedule.shapes[parts_->graph.output];
    auto output = PlanarImage::blank(shape.channels, scaled(input.size, shape.scale));
    WorkerPool& pool = parts_->pool;
    execute(
        input.size, [&](const PlaneList& to) { readPlanar(input.values.data(), to, pool); },
        [&](const PlaneList& from, RowRange rows) {
            writePlanar(from, rows, output.values.data(), pool);
        });
    return output;
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

}  // namespace quillmere::neural
