// Console lines on standard error, so that standard output stays what a program may read.
#pragma once

#include "Platform/Application/Console.h"

namespace quillmere {

class ErrorStreamConsole final : public Console {
public:
    void print(std::string_view line) override;
};

}  // namespace quillmere
