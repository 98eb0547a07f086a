// The weights of a layered topology: named tensors, one after the other, cut into files.
#pragma once

#include <filesystem>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "Neural/Compile/SourceFiles.h"

namespace quillmere::neural {

/// All tensors of a weights manifest, in single precision.
class ShardedTensors {
public:
    struct Tensor {
        std::vector<std::size_t> shape;
        std::vector<float> values;  // row-major
    };

    /// Reads the shards from `folder`. A tensor of type float32 is stored as such, or as bytes q
    /// with the meaning q * scale + min. Throws `ImportFailure`, or nlohmann::json::exception where
    /// the manifest has other fields.
    ShardedTensors(const nlohmann::json& manifest, const std::filesystem::path& folder,
                   SourceFiles& files);

    /// Throws `ImportFailure` where there is none of that name.
    const Tensor& find(const std::string& name) const;

private:
    std::map<std::string, Tensor> tensors_;
};

}  // namespace quillmere::neural
