#include "CommandLine/PrintedLine.h"

#include <cstdio>

namespace quillmere::cli {

// File names are bytes: what is no UTF-8 is shown with replacement characters.
void printLine(const Json& object) {
    const std::string line = object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
}

std::string oneLine(const std::string& text) {
    std::string line;
    for (const char c : text) {
        const bool space = c == '\n' || c == '\r' || c == '\t' || c == ' ';
        if (!space) {
            line += c;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    if (!line.empty() && line.back() == ' ') line.pop_back();
    return line;
}

}  // namespace quillmere::cli
