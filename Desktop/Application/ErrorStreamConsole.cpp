#include "Desktop/Application/ErrorStreamConsole.h"

#include <cstdio>
#include <string>

#include "Quillmere/Models/Services/LocalizedReason.h"

namespace quillmere {

void ErrorStreamConsole::print(std::string_view line) {
    // One call: the stream's own lock keeps lines whole.
    const std::string text = std::string(line) + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void ErrorStreamConsole::report(const std::vector<Error>& errors) {
    std::string line;
    for (const Error& error : errors) {
        line += (line.empty() ? "" : " ") + localizedReason(error, localization_);
    }
    print(line);
}

}  // namespace quillmere
