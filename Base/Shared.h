// The one instance of a class that a process has, made when it is first asked for.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace quillmere {

/// Any thread; the first caller makes the instance while others wait. It lives as long as this.
template <class T>
class Shared {
public:
    using Make = std::function<std::shared_ptr<T>()>;

    explicit Shared(Make make) : make_(std::move(make)) {}

    const std::shared_ptr<T>& get() {
        std::call_once(once_, [this] { instance_ = make_(); });
        return instance_;
    }

private:
    Make make_;
    std::once_flag once_;
    std::shared_ptr<T> instance_;
};

}  // namespace quillmere
