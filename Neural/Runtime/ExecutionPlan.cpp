#include "Neural/Runtime/ExecutionPlan.h"

#include <algorithm>
#include <map>

#include "Neural/Kernels/Plane.h"

namespace quillmere::neural {
namespace {

using PlaneId = std::size_t;

struct VirtualPlane {
    int channels = 0;
    int scale = 1;
    std::size_t made = 0;      // step
    std::size_t lastRead = 0;  // step; `made` where nobody reads it
};

class Planner {
public:
    Planner(const Graph& graph, const std::vector<ValueShape>& shapes)
        : graph_(graph), shapes_(shapes), lastStep_(graph.operations.size() + 1) {}

    ExecutionPlan plan() {
        nameInput();
        for (std::size_t n = 0; n < graph_.operations.size(); ++n) nameValue(n);
        read(graph_.output, lastStep_);
        placePlanes();
        for (const auto& planes : valuePlanes_) {
            auto& planned = plan_.values.emplace_back();
            for (const PlaneId id : planes) planned.push_back({slots_[id], planes_[id].channels});
        }
        return std::move(plan_);
    }

private:
    void nameInput() { valuePlanes_.push_back(fullPlanes(shapes_.front(), 0)); }

    void nameValue(std::size_t operation) {
        const std::size_t step = operation + 1;
        const Operation& op = graph_.operations[operation];
        if (const auto* joined = std::get_if<Concatenation>(&op)) {
            std::vector<PlaneId> planes;
            for (const ValueId input : joined->inputs) {
                planes.insert(planes.end(), valuePlanes_[input].begin(), valuePlanes_[input].end());
            }
            valuePlanes_.push_back(std::move(planes));
            return;
        }
        for (const ValueId input : inputsOf(op)) read(input, step);
        if (const auto* enlarged = std::get_if<NearestEnlargement>(&op)) {
            // It copies whole planes, spare lanes and all.
            std::vector<PlaneId> planes;
            for (const PlaneId id : valuePlanes_[enlarged->input]) {
                planes.push_back(newPlane({planes_[id].channels, shapes_[step].scale, step, step}));
            }
            valuePlanes_.push_back(std::move(planes));
            return;
        }
        if (const auto* convolution = std::get_if<Convolution>(&op)) {
            plan_.halo = std::max(plan_.halo, convolution->kernel / 2);
        }
        valuePlanes_.push_back(fullPlanes(shapes_[step], step));
    }

    std::vector<PlaneId> fullPlanes(ValueShape shape, std::size_t step) {
        std::vector<PlaneId> planes;
        for (int left = shape.channels; left > 0; left -= kLanes) {
            planes.push_back(newPlane({std::min(left, kLanes), shape.scale, step, step}));
        }
        return planes;
    }

    PlaneId newPlane(VirtualPlane plane) {
        planes_.push_back(plane);
        return planes_.size() - 1;
    }

    void read(ValueId value, std::size_t step) {
        for (const PlaneId id : valuePlanes_[value]) planes_[id].lastRead = step;
    }

    // Planes are numbered in the order of their making.
    void placePlanes() {
        std::vector<std::vector<PlaneId>> ending(lastStep_ + 1);
        for (PlaneId id = 0; id < planes_.size(); ++id) ending[planes_[id].lastRead].push_back(id);
        std::map<int, std::vector<SlotId>> unused;  // by scale
        std::vector<std::size_t> slotEnds;
        PlaneId next = 0;
        for (std::size_t step = 0; step <= lastStep_; ++step) {
            for (; next < planes_.size() && planes_[next].made == step; ++next) {
                std::vector<SlotId>& candidates = unused[planes_[next].scale];
                if (candidates.empty()) {
                    candidates.push_back(plan_.slotScales.size());
                    plan_.slotScales.push_back(planes_[next].scale);
                    slotEnds.push_back(0);
                }
                const SlotId slot = candidates.back();
                candidates.pop_back();
                slots_.push_back(slot);
                slotEnds[slot] = planes_[next].lastRead;
            }
            for (const PlaneId id : ending[step]) unused[planes_[id].scale].push_back(slots_[id]);
        }
        plan_.retired.resize(lastStep_ + 1);
        for (SlotId slot = 0; slot < slotEnds.size(); ++slot) {
            plan_.retired[slotEnds[slot]].push_back(slot);
        }
    }

    const Graph& graph_;
    const std::vector<ValueShape>& shapes_;
    const std::size_t lastStep_;
    ExecutionPlan plan_;
    std::vector<VirtualPlane> planes_;
    std::vector<std::vector<PlaneId>> valuePlanes_;
    std::vector<SlotId> slots_;  // by PlaneId
};

}  // namespace

ExecutionPlan ExecutionPlan::of(const Graph& graph, const std::vector<ValueShape>& shapes) {
    return Planner(graph, shapes).plan();
}

}  // namespace quillmere::neural
