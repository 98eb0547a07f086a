#pragma once

#include <string>
#include <string_view>

namespace quillmere {

/// Answers `FirstCharacters` for texts in ASCII.
inline std::string firstBytes(std::string_view text, std::size_t count) {
    return std::string(text.substr(0, count));
}

}  // namespace quillmere
