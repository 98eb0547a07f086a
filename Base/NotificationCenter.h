// Process-wide notifications: whoever posts one need not know who listens.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Base/Published.h"

namespace quillmere {

/// Any thread may post and observe. Observers run on the poster's thread before `post` returns, in
/// the order in which they were added; the rules of `Published` hold for them.
class NotificationCenter {
public:
    void post(std::string_view name) { posted_.set(std::string(name)); }

    /// The observer hears of posts of this name until its subscription ends.
    [[nodiscard]] Subscription addObserver(std::string_view name, std::function<void()> observer) {
        return posted_.subscribe(
            [name = std::string(name), observer = std::move(observer)](const std::string& posted) {
                if (posted == name) observer();
            });
    }

private:
    Published<std::string> posted_;
};

}  // namespace quillmere
