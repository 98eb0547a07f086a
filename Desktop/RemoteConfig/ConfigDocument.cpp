#include "Desktop/RemoteConfig/ConfigDocument.h"

#include <nlohmann/json.hpp>

namespace quillmere {

std::optional<ConfigValues> configValues(const nlohmann::json& document) {
    if (!document.is_object()) return std::nullopt;
    ConfigValues values;
    for (const auto& [key, value] : document.items()) {
        if (value.is_boolean()) {
            values[key] = value.get<bool>();
        } else if (value.is_number()) {
            values[key] = value.get<double>();
        } else if (value.is_string()) {
            values[key] = value.get<std::string>();
        }
    }
    return values;
}

nlohmann::json configDocument(const ConfigValues& values) {
    nlohmann::json document = nlohmann::json::object();
    for (const auto& [key, value] : values) {
        std::visit([&, &name = key](const auto& scalar) { document[name] = scalar; }, value);
    }
    return document;
}

}  // namespace quillmere
