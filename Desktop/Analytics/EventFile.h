// The record of events on disk: bounded, private, and shared by all running programs.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <span>
#include <string>

#include "Desktop/FileManager/FileDescriptor.h"

namespace quillmere {

/// JSON lines in `events.jsonl`; when that is full it becomes `events.1.jsonl`, in the place of
/// the one before. Files have mode 0600 in a folder of 0700. Several processes may append at once:
/// lines are never mixed, and whoever dies while writing spoils no line but its own last one.
///
/// One thread an object.
class EventFile {
public:
    struct Limits {
        std::size_t fileSize = 512 * 1024;         // of each of the two, in bytes
        std::chrono::milliseconds patience{1000};  // with another process that is writing
    };

    static constexpr const char* name = "events.jsonl";
    static constexpr const char* olderName = "events.1.jsonl";

    EventFile(std::filesystem::path folder, const Limits& limits)
        : folder_(std::move(folder)), limits_(limits) {}

    /// Each with its line feed. How many were written; the others stay out, where the disk is
    /// full, the folder refuses writing, or another process holds the file for too long.
    std::size_t append(std::span<const std::string> lines);

private:
    FileDescriptor lock() const;
    FileDescriptor open(const char* file) const;
    bool rotate() const;
    bool write(const std::string& text, std::size_t before, const FileDescriptor& file) const;

    std::filesystem::path folder_;
    Limits limits_;
};

}  // namespace quillmere
