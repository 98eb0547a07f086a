#include "Benchmarks/OneDnnLayer.h"

#include <oneapi/dnnl/dnnl_debug.h>
#include <stdlib.h>

namespace quillmere::benchmark {
namespace {

using dnnl::memory;

memory::desc anyLayout(const memory::dims& sides) {
    return {sides, memory::data_type::f32, memory::format_tag::any};
}

dnnl::convolution_forward::primitive_desc describe(const LayerShape& shape, PixelSize size,
                                                   dnnl::algorithm algorithm,
                                                   const dnnl::engine& engine) {
    const memory::dim half = shape.kernel / 2;
    const dnnl::convolution_forward::desc convolution(
        dnnl::prop_kind::forward_inference, algorithm,
        anyLayout({1, shape.inputs, size.height, size.width}),
        anyLayout({shape.outputs, shape.inputs, shape.kernel, shape.kernel}),
        anyLayout({shape.outputs}), anyLayout({1, shape.outputs, size.height, size.width}), {1, 1},
        {half, half}, {half, half});
    dnnl::primitive_attr attributes;
    if (shape.activated) {
        dnnl::post_ops after;
        after.append_eltwise(1, dnnl::algorithm::eltwise_relu, LayerData::kSlope, 0);
        attributes.set_post_ops(after);
    }
    return {convolution, attributes, engine};
}

}  // namespace

OneDnnLayer OneDnnLayer::direct(const LayerShape& shape, const LayerData& data) {
    return OneDnnLayer(shape, data, dnnl::algorithm::convolution_direct);
}

std::optional<OneDnnLayer> OneDnnLayer::winograd(const LayerShape& shape,
                                                 const LayerData& data) try {
    return OneDnnLayer(shape, data, dnnl::algorithm::convolution_winograd);
} catch (const dnnl::error& error) {
    if (error.status != dnnl_unimplemented) throw;
    return std::nullopt;
}

OneDnnLayer::OneDnnLayer(const LayerShape& shape, const LayerData& data, dnnl::algorithm algorithm)
    : engine_(dnnl::engine::kind::cpu, 0),
      stream_(engine_),
      description_(describe(shape, data.size, algorithm, engine_)),
      primitive_(description_),
      outputSides_{1, shape.outputs, data.size.height, data.size.width} {
    using Tag = memory::format_tag;
    memory_ = {
        {DNNL_ARG_SRC, reordered(data.source, {1, shape.inputs, data.size.height, data.size.width},
                                 Tag::nchw, description_.src_desc())},
        {DNNL_ARG_WEIGHTS,
         reordered(data.weights, {shape.outputs, shape.inputs, shape.kernel, shape.kernel},
                   Tag::oihw, description_.weights_desc())},
        {DNNL_ARG_BIAS, reordered(data.bias, {shape.outputs}, Tag::x, description_.bias_desc())},
        {DNNL_ARG_DST, memory(description_.dst_desc(), engine_)}};
}

void OneDnnLayer::run() {
    primitive_.execute(stream_, memory_);
    stream_.wait();
}

std::vector<float> OneDnnLayer::output() {
    memory::dim count = 1;
    for (const memory::dim side : outputSides_) count *= side;
    std::vector<float> values(static_cast<std::size_t>(count));
    memory plain({outputSides_, memory::data_type::f32, memory::format_tag::nchw}, engine_,
                 values.data());
    dnnl::reorder(memory_.at(DNNL_ARG_DST), plain)
        .execute(stream_, memory_.at(DNNL_ARG_DST), plain);
    stream_.wait();
    return values;
}

memory OneDnnLayer::reordered(const std::vector<float>& values, const memory::dims& sides,
                              memory::format_tag order, const memory::desc& wanted) {
    // oneDNN only reads it, but has no type to say so.
    memory plain({sides, memory::data_type::f32, order}, engine_,
                 const_cast<float*>(values.data()));
    memory made(wanted, engine_);
    dnnl::reorder(plain, made).execute(stream_, plain, made);
    stream_.wait();
    return made;
}

std::string oneDnnVersion() {
    const dnnl::version_t* version = dnnl::version();
    return std::to_string(version->major) + "." + std::to_string(version->minor) + "." +
           std::to_string(version->patch) + " (" + dnnl_cpu_isa2str(dnnl_get_effective_cpu_isa()) +
           ")";
}

void sleepBetweenTurns(std::size_t threads) {
    setenv("OMP_NUM_THREADS", std::to_string(threads).c_str(), 1);
    setenv("OMP_WAIT_POLICY", "passive", 1);
    // GNU's OpenMP counts pause instructions, of 40 to 140 cycles on today's processors.
    setenv("GOMP_SPINCOUNT", "1000", 1);
}

}  // namespace quillmere::benchmark
