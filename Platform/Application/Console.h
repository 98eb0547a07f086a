// Plain lines for whoever debugs the application.
#pragma once

#include <string_view>
#include <vector>

#include "Base/Error.h"

namespace quillmere {

/// May be called from any thread; a line is never mixed with another.
class Console {
public:
    virtual ~Console() = default;

    /// `line` carries no line feed of its own.
    virtual void print(std::string_view line) = 0;
    /// Errors that nothing else tells, in one line: what happened, and what follows from it. In the
    /// user's language, where the console can.
    virtual void report(const std::vector<Error>& errors) = 0;
};

}  // namespace quillmere
