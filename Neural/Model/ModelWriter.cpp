#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <system_error>

#include "Neural/Model/CompiledModel.h"
#include "Neural/Model/NeuralError.h"
#include "Neural/Model/Sha256.h"

namespace quillmere::neural {
namespace {

namespace fs = std::filesystem;

static_assert(std::endian::native == std::endian::little, "weights.bin is little-endian");

Error unwritable(const fs::path& path, int reason) {
    return makeError(ErrorCode::unreadable, "The network can't be written to " + path.string() +
                                                ": " + std::generic_category().message(reason) +
                                                ".");
}

// A directory beside the final one, gone again unless it was renamed.
class TemporaryDirectory {
public:
    explicit TemporaryDirectory(const fs::path& beside)
        : path_(beside.string() + "." + std::to_string(::getpid()) + ".tmp") {
        std::error_code ignored;
        fs::remove_all(path_, ignored);  // of an earlier process with the same number
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

// Writes and waits until it is on the disk; 0 or the reason.
int writeFile(const fs::path& path, std::span<const std::byte> bytes) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file < 0) return errno;
    int reason = 0;
    while (!bytes.empty() && reason == 0) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        } else if (written < 0 && errno != EINTR) {
            reason = errno;
        }
    }
    if (reason == 0 && ::fsync(file) != 0) reason = errno;
    if (::close(file) != 0 && reason == 0) reason = errno;
    return reason;
}

std::vector<std::byte> layOut(Graph& graph, std::span<const std::vector<Half>> tensors) {
    std::vector<std::byte> weights;
    for (TensorId id = 0; id < tensors.size(); ++id) {
        const auto bytes = std::as_bytes(std::span(tensors[id]));
        weights.resize((weights.size() + kTensorAlignment - 1) / kTensorAlignment *
                       kTensorAlignment);
        graph.tensors[id].offset = weights.size();
        graph.tensors[id].sha256 = Sha256::of(bytes);
        weights.insert(weights.end(), bytes.begin(), bytes.end());
    }
    return weights;
}

// Puts `made` in the place of `final`; 0 or the reason. A model that was there ends up in `made`.
int exchange(const fs::path& made, const fs::path& final) {
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(final, ignored))) {
        if (!fs::is_regular_file(final / "graph.json", ignored)) return EEXIST;
        return ::renameat2(AT_FDCWD, made.c_str(), AT_FDCWD, final.c_str(), RENAME_EXCHANGE) == 0
                   ? 0
                   : errno;
    }
    return ::rename(made.c_str(), final.c_str()) == 0 ? 0 : errno;
}

}  // namespace

Result<void> writeModel(Graph graph, std::span<const std::vector<Half>> tensors,
                        const std::filesystem::path& directory) {
    if (tensors.size() != graph.tensors.size()) invariantBroken();
    for (TensorId id = 0; id < tensors.size(); ++id) {
        if (tensors[id].size() != graph.tensors[id].elements()) invariantBroken();
    }
    if (auto shapes = inferShapes(graph); !shapes) return shapes.error();

    const std::vector<std::byte> weights = layOut(graph, tensors);
    const std::string text = writeGraphJson({graph, weights.size(), Sha256::of(weights)});

    // "a/b/" and "a/b" are the same directory.
    std::error_code failure;
    fs::path final = fs::absolute(directory, failure).lexically_normal();
    if (failure) return unwritable(directory, failure.value());
    if (!final.has_filename()) final = final.parent_path();
    const TemporaryDirectory made(final);
    fs::create_directories(final.parent_path(), failure);
    if (!failure) fs::create_directory(made.path(), failure);
    if (failure) return unwritable(directory, failure.value());
    for (const auto& [name, bytes] :
         {std::pair("graph.json", std::as_bytes(std::span(text))),
          std::pair("weights.bin", std::as_bytes(std::span(weights)))}) {
        if (const int reason = writeFile(made.path() / name, bytes); reason != 0) {
            return unwritable(directory, reason);
        }
    }
    if (const int reason = exchange(made.path(), final); reason != 0) {
        return unwritable(directory, reason);
    }
    return {};
}

}  // namespace quillmere::neural
