#include "Benchmarks/LayerShape.h"

#include <cmath>
#include <random>
#include <variant>

#include "Neural/Model/CompiledModel.h"

namespace quillmere::benchmark {

std::string LayerShape::name() const {
    return std::to_string(inputs) + "→" + std::to_string(outputs) +
           (activated ? ", activated" : "");
}

double LayerShape::operations() const {
    const double pixels = static_cast<double>(size().width) * size().height;
    return 2.0 * kernel * kernel * inputs * outputs * pixels;
}

Result<LayerCounts> layersOf(const std::filesystem::path& directory) {
    const auto model = neural::CompiledModel::open(directory);
    if (!model) return model.error();
    LayerCounts counts;
    for (std::size_t n = 0; n < model->graph().operations.size(); ++n) {
        const auto* op = std::get_if<neural::Convolution>(&model->graph().operations[n]);
        if (op == nullptr) continue;
        const neural::ValueShape& input = model->shapes()[op->input];
        ++counts[{input.scale, op->kernel, input.channels, op->outputs,
                  op->activation != neural::Activation::none}];
    }
    return counts;
}

LayerData LayerData::of(const LayerShape& shape, PixelSize size) {
    std::minstd_rand random(1);
    const auto noise = [&](std::size_t count, float largest) {
        std::uniform_real_distribution<float> values(-largest, largest);
        std::vector<float> made(count);
        for (float& value : made) value = values(random);
        return made;
    };
    const std::size_t inputs = static_cast<std::size_t>(shape.inputs);
    const std::size_t outputs = static_cast<std::size_t>(shape.outputs);
    const std::size_t products = inputs * shape.kernel * shape.kernel;
    const std::size_t pixels = static_cast<std::size_t>(size.width) * size.height;
    return {size, noise(inputs * pixels, 1),
            noise(outputs * products, 3 / std::sqrt(static_cast<float>(products))),
            noise(outputs, 1)};
}

}  // namespace quillmere::benchmark
