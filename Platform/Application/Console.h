// Plain lines for whoever debugs the application.
#pragma once

#include <string_view>

namespace quillmere {

/// May be called from any thread; a line is never mixed with another.
class Console {
public:
    virtual ~Console() = default;

    /// `line` carries no line feed of its own.
    virtual void print(std::string_view line) = 0;
};

}  // namespace quillmere
