#include "Neural/Model/CompiledModel.h"

#include <new>

#include "Neural/Model/NeuralError.h"
#include "Neural/Model/Sha256.h"

namespace quillmere::neural {
namespace {

constexpr std::size_t kMaxGraphBytes = std::size_t{8} << 20;

std::string_view textOf(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Error damaged(const std::string& what) {
    return makeError(ErrorCode::malformed,
                     "The network's weights " + what + "; set the networks up again.");
}

}  // namespace

Result<CompiledModel> CompiledModel::open(const std::filesystem::path& directory) try {
    auto graphFile = MappedFile::open(directory / "graph.json");
    if (!graphFile) return graphFile.error();
    if (graphFile->bytes().size() > kMaxGraphBytes) {
        return makeError(ErrorCode::malformed, "The network's graph is absurdly large.");
    }
    auto description = parseGraphJson(textOf(graphFile->bytes()));
    if (!description) return description.error();
    auto shapes = inferShapes(description->graph);
    if (!shapes) return shapes.error();
    auto weightsFile = MappedFile::open(directory / "weights.bin");
    if (!weightsFile) return weightsFile.error();
    if (weightsFile->bytes().size() != description->weightBytes) {
        return damaged("have another length than its graph says");
    }
    CompiledModel model;
    model.graphFile_ = std::move(*graphFile);
    model.weightsFile_ = std::move(*weightsFile);
    model.description_ = std::move(*description);
    model.shapes_ = std::move(*shapes);
    return model;
} catch (const std::bad_alloc&) {
    return makeError(ErrorCode::outOfMemory, "There is not enough memory to read the network.");
}

std::span<const Half> CompiledModel::tensor(TensorId id) const {
    const TensorInfo& info = graph().tensors[id];
    // Half is two bytes, every offset a multiple of 64, and a mapping starts at a page.
    const auto* first = reinterpret_cast<const Half*>(weightsFile_.bytes().data() + info.offset);
    return {first, info.elements()};
}

Result<void> CompiledModel::verify() const {
    if (auto checked = verifyGraphJson(textOf(graphFile_.bytes())); !checked) return checked;
    if (Sha256::of(weightsFile_.bytes()) != description_.weightsSha256) {
        return damaged("were changed after they were made");
    }
    for (TensorId id = 0; id < graph().tensors.size(); ++id) {
        if (auto checked = verify(id); !checked) return checked;
    }
    return {};
}

Result<void> CompiledModel::verify(TensorId id) const {
    if (Sha256::of(std::as_bytes(tensor(id))) != graph().tensors[id].sha256) {
        return damaged("don't agree with their own checksums");
    }
    return {};
}

}  // namespace quillmere::neural
