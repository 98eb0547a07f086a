#include "Desktop/Photos/FolderWatch.h"

#include <sys/inotify.h>

#include <cstring>
#include <string_view>

namespace quillmere {
namespace {

// A new name of an old file is told as its creation; bytes count once they are all there.
constexpr std::uint32_t events = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_FROM | IN_MOVED_TO |
                                 IN_DELETE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::size_t bufferSize = 65536;

}  // namespace

bool liesIn(const std::filesystem::path& path, const std::filesystem::path& folder) {
    const std::string_view inner = path.native();
    const std::string_view outer = folder.native();
    return inner.starts_with(outer) && (inner.size() == outer.size() || inner[outer.size()] == '/');
}

FolderWatch::FolderWatch() : notices_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

void FolderWatch::add(const std::filesystem::path& folder) {
    if (!notices_.isOpen()) return;
    const int number = inotify_add_watch(notices_.number(), folder.c_str(), events);
    if (number >= 0) folders_[number] = folder;
}

void FolderWatch::remove(const std::filesystem::path& folder) {
    for (auto watched = folders_.begin(); watched != folders_.end();) {
        if (liesIn(watched->second, folder)) {
            inotify_rm_watch(notices_.number(), watched->first);
            watched = folders_.erase(watched);
        } else {
            ++watched;
        }
    }
}

FolderWatch::Changes FolderWatch::read() {
    Changes changes;
    alignas(inotify_event) char buffer[bufferSize];
    for (;;) {
        const ssize_t count = ::read(notices_.number(), buffer, sizeof buffer);
        if (count <= 0) return changes;
        for (const char* at = buffer; at < buffer + count;) {
            inotify_event event{};
            std::memcpy(&event, at, sizeof event);
            const char* name = at + sizeof event;
            at = name + event.len;
            if (event.mask & IN_Q_OVERFLOW) changes.isIncomplete = true;
            const auto folder = folders_.find(event.wd);
            if (folder == folders_.end()) continue;
            if (event.mask & IN_IGNORED) {
                folders_.erase(folder);
            } else if (event.len == 0) {
                changes.paths.insert(folder->second);
            } else if (name[0] != '.') {
                changes.paths.insert(folder->second / name);
            }
        }
    }
}

}  // namespace quillmere
