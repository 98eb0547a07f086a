// The built-in values, in an XML property list.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "Desktop/RemoteConfig/ConfigValues.h"

namespace quillmere {

/// Nothing where the list is no dictionary. What is no boolean, number or text is left out.
std::optional<ConfigValues> configValuesFromPropertyList(std::span<const std::byte> xml);

}  // namespace quillmere
