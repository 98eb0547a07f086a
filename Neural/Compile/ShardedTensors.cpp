#include "Neural/Compile/ShardedTensors.h"

#include <cstring>
#include <nlohmann/json.hpp>

#include "Neural/Compile/GraphBuilder.h"

namespace quillmere::neural {
namespace {

using Json = nlohmann::json;

std::vector<std::byte> readShards(const Json& paths, const std::filesystem::path& folder,
                                  SourceFiles& files) {
    std::vector<std::byte> bytes;
    for (const Json& path : paths) {
        const MappedFile shard = files.open(folder / path.get<std::string>());
        bytes.insert(bytes.end(), shard.bytes().begin(), shard.bytes().end());
    }
    return bytes;
}

std::vector<std::size_t> readShape(const Json& json) {
    std::vector<std::size_t> shape;
    for (const Json& value : json) {
        if (!value.is_number_unsigned()) throw ImportFailure{"a tensor has an absurd shape"};
        shape.push_back(value.get<std::size_t>());
    }
    return shape;
}

std::vector<float> dequantise(std::span<const std::byte> bytes, const Json& quantisation) {
    if (quantisation.at("dtype") != "uint8") {
        throw ImportFailure{"a tensor is quantised otherwise than to 8 bits"};
    }
    const auto scale = quantisation.at("scale").get<double>();
    const auto least = quantisation.at("min").get<double>();
    std::vector<float> values;
    values.reserve(bytes.size());
    for (const std::byte byte : bytes) {
        values.push_back(static_cast<float>(std::to_integer<int>(byte) * scale + least));
    }
    return values;
}

}  // namespace

ShardedTensors::ShardedTensors(const Json& manifest, const std::filesystem::path& folder,
                               SourceFiles& files) {
    for (const Json& group : manifest) {
        const std::vector<std::byte> bytes = readShards(group.at("paths"), folder, files);
        std::span<const std::byte> left(bytes);
        for (const Json& entry : group.at("weights")) {
            const auto name = entry.at("name").get<std::string>();
            if (entry.at("dtype") != "float32") {
                throw ImportFailure{"the tensor \"" + name + "\" is not single precision"};
            }
            Tensor tensor{readShape(entry.at("shape")), {}};
            const bool quantised = entry.contains("quantization");
            std::size_t size = quantised ? 1 : sizeof(float);
            for (const std::size_t dimension : tensor.shape) {
                // Checked before each product, which therefore can't overflow.
                if (dimension == 0 || size > left.size() / dimension) {
                    throw ImportFailure{"the weights end too early, at \"" + name + "\""};
                }
                size *= dimension;
            }
            if (quantised) {
                tensor.values = dequantise(left.first(size), entry.at("quantization"));
            } else {
                tensor.values.resize(size / sizeof(float));
                std::memcpy(tensor.values.data(), left.data(), size);
            }
            left = left.subspan(size);
            if (!tensors_.emplace(name, std::move(tensor)).second) {
                throw ImportFailure{"the tensor \"" + name + "\" is there twice"};
            }
        }
        if (!left.empty()) throw ImportFailure{"the weights go on after the last tensor"};
    }
}

const ShardedTensors::Tensor& ShardedTensors::find(const std::string& name) const {
    const auto found = tensors_.find(name);
    if (found == tensors_.end()) throw ImportFailure{"the tensor \"" + name + "\" is missing"};
    return found->second;
}

}  // namespace quillmere::neural
