// The application where it has no windows: on the command line.
#pragma once

#include "Desktop/Application/SleepInhibitor.h"
#include "Platform/Application/UIApplication.h"

namespace quillmere {

class HeadlessApplication final : public UIApplication {
public:
    std::vector<UIScene*> connectedScenes() const override { return {}; }

    void setIdleTimerDisabled(bool disabled) override {
        disabled ? sleep_.inhibit() : sleep_.release();
    }

    bool canOpenURL(std::string_view, std::function<void(bool)>) override { return false; }
    void openURL(std::string, std::function<void(bool)> completionHandler) override {
        if (completionHandler) completionHandler(false);
    }

private:
    SleepInhibitor sleep_;
};

}  // namespace quillmere
