#pragma once

#include <string>

#include "Platform/Application/Console.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Logs each line as `console LINE`.
class FakeConsole final : public Console {
public:
    explicit FakeConsole(CallLog& log) : log_(log) {}

    void print(std::string_view line) override { log_.record("console " + std::string(line)); }
    void report(const std::vector<Error>& errors) override {
        std::string line = "console";
        for (const Error& error : errors) line += " " + error.localizedDescription;
        log_.record(line);
    }

private:
    CallLog& log_;
};

}  // namespace quillmere
