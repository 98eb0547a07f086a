// Filling values into a localised text.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace quillmere {

/// Replaces each `%@` with the next value and `%n$@` with the n-th, counted from 1; `%%` is a
/// per cent sign. Anything else, and a placeholder without a value, stays as it stands.
std::string formatString(std::string_view format, std::initializer_list<std::string_view> values);

}  // namespace quillmere
