// Filling values into a text for the user.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// Replaces each `%@` with the next value and `%n$@` with the n-th, counted from 1; `%%` is a
/// per cent sign. Anything else, and a placeholder without a value, stays as it stands.
std::string formatString(std::string_view format, const std::vector<std::string>& values);

}  // namespace quillmere
