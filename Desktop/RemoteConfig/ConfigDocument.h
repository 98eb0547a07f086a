// The document of values that a server answers with, in JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>

#include "Desktop/RemoteConfig/ConfigValues.h"

namespace quillmere {

/// Nothing where the document is no object. Lists, objects and nulls in it are left out: whoever
/// put them there gets the defaults.
std::optional<ConfigValues> configValues(const nlohmann::json& document);

nlohmann::json configDocument(const ConfigValues& values);

}  // namespace quillmere
