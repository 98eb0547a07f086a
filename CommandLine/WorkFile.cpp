#include "CommandLine/WorkFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include "CommandLine/OutputCheck.h"

namespace quillmere::cli {
namespace fs = std::filesystem;

WorkFile::WorkFile(fs::path target) : target_(std::move(target)) {
    // Short enough for any name that fits: the target's own name is not part of it.
    path_ = target_.parent_path() / (".quillmere-" + std::to_string(getpid()) + ".part");
}

WorkFile::~WorkFile() {
    std::error_code ignored;
    fs::remove(path_, ignored);
}

Result<void> WorkFile::commit(bool mayReplace) {
    int failed = 0;
    if (mayReplace) {
        if (std::rename(path_.c_str(), target_.c_str()) != 0) failed = errno;
    } else if (link(path_.c_str(), target_.c_str()) != 0) {
        failed = errno;
        // Where the file system knows no links, a look before the move has to do.
        std::error_code ignored;
        const bool canNotLink = failed == EPERM || failed == ENOTSUP || failed == ENOSYS;
        if (canNotLink && !fs::exists(fs::symlink_status(target_, ignored))) {
            failed = std::rename(path_.c_str(), target_.c_str()) == 0 ? 0 : errno;
        }
    }
    if (failed == 0) return {};
    if (failed == EEXIST || failed == EPERM) {
        return outputRefusal("%@ already exists; --force replaces it.", {target_.string()});
    }
    return outputRefusal("%@ can't be written: %@.",
                         {target_.string(), std::generic_category().message(failed)});
}

}  // namespace quillmere::cli
