#include "Neural/Reference/ReferenceNetwork.h"

#include <algorithm>

#include "Neural/Model/NeuralError.h"

namespace quillmere::neural {
namespace {

class Evaluation {
public:
    Evaluation(const CompiledModel& model, std::vector<PlanarImage>& values)
        : model_(model), values_(values) {}

    PlanarImage operator()(const Convolution& op) const {
        const PlanarImage& in = values_[op.input];
        PlanarImage out = PlanarImage::blank(op.outputs, in.size);
        for (int o = 0; o < op.outputs; ++o) {
            const std::vector<double> sums = correlate(op, in, o);
            const float below = slope(op, o);
            std::transform(sums.begin(), sums.end(), out.row(o, 0), [below](double sum) {
                return static_cast<float>(sum > 0 ? sum : sum * below);
            });
        }
        return out;
    }

    PlanarImage operator()(const Concatenation& op) const {
        PlanarImage out{0, values_[op.inputs.front()].size, {}};
        for (const ValueId input : op.inputs) {
            const PlanarImage& in = values_[input];
            out.channels += in.channels;
            out.values.insert(out.values.end(), in.values.begin(), in.values.end());
        }
        return out;
    }

    PlanarImage operator()(const WeightedSum& op) const {
        PlanarImage out = values_[op.inputs.front()];
        for (std::size_t at = 0; at < out.values.size(); ++at) {
            double sum = 0;
            for (std::size_t i = 0; i < op.inputs.size(); ++i) {
                sum += double{op.factors[i]} * values_[op.inputs[i]].values[at];
            }
            out.values[at] = static_cast<float>(sum);
        }
        return out;
    }

    PlanarImage operator()(const DepthToSpace& op) const {
        const int f = op.factor;
        const int channels = values_[op.input].channels / (f * f);
        return rearrange(op.input, f, channels, [&](int c, int dy, int dx) {
            return op.order == DepthOrder::channelFirst ? (c * f + dy) * f + dx
                                                        : (dy * f + dx) * channels + c;
        });
    }

    PlanarImage operator()(const NearestEnlargement& op) const {
        return rearrange(op.input, op.factor, values_[op.input].channels,
                         [](int c, int, int) { return c; });
    }

private:
    // All pixels of one output channel.
    std::vector<double> correlate(const Convolution& op, const PlanarImage& in, int o) const {
        const auto [width, height] = in.size;
        const int r = op.kernel / 2;
        const Half* weight =
            model_.tensor(op.weights).data() + std::size_t(o) * in.channels * op.kernel * op.kernel;
        std::vector<double> sums(std::size_t(width) * height, toFloat(model_.tensor(op.bias)[o]));
        for (int c = 0; c < in.channels; ++c) {
            for (int dy = -r; dy <= r; ++dy) {
                for (int dx = -r; dx <= r; ++dx) {
                    const double factor = toFloat(*weight++);
                    // Where (x + dx, y + dy) is inside; outside is zero.
                    for (int y = std::max(0, -dy); y < std::min(height, height - dy); ++y) {
                        const float* row = in.row(c, y + dy);
                        for (int x = std::max(0, -dx); x < std::min(width, width - dx); ++x) {
                            sums[std::size_t(y) * width + x] += factor * row[x + dx];
                        }
                    }
                }
            }
        }
        return sums;
    }

    float slope(const Convolution& op, int output) const {
        switch (op.activation) {
            case Activation::none:
                return 1;
            case Activation::relu:
                return 0;
            case Activation::leakyRelu:
                return op.slope;
            case Activation::prelu:
                return toFloat(model_.tensor(op.slopes)[output]);
        }
        invariantBroken();
    }

    // Output pixel (x, y) of channel c is pixel (x / factor, y / factor) of channel source(c, ...).
    template <class Source>
    PlanarImage rearrange(ValueId input, int factor, int channels, const Source& source) const {
        const PlanarImage& in = values_[input];
        auto out = PlanarImage::blank(channels, {in.size.width * factor, in.size.height * factor});
        for (int c = 0; c < channels; ++c) {
            for (int y = 0; y < out.size.height; ++y) {
                for (int x = 0; x < out.size.width; ++x) {
                    const int from = source(c, y % factor, x % factor);
                    out.row(c, y)[x] = in.row(from, y / factor)[x / factor];
                }
            }
        }
        return out;
    }

    const CompiledModel& model_;
    std::vector<PlanarImage>& values_;
};

}  // namespace

Result<PlanarImage> evaluateReference(const CompiledModel& model, const PlanarImage& input) {
    const std::size_t pixels = static_cast<std::size_t>(input.size.width) * input.size.height;
    if (input.channels != model.graph().inputChannels || pixels == 0 ||
        input.values.size() != pixels * input.channels) {
        return makeError(ErrorCode::wrongSize, "The network needs an image of other channels.");
    }
    std::vector<PlanarImage> values{input};
    for (const Operation& operation : model.graph().operations) {
        values.push_back(std::visit(Evaluation(model, values), operation));
    }
    return values[model.graph().output];
}

}  // namespace quillmere::neural
