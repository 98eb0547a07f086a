// Alerts that belong to no screen.
#pragma once

#include <functional>

#include "Desktop/Qml/Bridges/AlertBridge.h"
#include "Platform/Application/UIAlertController.h"

namespace quillmere {

/// One at a time: a later alert takes the place of an earlier one.
class QtAlert final : public UIAlertController {
public:
    void present(std::string title, std::string message, std::string button,
                 std::function<void()> confirmed, UIViewController&) override {
        alert.set(AlertTypes::singleButton(
            std::move(title), std::move(message),
            {std::move(button), AlertButton::Role::standard, std::move(confirmed)}));
    }

    Published<std::optional<AlertTypes>> alert;
};

}  // namespace quillmere
