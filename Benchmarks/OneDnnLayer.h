// The same convolution by oneDNN, the peer that our kernels are measured with.
#pragma once

#include <oneapi/dnnl/dnnl.hpp>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Benchmarks/LayerShape.h"

namespace quillmere::benchmark {

/// A convolution in single precision, in the layouts that oneDNN likes best for it (`any`): what is
/// reordered to reach them is reordered before anything is timed. An activation is a post-operation
/// of the same primitive.
///
/// oneDNN of Debian runs on OpenMP's threads, ours on a `WorkerPool`. Both have as many, and each
/// must leave the cores alone while the other runs: see `sleepBetweenTurns`.
///
/// Operations throw dnnl::error, which the program's sections let through to `main`.
class OneDnnLayer {
public:
    /// The direct algorithm, which is what oneDNN takes by itself.
    static OneDnnLayer direct(const LayerShape& shape, const LayerData& data);
    /// Winograd's, which it must be asked for; nothing where it has none for this processor.
    static std::optional<OneDnnLayer> winograd(const LayerShape& shape, const LayerData& data);

    void run();
    /// What the last run gave: [outputs, height, width].
    std::vector<float> output();
    /// The name of the kernel that oneDNN chose, "jit:avx512_core" say.
    std::string kernel() const { return description_.impl_info_str(); }

private:
    OneDnnLayer(const LayerShape& shape, const LayerData& data, dnnl::algorithm algorithm);

    dnnl::memory reordered(const std::vector<float>& values, const dnnl::memory::dims& sides,
                           dnnl::memory::format_tag order, const dnnl::memory::desc& wanted);

    dnnl::engine engine_;
    dnnl::stream stream_;
    dnnl::convolution_forward::primitive_desc description_;
    dnnl::convolution_forward primitive_;
    std::unordered_map<int, dnnl::memory> memory_;
    dnnl::memory::dims outputSides_;
};

/// oneDNN's version, and the instruction set that it uses at most.
std::string oneDnnVersion();

/// Has OpenMP start `threads` threads, and lets idle ones look out for work about as long as our
/// pool's do, some 50 microseconds, before they sleep. By default they would spin for milliseconds
/// on the cores that our pool is timed on; `takeTurns` waits out the rest. The library reads this
/// once, when its program starts: call it before starting that program.
void sleepBetweenTurns(std::size_t threads);

}  // namespace quillmere::benchmark
