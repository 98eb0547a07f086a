// The alerts that screens show.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/Invariant.h"

namespace quillmere {

struct AlertButton {
    enum class Role { standard, cancel, destructive };

    std::string title;
    Role role = Role::standard;
    std::function<void()> action;  // may be empty: the button only closes the alert
};

/// A screen holds an optional one and shows an alert while it is set. Title and message are shown
/// as they stand, in the user's language.
class AlertTypes {
public:
    enum class Case { defaultButton, singleButton, twoButton };

    /// Closed by the system's own button.
    static AlertTypes defaultButton(std::string title, std::optional<std::string> message) {
        return {Case::defaultButton, std::move(title), std::move(message), {}};
    }
    static AlertTypes singleButton(std::string title, std::optional<std::string> message,
                                   AlertButton dismiss) {
        return {Case::singleButton, std::move(title), std::move(message), {std::move(dismiss)}};
    }
    static AlertTypes twoButton(std::string title, std::optional<std::string> message,
                                AlertButton primary, AlertButton secondary) {
        return {Case::twoButton,
                std::move(title),
                std::move(message),
                {std::move(primary), std::move(secondary)}};
    }

    /// Alerts of one case count as the same alert: a new text replaces the old one in place.
    std::string_view id() const {
        switch (kind_) {
            case Case::defaultButton:
                return "ok";
            case Case::singleButton:
                return "singleButton";
            case Case::twoButton:
                return "twoButton";
        }
        invariantBroken();
    }

    const std::string& title() const { return title_; }
    const std::optional<std::string>& message() const { return message_; }
    /// In the order of their showing; none means the system's own button.
    const std::vector<AlertButton>& buttons() const { return buttons_; }

private:
    AlertTypes(Case kind, std::string title, std::optional<std::string> message,
               std::vector<AlertButton> buttons)
        : kind_(kind),
          title_(std::move(title)),
          message_(std::move(message)),
          buttons_(std::move(buttons)) {}

    Case kind_;
    std::string title_;
    std::optional<std::string> message_;
    std::vector<AlertButton> buttons_;
};

}  // namespace quillmere
