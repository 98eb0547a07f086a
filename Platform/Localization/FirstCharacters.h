// Cutting a text where a reader sees the end of a character.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace quillmere {

/// The first `count` characters of a UTF-8 text; all of a shorter one. A character is what a reader
/// counts as one (an extended grapheme cluster of Unicode): a letter with its marks, a flag, a
/// family of joined emoji. May be called from any thread.
using FirstCharacters = std::function<std::string(std::string_view text, std::size_t count)>;

}  // namespace quillmere
