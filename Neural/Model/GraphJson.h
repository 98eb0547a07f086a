// The text half of a compiled model: a graph, and what is known of its weights, as JSON.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Base/Result.h"
#include "Neural/Model/Graph.h"

namespace quillmere::neural {

/// Raised whenever an older reader would misread what is written now, and whenever the importers
/// make something else of the same published weights: compiled models are kept by this number.
inline constexpr int kFormatVersion = 1;

/// All that graph.json says.
struct ModelDescription {
    Graph graph;
    std::uint64_t weightBytes = 0;
    std::string weightsSha256;

    friend bool operator==(const ModelDescription&, const ModelDescription&) = default;
};

/// The same description always gives the same text. The names must be valid UTF-8.
std::string writeGraphJson(const ModelDescription& description);

/// Accepts any bytes. On success the types are right, every reference exists, and every tensor
/// lies inside `weightBytes`; the graph's own rules are `inferShapes`'s to check.
Result<ModelDescription> parseGraphJson(std::string_view text);

/// Whether the text is what was written, by the checksum of itself that it carries.
Result<void> verifyGraphJson(std::string_view text);

}  // namespace quillmere::neural
