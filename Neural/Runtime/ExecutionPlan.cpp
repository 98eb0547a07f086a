#include "Neural/Runtime/ExecutionPlan.h"

#include <algorithm>
#include <map>
#include <utility>

#include "Neural/Kernels/Convolution.h"
#include "Neural/Kernels/Plane.h"

namespace quillmere::neural {
namespace {

using PlaneId = std::size_t;

// Planes share slots with planes of one kind: whole ones of one scale, or windows of one value.
using Kind = std::pair<int, ValueId>;

struct VirtualPlane {
    int channels = 0;
    Kind kind;
    std::size_t made = 0;      // stage
    std::size_t lastRead = 0;  // stage; `made` where nobody reads it
};

class Planner {
public:
    explicit Planner(const Schedule& schedule)
        : schedule_(schedule),
          valuePlanes_(schedule.shapes.size()),
          stageOf_(schedule.shapes.size()),
          lastReader_(schedule.shapes.size()) {}

    ExecutionPlan plan() {
        formStages();
        findReaders();
        nameFullPlanes(0, 0);
        for (std::size_t stage = 0; stage < plan_.stages.size(); ++stage) {
            const Stage& steps = plan_.stages[stage];
            for (std::size_t s = steps.first; s < steps.end; ++s) nameValue(stage, s);
        }
        read(schedule_.output, plan_.stages.size() - 1);
        placePlanes();
        for (const auto& planes : valuePlanes_) {
            auto& planned = plan_.values.emplace_back();
            for (const PlaneId id : planes) planned.push_back({slots_[id], planes_[id].channels});
        }
        return std::move(plan_);
    }

private:
    void formStages() {
        const std::vector<Step>& steps = schedule_.steps;
        for (std::size_t s = 0; s < steps.size(); ++s) {
            const bool banded = schedule_.shapes[steps[s].output].scale > 1;
            if (banded && !plan_.stages.empty() && plan_.stages.back().banded) {
                plan_.stages.back().end = s + 1;
            } else {
                plan_.stages.push_back({s, s + 1, banded, false});
            }
        }
        // An output that isn't the last thing made is read at the end, as a whole.
        const bool lastMade = !steps.empty() && steps.back().output == schedule_.output;
        if (lastMade && plan_.stages.back().banded) {
            plan_.stages.back().drains = true;
        } else {
            plan_.stages.push_back({steps.size(), steps.size(), false, true});
        }
    }

    void findReaders() {
        for (std::size_t stage = 0; stage < plan_.stages.size(); ++stage) {
            for (std::size_t s = plan_.stages[stage].first; s < plan_.stages[stage].end; ++s) {
                stageOf_[schedule_.steps[s].output] = stage;
                for (const RowNeed& need : schedule_.rowNeeds(schedule_.steps[s])) {
                    lastReader_[need.value] = stage;
                }
            }
        }
        markRead(schedule_.output, plan_.stages.size() - 1);
        plan_.windowed.resize(schedule_.shapes.size());
        for (const Step& step : schedule_.steps) {
            const std::size_t stage = stageOf_[step.output];
            plan_.windowed[step.output] =
                plan_.stages[stage].banded && lastReader_[step.output] == stage;
        }
    }

    void markRead(ValueId value, std::size_t stage) {
        lastReader_[value] = stage;
        for (const ValueId part : schedule_.concatenations[value]) markRead(part, stage);
    }

    void nameValue(std::size_t stage, std::size_t s) {
        const Step& step = schedule_.steps[s];
        for (const ValueId input : step.inputs()) read(input, stage);
        if (const auto* enlarged = std::get_if<NearestEnlargement>(&step.work)) {
            // It copies whole planes, spare lanes and all.
            std::vector<PlaneId> planes;
            for (const PlaneId id : planesOf(enlarged->input)) {
                planes.push_back(newPlane(planes_[id].channels, step.output, stage));
            }
            valuePlanes_[step.output] = std::move(planes);
            return;
        }
        if (const auto* fused = std::get_if<FusedConvolution>(&step.work)) {
            plan_.halo = std::max(plan_.halo, reachOf(fused->convolution.kernel));
        }
        nameFullPlanes(step.output, stage);
    }

    void nameFullPlanes(ValueId value, std::size_t stage) {
        for (int left = schedule_.shapes[value].channels; left > 0; left -= kLanes) {
            const PlaneId id = newPlane(std::min(left, kLanes), value, stage);
            valuePlanes_[value].push_back(id);
        }
    }

    PlaneId newPlane(int channels, ValueId value, std::size_t stage) {
        const ValueId window = plan_.windowed[value] ? value : 0;
        planes_.push_back({channels, {schedule_.shapes[value].scale, window}, stage, stage});
        return planes_.size() - 1;
    }

    const std::vector<PlaneId>& planesOf(ValueId value) {
        std::vector<PlaneId>& planes = valuePlanes_[value];
        if (planes.empty()) {
            for (const ValueId part : schedule_.concatenations[value]) {
                const std::vector<PlaneId>& more = planesOf(part);
                planes.insert(planes.end(), more.begin(), more.end());
            }
        }
        return planes;
    }

    void read(ValueId value, std::size_t stage) {
        for (const PlaneId id : planesOf(value)) planes_[id].lastRead = stage;
    }

    // Planes are numbered in the order of their making.
    void placePlanes() {
        const std::size_t stages = plan_.stages.size();
        std::vector<std::vector<PlaneId>> ending(stages);
        for (PlaneId id = 0; id < planes_.size(); ++id) ending[planes_[id].lastRead].push_back(id);
        std::map<Kind, std::vector<SlotId>> unused;
        std::vector<std::size_t> slotEnds;
        PlaneId next = 0;
        for (std::size_t stage = 0; stage < stages; ++stage) {
            for (; next < planes_.size() && planes_[next].made == stage; ++next) {
                std::vector<SlotId>& candidates = unused[planes_[next].kind];
                if (candidates.empty()) {
                    candidates.push_back(slotEnds.size());
                    slotEnds.push_back(0);
                }
                const SlotId slot = candidates.back();
                candidates.pop_back();
                slots_.push_back(slot);
                slotEnds[slot] = planes_[next].lastRead;
            }
            for (const PlaneId id : ending[stage]) unused[planes_[id].kind].push_back(slots_[id]);
        }
        plan_.slots = slotEnds.size();
        plan_.retired.resize(stages);
        for (SlotId slot = 0; slot < slotEnds.size(); ++slot) {
            plan_.retired[slotEnds[slot]].push_back(slot);
        }
    }

    const Schedule& schedule_;
    ExecutionPlan plan_;
    std::vector<VirtualPlane> planes_;
    std::vector<std::vector<PlaneId>> valuePlanes_;
    std::vector<std::size_t> stageOf_;     // by ValueId
    std::vector<std::size_t> lastReader_;  // by ValueId: stage
    std::vector<SlotId> slots_;            // by PlaneId
};

}  // namespace

ExecutionPlan ExecutionPlan::of(const Schedule& schedule) { return Planner(schedule).plan(); }

}  // namespace quillmere::neural
