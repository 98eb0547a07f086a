// One run of a network: its planes, filled step by step.
#pragma once

#include <functional>
#include <vector>

#include "Base/WorkerPool.h"
#include "Neural/Kernels/Convolution.h"
#include "Neural/Runtime/BandPlan.h"
#include "Neural/Runtime/ExecutionPlan.h"
#include "Neural/Runtime/PlaneArena.h"
#include "Neural/Runtime/PreparedWeights.h"

namespace quillmere::neural {

/// Runs a schedule for an image of one size. For one thread, which works together with the pool.
/// Throws std::bad_alloc.
///
/// The arena is a new one, or one that another execution for the same plan and size has kept. What
/// a small network needs is kept, since the system clears memory at a cost that its runs would
/// feel; what a large one needs is given back as soon as it has been read for the last time.
class Execution {
public:
    /// Writes the whole input.
    using Fill = std::function<void(const PlaneList& to)>;
    /// Reads some rows of the output; every row once, in order.
    using Drain = std::function<void(const PlaneList& from, RowRange rows)>;

    Execution(const Schedule& schedule, const ExecutionPlan& plan, const PreparedWeights& weights,
              PixelSize size, PlaneArena& arena, WorkerPool& pool);

    bool keepsArena() const { return keepsArena_; }

    void run(const Fill& fill, const Drain& drain);

private:
    // The rows [first, first + rows) of a windowed value that memory holds; of any other, all.
    struct Window {
        int first = 0;
        int rows = 0;
    };

    void runBands(const Stage& stage, const Drain& drain);
    void runStep(std::size_t step, RowRange rows);
    void moveWindow(ValueId value, int first, int end);
    void clearAbove(ValueId value);
    void clearBelow(ValueId value);
    std::size_t wholePlaneBytes() const;
    PlaneList planesOf(ValueId value);
    PlaneGeometry geometryOf(ValueId value) const;
    std::size_t floatsOf(ValueId value, const PlaneGeometry& geometry) const;
    int bandRows() const;

    const Schedule& schedule_;
    const ExecutionPlan& plan_;
    const PreparedWeights& weights_;
    const PixelSize size_;
    WorkerPool& pool_;
    PlaneArena& arena_;
    KernelScratch scratch_;
    std::vector<Window> windows_;  // by ValueId
    std::vector<int> heights_;     // by ValueId
    bool keepsArena_ = false;
};

}  // namespace quillmere::neural
