// The windows of the application, and where to show something in them.
#pragma once

#include <vector>

#include "Platform/Application/UIApplication.h"

namespace quillmere {

/// All windows of the application, in the order of its scenes. Main thread.
inline std::vector<UIWindow*> windowsOf(const UIApplication& application) {
    std::vector<UIWindow*> windows;
    for (UIScene* scene : application.connectedScenes()) {
        const auto* windowScene = dynamic_cast<UIWindowScene*>(scene);
        if (!windowScene) continue;
        for (UIWindow* window : windowScene->windows()) windows.push_back(window);
    }
    return windows;
}

/// The root controller of the first window that is key; null without either.
inline UIViewController* rootOfKeyWindow(const UIApplication& application) {
    for (const UIWindow* window : windowsOf(application)) {
        if (window->isKeyWindow()) return window->rootViewController();
    }
    return nullptr;
}

/// The root controller of the first window, key or not; null without either.
inline UIViewController* rootOfFirstWindow(const UIApplication& application) {
    const auto windows = windowsOf(application);
    return windows.empty() ? nullptr : windows.front()->rootViewController();
}

}  // namespace quillmere
