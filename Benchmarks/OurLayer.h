// One convolution by our kernels, with nothing of a network around it.
#pragma once

#include <vector>

#include "Base/WorkerPool.h"
#include "Benchmarks/LayerShape.h"
#include "Neural/Kernels/Convolution.h"
#include "Neural/Kernels/KernelScratch.h"
#include "Neural/Kernels/Plane.h"
#include "Neural/Runtime/PlaneArena.h"

namespace quillmere::benchmark {

/// The only place of the benchmark that knows the kernels' interface. Planes lie as they do in a
/// network's run; weights are arranged beforehand, as a network does when it is loaded.
class OurLayer {
public:
    OurLayer(const LayerShape& shape, const LayerData& data, WorkerPool& pool);

    void run();
    /// What the last run gave: [outputs, height, width].
    std::vector<float> output();

private:
    neural::PlaneList planes(int channels, neural::PlaneGeometry geometry);

    WorkerPool& pool_;
    neural::KernelScratch scratch_;
    neural::PlaneArena arena_;
    neural::SlotId nextSlot_ = 0;
    neural::PlaneList input_;
    neural::PlaneList output_;
    neural::ConvolutionWeights weights_;
};

}  // namespace quillmere::benchmark
