// Another program's view of a picture file.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

namespace quillmere {

/// What `command` prints; a test fails where it fails.
inline std::string outputOf(const std::string& command) {
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    std::string text;
    std::array<char, 4096> part{};
    while (const std::size_t count = std::fread(part.data(), 1, part.size(), pipe)) {
        text.append(part.data(), count);
    }
    EXPECT_EQ(pclose(pipe), 0) << command << ":\n" << text;
    return text;
}

/// All that ExifTool finds in a file, as "GROUP TAG" and value. What it computes itself, and what
/// belongs to the file and not to the picture, is left out.
inline std::map<std::string, std::string> byExifTool(const std::filesystem::path& file) {
    std::map<std::string, std::string> tags;
    const std::string text = outputOf("exiftool -a -G1 -n -s -s -sep / " + file.string());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        const std::string line = text.substr(at, end - at);
        at = end + 1;
        const std::size_t group = line.find("] "), colon = line.find(": ");
        if (group == std::string::npos || colon == std::string::npos) continue;
        const std::string tag =
            line.substr(1, group - 1) + line.substr(group + 1, colon - group - 1);
        const bool ours = !tag.starts_with("System ") && !tag.starts_with("ExifTool ") &&
                          !tag.starts_with("Composite ") && !tag.ends_with("MediaDataOffset") &&
                          !tag.ends_with("MediaDataSize");
        if (ours) tags[tag] += line.substr(colon + 2);
    }
    EXPECT_FALSE(tags.empty()) << text;
    return tags;
}

}  // namespace quillmere
