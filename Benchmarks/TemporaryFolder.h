// Where a run of the benchmark leaves its files.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

namespace quillmere::benchmark {

/// A new folder under the system's temporary one, and itself the temporary folder of all programs
/// that are started from now on, and where they record what they do; gone with all that is in it at
/// the end.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = std::filesystem::temp_directory_path() / "quillmere-benchmark-XXXXXX";
        if (mkdtemp(name.data()) == nullptr) return;
        path_ = name;
        setenv("TMPDIR", name.c_str(), 1);
        setenv("XDG_STATE_HOME", name.c_str(), 1);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    bool made() const { return !path_.empty(); }

private:
    std::filesystem::path path_;
};

}  // namespace quillmere::benchmark
