// Console lines on standard error, so that standard output stays what a program may read.
#pragma once

#include "Platform/Application/Console.h"
#include "Platform/Localization/Localization.h"

namespace quillmere {

class ErrorStreamConsole final : public Console {
public:
    explicit ErrorStreamConsole(const Localization& localization) : localization_(localization) {}

    void print(std::string_view line) override;
    void report(const std::vector<Error>& errors) override;

private:
    const Localization& localization_;
};

}  // namespace quillmere
