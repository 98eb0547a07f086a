#include "Neural/Runtime/Execution.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "Neural/Kernels/Elementwise.h"

namespace quillmere::neural {
namespace {

// Rows of a banded stage's output that are made at once: few enough for a band of a few channels to
// stay in the second cache, enough of them for every worker to have several blocks of tiles.
constexpr int kBandRows = 32;
constexpr int kBandRowsForWorker = 8;

// Two values of 64 channels for a tile of 256 by 256, or five.
constexpr std::size_t kMostKeptBytes = std::size_t{96} << 20;

}  // namespace

Execution::Execution(const Schedule& schedule, const ExecutionPlan& plan,
                     const PreparedWeights& weights, PixelSize size, PlaneArena& arena,
                     WorkerPool& pool)
    : schedule_(schedule),
      plan_(plan),
      weights_(weights),
      size_(size),
      pool_(pool),
      arena_(arena),
      scratch_(pool.threadCount()),
      windows_(schedule.shapes.size()) {
    for (const ValueShape& shape : schedule.shapes) heights_.push_back(size.height * shape.scale);
    keepsArena_ = wholePlaneBytes() <= kMostKeptBytes;
}

void Execution::run(const Fill& fill, const Drain& drain) {
    fill(planesOf(0));
    for (std::size_t n = 0; n < plan_.stages.size(); ++n) {
        const Stage& stage = plan_.stages[n];
        if (stage.banded) {
            runBands(stage, drain);
        } else {
            for (std::size_t s = stage.first; s < stage.end; ++s) {
                runStep(s, {0, heights_[schedule_.steps[s].output]});
            }
            if (stage.drains) {
                drain(planesOf(schedule_.output), {0, heights_[schedule_.output]});
            }
        }
        if (keepsArena_) continue;
        for (const SlotId slot : plan_.retired[n]) arena_.release(slot);
    }
}

void Execution::runBands(const Stage& stage, const Drain& drain) {
    const std::span<const Step> steps(schedule_.steps.data() + stage.first,
                                      stage.end - stage.first);
    const BandPlan plan = BandPlan::of(schedule_, steps, heights_, bandRows());
    for (std::size_t s = 0; s < steps.size(); ++s) {
        windows_[steps[s].output] = {0, plan.mostRows[s]};
        if (plan_.windowed[steps[s].output]) clearAbove(steps[s].output);
    }
    for (const Band& band : plan.bands) {
        for (std::size_t s = 0; s < steps.size(); ++s) {
            const ValueId value = steps[s].output;
            if (plan_.windowed[value]) moveWindow(value, band.kept[s], band.made[s].first);
        }
        for (std::size_t s = 0; s < steps.size(); ++s) {
            if (band.made[s].first == band.made[s].end) continue;
            runStep(stage.first + s, band.made[s]);
            const ValueId value = steps[s].output;
            if (plan_.windowed[value] && band.made[s].end == heights_[value]) clearBelow(value);
        }
        if (stage.drains) drain(planesOf(schedule_.output), band.made.back());
    }
}

void Execution::runStep(std::size_t step, RowRange rows) {
    const auto& [work, value] = schedule_.steps[step];
    const PlaneList output = planesOf(value);
    if (const auto* fused = std::get_if<FusedConvolution>(&work)) {
        const ValueId input = fused->convolution.input;
        const int shuffle = schedule_.shapes[value].scale / schedule_.shapes[input].scale;
        ConvolutionCall call{weights_.of(step),
                             planesOf(input),
                             output,
                             {},
                             shuffle,
                             {rows.first / shuffle, rows.end / shuffle}};
        for (const auto& addend : fused->addends) {
            call.addends.push_back({planesOf(addend.value), addend.factor});
        }
        convolve(call, scratch_, pool_);
    } else if (const auto* sum = std::get_if<WeightedSum>(&work)) {
        std::vector<PlaneList> inputs;
        for (const ValueId input : sum->inputs) inputs.push_back(planesOf(input));
        weightedSum(inputs, sum->factors, output, rows, pool_);
    } else if (const auto* shuffle = std::get_if<DepthToSpace>(&work)) {
        depthToSpace(planesOf(shuffle->input), shuffle->factor, shuffle->order, output, rows,
                     pool_);
    } else if (const auto* enlargement = std::get_if<NearestEnlargement>(&work)) {
        enlargeNearest(planesOf(enlargement->input), enlargement->factor, output, rows, pool_);
    }
}

// Rows up to `end` are there already; from `first` on they're still needed.
void Execution::moveWindow(ValueId value, int first, int end) {
    Window& window = windows_[value];
    if (first == window.first) return;
    const PlaneGeometry geometry = geometryOf(value);
    const std::size_t halo = geometry.halo;
    const std::size_t from = first - window.first;
    const std::size_t rows = end - first + halo;
    pool_.parallelFor(plan_.values[value].size(), [&](std::size_t n, std::size_t) {
        float* block = arena_.block(plan_.values[value][n].slot, floatsOf(value, geometry));
        std::memmove(block, block + from * geometry.pitch, rows * geometry.pitch * sizeof(float));
    });
    window.first = first;
    if (end == heights_[value]) clearBelow(value);
}

// The border above the first row, where an earlier run's rows have been.
void Execution::clearAbove(ValueId value) {
    const PlaneGeometry geometry = geometryOf(value);
    const std::size_t floats = floatsOf(value, geometry);
    for (const PlannedPlane& plane : plan_.values[value]) {
        std::fill_n(arena_.block(plane.slot, floats), geometry.halo * geometry.pitch, 0.0f);
    }
}

// The border below a window's last row, where rows of earlier bands have been.
void Execution::clearBelow(ValueId value) {
    const PlaneGeometry geometry = geometryOf(value);
    const std::size_t begin =
        (geometry.halo + heights_[value] - windows_[value].first) * geometry.pitch;
    const std::size_t floats = floatsOf(value, geometry);
    for (const PlannedPlane& plane : plan_.values[value]) {
        float* block = arena_.block(plane.slot, floats);
        std::fill(block + begin, block + floats, 0.0f);
    }
}

PlaneList Execution::planesOf(ValueId value) {
    PlaneList list;
    if (!plan_.values[value].empty() && schedule_.concatenations[value].empty()) {
        list.geometry = geometryOf(value);
        const std::size_t floats = floatsOf(value, list.geometry);
        // What is in front of the window is never touched.
        const std::ptrdiff_t origin =
            static_cast<std::ptrdiff_t>(list.geometry.origin()) -
            windows_[value].first * static_cast<std::ptrdiff_t>(list.geometry.pitch);
        for (const PlannedPlane& plane : plan_.values[value]) {
            list.planes.push_back({arena_.block(plane.slot, floats) + origin, plane.channels});
        }
        return list;
    }
    for (const ValueId part : schedule_.concatenations[value]) {
        PlaneList more = planesOf(part);
        list.geometry = more.geometry;
        list.planes.insert(list.planes.end(), more.planes.begin(), more.planes.end());
    }
    return list;
}

PlaneGeometry Execution::geometryOf(ValueId value) const {
    const int scale = schedule_.shapes[value].scale;
    return PlaneGeometry::of({size_.width * scale, size_.height * scale}, plan_.halo);
}

std::size_t Execution::floatsOf(ValueId value, const PlaneGeometry& geometry) const {
    if (!plan_.windowed[value]) return geometry.floats;
    PixelSize part = geometry.size;
    // A tile may reach below the window's last row.
    part.height = windows_[value].rows + kTileSide;
    return PlaneGeometry::of(part, geometry.halo).floats;
}

std::size_t Execution::wholePlaneBytes() const {
    std::vector<std::size_t> bytes(plan_.slots);
    for (ValueId value = 0; value < plan_.values.size(); ++value) {
        if (plan_.windowed[value]) continue;
        for (const PlannedPlane& plane : plan_.values[value]) {
            bytes[plane.slot] = geometryOf(value).floats * sizeof(float);
        }
    }
    return std::accumulate(bytes.begin(), bytes.end(), std::size_t{0});
}

int Execution::bandRows() const {
    const int wanted = kBandRowsForWorker * static_cast<int>(pool_.threadCount());
    return std::max(kBandRows, (wanted + kBandRows - 1) / kBandRows * kBandRows);
}

}  // namespace quillmere::neural
