// The catalogue for all threads of a process, opened when it is first needed, whatever became of
// its file.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "Base/Result.h"
#include "Desktop/FileManager/FileDescriptor.h"
#include "Desktop/Photos/Catalogue.h"
#include "Platform/Application/Console.h"

namespace quillmere {

/// `Library.sqlite` in the user's data folder. The files of the user's folders are the truth: a
/// damaged catalogue is moved aside to a name of its own, with a line on the console, and begins
/// anew. That is never done to one that is only locked, refused or on a failing disk. Any thread.
class CatalogueFile {
public:
    /// Without a folder, it lives in memory.
    CatalogueFile(std::optional<std::filesystem::path> folder, Console& console)
        : folder_(std::move(folder)), console_(console) {}

    /// Called while the catalogue is locked, each time it begins anew. Set before the first use.
    void onBeginningAnew(std::function<void()> handler) { beganAnew_ = std::move(handler); }

    /// Runs `operation` on the catalogue while no other thread does, and answers what it answers,
    /// a `Result`. Damage that shows only now is mended, once.
    template <class Operation>
    auto use(const Operation& operation) -> decltype(operation(std::declval<Catalogue&>())) {
        const std::lock_guard lock(mutex_);
        for (bool mayMend = true;; mayMend = false) {
            if (const auto opened = open(); !opened) return opened.error();
            auto answer = operation(*catalogue_);
            if (answer || answer.error().code != Database::damaged || !mayMend) return answer;
            if (const auto mended = mend(); !mended) return mended.error();
        }
    }

    /// For whoever makes or finishes a change: one process at a time, until the lock goes. Waits
    /// for others, or answers with a descriptor that is not open. In memory, nothing is locked.
    FileDescriptor lockForChange(bool waits);
    bool needsLock() const { return folder_.has_value(); }

private:
    Result<void> open();
    FileDescriptor lockFolder() const;
    Result<void> mend();
    Result<void> moveAside();

    const std::optional<std::filesystem::path> folder_;
    Console& console_;
    std::function<void()> beganAnew_ = [] {};
    std::mutex mutex_;
    std::unique_ptr<Catalogue> catalogue_;
};

}  // namespace quillmere
