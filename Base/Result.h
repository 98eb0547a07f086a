// A value, or the error that stood in its way.
#pragma once

#include <utility>
#include <variant>

#include "Base/Error.h"
#include "Base/Invariant.h"

namespace quillmere {

/// What a fallible operation returns. Reading the side that is not there is a broken invariant.
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

    explicit operator bool() const noexcept { return state_.index() == 0; }

    T& value() & { return valueOf(*this); }
    const T& value() const& { return valueOf(*this); }
    T&& value() && { return std::move(valueOf(*this)); }

    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T&& operator*() && { return std::move(*this).value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    const Error& error() const {
        if (*this) invariantBroken();
        return std::get<1>(state_);
    }

private:
    template <class Self>
    static auto& valueOf(Self& self) {
        if (!self) invariantBroken();
        return std::get<0>(self.state_);
    }

    std::variant<T, Error> state_;
};

/// The answer of an operation that only succeeds or fails: `return {};` is success.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : state_(std::move(error)) {}

    explicit operator bool() const noexcept { return state_.index() == 0; }

    const Error& error() const {
        if (*this) invariantBroken();
        return std::get<1>(state_);
    }

private:
    std::variant<std::monostate, Error> state_;
};

}  // namespace quillmere
