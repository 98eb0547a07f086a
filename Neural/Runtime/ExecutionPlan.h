// Which plane lives where, and until when: all that can be known of a run before its image is.
#pragma once

#include <cstddef>
#include <vector>

#include "Neural/Runtime/Schedule.h"

namespace quillmere::neural {

/// A place for one plane, used by planes of one kind whose lives don't overlap.
using SlotId = std::size_t;

struct PlannedPlane {
    SlotId slot = 0;
    int channels = 0;
};

/// Steps [first, end) of the schedule that run together, and whether the network's output is read
/// as they go. A banded stage runs band after band; any other has one step.
struct Stage {
    std::size_t first = 0;
    std::size_t end = 0;
    bool banded = false;
    bool drains = false;
};

/// The memory plan of a schedule.
///
/// Steps whose output is larger than the network's input form banded stages with the steps beside
/// them that are so too: the large images at a network's end are most of what it would need. What
/// a banded stage makes for itself is `windowed`: only some rows of it are kept.
///
/// A concatenation's value is the planes of its inputs. The planes that a stage writes never share
/// a slot with planes that it reads. The last stage drains the output.
struct ExecutionPlan {
    std::vector<Stage> stages;
    std::vector<std::vector<PlannedPlane>> values;  // by ValueId; empty for what no step makes
    std::vector<bool> windowed;                     // by ValueId
    std::size_t slots = 0;
    std::vector<std::vector<SlotId>> retired;  // by stage: slots that nobody needs after it
    int halo = 1;                              // what the widest kernel reads around a plane

    static ExecutionPlan of(const Schedule& schedule);
};

}  // namespace quillmere::neural
