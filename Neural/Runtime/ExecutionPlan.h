// Which plane lives where, and until when: all that can be known of a run before its image is.
#pragma once

#include <cstddef>
#include <vector>

#include "Neural/Model/Graph.h"

namespace quillmere::neural {

/// A place for one plane, used by planes of one scale whose lives don't overlap.
using SlotId = std::size_t;

struct PlannedPlane {
    SlotId slot = 0;
    int channels = 0;
};

/// The memory plan of a graph.
///
/// Steps: 0 fills the input, n + 1 runs operation n, the last one reads the output. A
/// concatenation does nothing, its value is the planes of its inputs. The planes that a step
/// writes never share a slot with planes that it reads.
struct ExecutionPlan {
    std::vector<std::vector<PlannedPlane>> values;  // by ValueId
    std::vector<int> slotScales;                    // by SlotId: multiples of the input's size
    std::vector<std::vector<SlotId>> retired;       // by step: slots that nobody needs after it
    int halo = 0;                                   // what the widest kernel reads around a plane

    static ExecutionPlan of(const Graph& graph, const std::vector<ValueShape>& shapes);
};

}  // namespace quillmere::neural
