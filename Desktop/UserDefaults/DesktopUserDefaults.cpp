#include "Desktop/UserDefaults/DesktopUserDefaults.h"

#include <system_error>
#include <utility>

#include "Desktop/UserDefaults/SettingsFile.h"
#include "Desktop/UserDefaults/SettingsStore.h"

namespace quillmere {
namespace fs = std::filesystem;
namespace {

std::optional<fs::path> fileIn(const std::optional<fs::path>& folder) {
    if (!folder) return std::nullopt;
    return *folder / "Settings.sqlite";
}

bool isMissing(const fs::path& file) {
    std::error_code ignored;
    return fs::status(file, ignored).type() == fs::file_type::not_found;
}

}  // namespace

DesktopUserDefaults::DesktopUserDefaults(std::optional<fs::path> folder, Console& console)
    : file_(fileIn(folder)), console_(console) {}

DesktopUserDefaults::~DesktopUserDefaults() = default;

Result<void> DesktopUserDefaults::openStore() const {
    if (!file_) {
        return Error{SettingsStore::errorDomain, SettingsStore::unavailable,
                     "There is no folder for settings; set HOME or XDG_DATA_HOME."};
    }
    // Another process may have moved a damaged file aside, or a user removed it.
    if (store_ && store_->isGone()) store_.reset();
    if (store_) return {};
    auto opened = openSettingsFile(*file_, console_);
    if (!opened) return opened.error();
    store_ = *std::move(opened);
    return {};
}

/// Damage that shows only now is mended by opening anew, once.
template <class Operation>
auto DesktopUserDefaults::onStore(const Operation& operation) const {
    using Answer = decltype(operation(*store_));
    for (bool mayMend = true;; mayMend = false) {
        if (const auto opened = openStore(); !opened) return Answer(opened.error());
        Answer answer = operation(*store_);
        if (answer || answer.error().code != SettingsStore::damaged || !mayMend) return answer;
        store_.reset();
    }
}

std::int64_t DesktopUserDefaults::integerForKey(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    if (const auto value = unstored_.find(key); value != unstored_.end()) return value->second;
    // Reading makes no file.
    if (!file_ || isMissing(*file_)) return 0;
    const auto value = onStore([&](SettingsStore& store) { return store.integer(key); });
    if (!value) complain(value.error());
    return value ? value->value_or(0) : 0;
}

bool DesktopUserDefaults::boolForKey(std::string_view key) const { return integerForKey(key) != 0; }

void DesktopUserDefaults::setInteger(std::int64_t value, std::string_view key) {
    const std::lock_guard lock(mutex_);
    // By now it may take writing.
    if (store_ && store_->isReadOnly()) store_.reset();
    const auto stored = onStore([&](SettingsStore& store) { return store.setInteger(value, key); });
    if (!stored) {
        unstored_.insert_or_assign(std::string(key), value);
        complain(stored.error());
    } else if (const auto old = unstored_.find(key); old != unstored_.end()) {
        unstored_.erase(old);
    }
}

void DesktopUserDefaults::setBool(bool value, std::string_view key) {
    setInteger(value ? 1 : 0, key);
}

bool DesktopUserDefaults::isStored() const {
    const std::lock_guard lock(mutex_);
    return unstored_.empty();
}

void DesktopUserDefaults::complain(const Error& error) const {
    if (std::exchange(complained_, true)) return;
    console_.report({error, Error{error.domain, error.code,
                                  "Settings that change now last until the program ends."}});
}

}  // namespace quillmere
