// An alert that belongs to no screen.
#pragma once

#include "Platform/Application/UIApplication.h"

#include <functional>
#include <string>

namespace quillmere {

class UIAlertController {
public:
    virtual ~UIAlertController() = default;

    /// An alert with one button, over `presenter`; `confirmed` runs when the user takes it. Texts
    /// are shown as they stand. Main thread.
    virtual void present(std::string title, std::string message, std::string button,
                         std::function<void()> confirmed, UIViewController& presenter) = 0;
};

}  // namespace quillmere
