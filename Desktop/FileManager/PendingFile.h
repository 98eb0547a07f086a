// A file that is being written and has not got its name yet.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "Desktop/FileManager/FileDescriptor.h"

namespace quillmere {

/// Every operation answers 0 or the system's error number. Without `commit`, nothing stays.
class PendingFile {
public:
    /// For the file `target`, which is an absolute path.
    explicit PendingFile(std::filesystem::path target) : target_(std::move(target)) {}
    ~PendingFile();
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    /// `mode` counts less the process's mask.
    int open(unsigned mode);
    int write(std::span<const std::byte> contents);
    /// Brings the bytes to the disk.
    int flush();
    int setMode(unsigned mode);

    /// Gives the file its name; EEXIST where the name is taken.
    int commit();
    /// Gives the file its name, in the place of what had it.
    int commitReplacing();

    /// For whoever writes at places of its own choice; open after `open`.
    int descriptor() const { return file_.number(); }

private:
    int openNamed(unsigned mode);
    void lock() const;
    int linkTo(const std::filesystem::path& name);
    void removeAbandoned() const;
    std::string hiddenPrefix() const;
    std::filesystem::path hiddenName() const;

    std::filesystem::path target_;
    FileDescriptor file_;
    std::optional<std::filesystem::path> name_;  // the hidden one, while the file has it
};

}  // namespace quillmere
