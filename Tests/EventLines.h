// The record of events as a test reads it.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace quillmere {

inline std::vector<std::string> linesOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// A line that is no JSON fails the test.
inline std::vector<nlohmann::json> eventsIn(const std::filesystem::path& file) {
    std::vector<nlohmann::json> events;
    for (const std::string& line : linesOf(file)) {
        events.push_back(nlohmann::json::parse(line, nullptr, false));
        EXPECT_FALSE(events.back().is_discarded()) << line;
    }
    return events;
}

}  // namespace quillmere
