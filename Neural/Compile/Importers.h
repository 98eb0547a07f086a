// From published weights to a compiled model's contents, one function for each format.
#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "Base/Result.h"
#include "Neural/Compile/GraphBuilder.h"
#include "Neural/Model/CompiledModel.h"

namespace quillmere::neural {

/// What the published files don't say about themselves.
struct ImportOptions {
    std::filesystem::path root;  // the folder that the package was unpacked to; all paths below
                                 // are relative to it
    std::string inputName;       // of the input feature
    int range = 1;               // 1 or 255: what white is to the network
    Provenance provenance;       // `files` is filled in by the importer
};

/// The text graph (`.param`, magic number 7767517) with its weights (`.bin`): half precision
/// weights with a tag, single precision biases and slopes. Layers: Input, Split, Convolution,
/// PReLU, Concat, Eltwise, BinaryOp, Interp and PixelShuffle, with the parameters that the graph's
/// operations can express; anything else is an error.
Result<ModelContents> importParam(const std::filesystem::path& param,
                                  const std::filesystem::path& bin, const ImportOptions& options);

/// The layered topology (`model.json`, format "layers-model") with the shards beside it. Tensors
/// are single precision or quantised to 8 bits. Layers: InputLayer, Conv2D, Activation,
/// Concatenate, Add, MultiplyBeta, PixelShuffle, PixelShuffle4x and UpSampling2D; anything else is
/// an error.
Result<ModelContents> importLayers(const std::filesystem::path& modelJson,
                                   const ImportOptions& options);

/// One graph that runs all `models` on one input and yields the mean of their outputs. The models
/// must have the same range, channels and scale.
Result<ModelContents> composeMean(std::span<const CompiledModel> models,
                                  const std::string& inputName);

}  // namespace quillmere::neural
