#include "Neural/Model/ModelIdentity.h"

#include <sys/stat.h>

namespace quillmere::neural {
namespace {

std::int64_t nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

std::optional<ModelIdentity> ModelIdentity::of(const std::filesystem::path& directory) {
    ModelIdentity identity;
    auto file = identity.files.begin();
    for (const char* name : {"graph.json", "weights.bin"}) {
        struct stat status {};
        if (::stat((directory / name).c_str(), &status) != 0) return std::nullopt;
        *file++ = {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
                   nanoseconds(status.st_ctim)};
    }
    return identity;
}

}  // namespace quillmere::neural
