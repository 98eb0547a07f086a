// The files of published weights: read once, and remembered for the model's provenance.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Neural/Model/Graph.h"
#include "Neural/Model/MappedFile.h"

namespace quillmere::neural {

/// Opens files below the folder that a package was unpacked to. Throws `ImportFailure` where a
/// file can't be read, or a path would lead out of the folder.
class SourceFiles {
public:
    explicit SourceFiles(std::filesystem::path root) : root_(std::move(root)) {}

    MappedFile open(const std::filesystem::path& path);
    /// All that were opened, in that order.
    const std::vector<SourceFile>& opened() const { return opened_; }

private:
    std::filesystem::path root_;
    std::vector<SourceFile> opened_;
};

}  // namespace quillmere::neural
