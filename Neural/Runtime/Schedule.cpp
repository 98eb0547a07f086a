#include "Neural/Runtime/Schedule.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "Neural/Kernels/Convolution.h"
#include "Neural/Kernels/Plane.h"

namespace quillmere::neural {
namespace {

// Larger factors would multiply the weights more than they save memory.
constexpr int kLargestFold = 4;

class Scheduler {
public:
    Scheduler(const Graph& graph, const std::vector<ValueShape>& shapes)
        : graph_(graph), readers_(shapes.size()), maker_(shapes.size()) {
        schedule_.shapes = shapes;
        schedule_.concatenations.resize(shapes.size());
        schedule_.output = graph.output;
    }

    Schedule run() {
        for (const Operation& operation : graph_.operations) {
            for (const ValueId input : inputsOf(operation)) ++readers_[input];
        }
        ++readers_[graph_.output];
        for (std::size_t n = 0; n < graph_.operations.size(); ++n) {
            const ValueId output = n + 1;
            std::visit([&](const auto& operation) { add(operation, output); },
                       graph_.operations[n]);
        }
        copyUnevenOutput();
        dropUnread();
        return std::move(schedule_);
    }

private:
    void add(const Concatenation& operation, ValueId output) {
        schedule_.concatenations[output] = operation.inputs;
    }
    void add(const DepthToSpace& operation, ValueId output) { addStep(operation, output); }
    void add(const NearestEnlargement& operation, ValueId output) { addStep(operation, output); }

    void add(const Convolution& operation, ValueId output) {
        FusedConvolution fused{operation, 1, 1, {}};
        const auto* enlargement = madeBy<NearestEnlargement>(operation.input);
        if (enlargement == nullptr || operation.kernel != 3 || enlargement->factor > kLargestFold) {
            return addStep(std::move(fused), output);
        }
        const auto [input, factor] = *enlargement;  // adding steps may move it
        fused.convolution.input = input;
        fused.enlargement = factor;
        const ValueShape shape = schedule_.shapes[output];
        if (shape.channels % kLanes == 0) return addStep(std::move(fused), output);
        // The kernel can't put parts of planes in their places: one step more does.
        const ValueId small =
            newValue({shape.channels * factor * factor, schedule_.shapes[input].scale});
        addStep(std::move(fused), small);
        addStep(DepthToSpace{small, factor, DepthOrder::phaseFirst}, output);
    }

    void add(const WeightedSum& operation, ValueId output) {
        const std::optional<std::size_t> term = fusibleTerm(operation);
        if (!term) return addStep(operation, output);
        const ValueId value = operation.inputs[*term];
        FusedConvolution fused = std::get<FusedConvolution>(schedule_.steps[*maker_[value]].work);
        fused.scale *= operation.factors[*term];
        for (auto& addend : fused.addends) addend.factor *= operation.factors[*term];
        for (std::size_t i = 0; i < operation.inputs.size(); ++i) {
            if (i != *term) fused.addends.push_back({operation.inputs[i], operation.factors[i]});
        }
        addStep(std::move(fused), output);
    }

    // Who reads the output wants its channels in full planes.
    void copyUnevenOutput() {
        const ValueId value = schedule_.output;
        if (!hasOtherPlanes(value)) return;
        schedule_.output = newValue(schedule_.shapes[value]);
        addStep(WeightedSum{{value}, {1}}, schedule_.output);
    }

    // The planes of its inputs, which may be partly filled.
    bool hasOtherPlanes(ValueId value) const {
        return !schedule_.concatenations[value].empty() ||
               madeBy<NearestEnlargement>(value) != nullptr;
    }

    // The term of a sum that a convolution made, and that nobody else reads. Its step may then move
    // to the place of the sum. The other terms must be laid out in planes as the result is.
    std::optional<std::size_t> fusibleTerm(const WeightedSum& sum) const {
        const auto uneven = [this](ValueId value) { return hasOtherPlanes(value); };
        if (std::any_of(sum.inputs.begin(), sum.inputs.end(), uneven)) return {};
        for (std::size_t i = sum.inputs.size(); i-- > 0;) {
            const ValueId value = sum.inputs[i];
            if (madeBy<FusedConvolution>(value) != nullptr && readers_[value] == 1 &&
                sum.factors[i] > 0) {
                return i;
            }
        }
        return {};
    }

    template <class Work>
    const Work* madeBy(ValueId value) const {
        if (!maker_[value]) return nullptr;
        return std::get_if<Work>(&schedule_.steps[*maker_[value]].work);
    }

    ValueId newValue(ValueShape shape) {
        schedule_.shapes.push_back(shape);
        schedule_.concatenations.emplace_back();
        maker_.emplace_back();
        return schedule_.shapes.size() - 1;
    }

    void addStep(Step::Work work, ValueId output) {
        maker_[output] = schedule_.steps.size();
        schedule_.steps.push_back({std::move(work), output});
    }

    void dropUnread() {
        std::vector<bool> read(schedule_.shapes.size());
        const auto mark = [&](const auto& self, ValueId value) -> void {
            read[value] = true;
            for (const ValueId part : schedule_.concatenations[value]) self(self, part);
        };
        mark(mark, schedule_.output);
        std::vector<Step> kept;
        for (auto step = schedule_.steps.rbegin(); step != schedule_.steps.rend(); ++step) {
            if (!read[step->output]) continue;
            for (const ValueId input : step->inputs()) mark(mark, input);
            kept.push_back(std::move(*step));
        }
        std::reverse(kept.begin(), kept.end());
        schedule_.steps = std::move(kept);
    }

    const Graph& graph_;
    Schedule schedule_;
    std::vector<int> readers_;                       // by the graph's ValueId
    std::vector<std::optional<std::size_t>> maker_;  // by ValueId: index of the step
};

struct Needs {
    std::vector<RowNeed> operator()(const FusedConvolution& work) const {
        std::vector<RowNeed> needs{
            {work.convolution.input, work.enlargement, reachOf(work.convolution.kernel)}};
        for (const auto& addend : work.addends) needs.push_back({addend.value, 1, 0});
        return needs;
    }
    std::vector<RowNeed> operator()(const WeightedSum& work) const {
        std::vector<RowNeed> needs;
        for (const ValueId input : work.inputs) needs.push_back({input, 1, 0});
        return needs;
    }
    std::vector<RowNeed> operator()(const DepthToSpace& work) const {
        return {{work.input, work.factor, 0}};
    }
    std::vector<RowNeed> operator()(const NearestEnlargement& work) const {
        return {{work.input, work.factor, 0}};
    }
};

}  // namespace

std::vector<ValueId> Step::inputs() const {
    std::vector<ValueId> values;
    for (const RowNeed& need : std::visit(Needs(), work)) values.push_back(need.value);
    return values;
}

Schedule Schedule::of(const Graph& graph, const std::vector<ValueShape>& shapes) {
    return Scheduler(graph, shapes).run();
}

std::vector<RowNeed> Schedule::rowNeeds(const Step& step) const {
    std::vector<RowNeed> needs;
    const auto add = [&](const auto& self, RowNeed need) -> void {
        const std::vector<ValueId>& parts = concatenations[need.value];
        if (parts.empty()) return needs.push_back(need);
        for (const ValueId part : parts) self(self, {part, need.divisor, need.reach});
    };
    for (const RowNeed& need : std::visit(Needs(), step.work)) {
        RowNeed scaled = need;
        // Results of a folded enlargement that are left in channels have the small image's rows.
        if (shapes[step.output].scale == shapes[need.value].scale) scaled.divisor = 1;
        add(add, scaled);
    }
    return needs;
}

int Schedule::rowUnit(const Step& step) const {
    if (!std::holds_alternative<FusedConvolution>(step.work)) return 1;
    const auto& work = std::get<FusedConvolution>(step.work);
    return kTileSide * shapes[step.output].scale / shapes[work.convolution.input].scale;
}

}  // namespace quillmere::neural
