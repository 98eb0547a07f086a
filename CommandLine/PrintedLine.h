// Lines as programs and users read them.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace quillmere::cli {

using Json = nlohmann::ordered_json;

/// On standard output, at once.
void printLine(const Json& object);

/// `text` with each run of white space as one space.
std::string oneLine(const std::string& text);

}  // namespace quillmere::cli
