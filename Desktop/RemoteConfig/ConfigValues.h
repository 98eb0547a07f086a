// Values as they were written down, in a property list or by a server.
#pragma once

#include <map>
#include <string>
#include <variant>

#include "Platform/RemoteConfig/RemoteConfig.h"

namespace quillmere {

/// A boolean, a number or a text.
using ConfigValue = std::variant<bool, double, std::string>;

using ConfigValues = std::map<std::string, ConfigValue, std::less<>>;

RemoteConfigValue remoteConfigValue(const ConfigValue& value, RemoteConfigSource source);

}  // namespace quillmere
