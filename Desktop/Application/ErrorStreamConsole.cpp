#include "Desktop/Application/ErrorStreamConsole.h"

#include <cstdio>
#include <string>

namespace quillmere {

void ErrorStreamConsole::print(std::string_view line) {
    // One call: the stream's own lock keeps lines whole.
    const std::string text = std::string(line) + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace quillmere
