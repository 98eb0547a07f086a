// How a few steps are run a band of rows at a time, so that no whole image is kept between them.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "Neural/Kernels/Convolution.h"
#include "Neural/Runtime/Schedule.h"

namespace quillmere::neural {

/// The rows of one band, by the index of a step in its group.
struct Band {
    std::vector<RowRange> made;  // rows of the step's output that it makes
    std::vector<int> kept;       // the first row of that output that this band still reads
};

/// Bands for a group of steps that follow each other.
///
/// Each step makes every row of its output once, from the first to the last, and no earlier than
/// the rows that it needs are there. The last step's bands have `bandRows` rows.
struct BandPlan {
    std::vector<Band> bands;
    std::vector<int> mostRows;  // by step: how many rows are kept at once at most

    /// `heights` is by ValueId.
    static BandPlan of(const Schedule& schedule, std::span<const Step> steps,
                       std::span<const int> heights, int bandRows);
};

}  // namespace quillmere::neural
