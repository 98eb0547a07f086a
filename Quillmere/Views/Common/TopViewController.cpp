#include "Quillmere/Views/Common/TopViewController.h"

#include <algorithm>

namespace quillmere {
namespace {

UIViewController* bottomOf(const UINavigationController& navigation) {
    const auto stack = navigation.viewControllers();
    return stack.empty() ? nullptr : stack.front();
}

}  // namespace

UIViewController* topViewController(const UIApplication& application, CrashLog& crashLog) {
    const auto missing = [&](const char* line) -> UIViewController* {
        crashLog.log(line);
        return nullptr;
    };

    const auto scenes = application.connectedScenes();
    const auto* scene = scenes.empty() ? nullptr : dynamic_cast<UIWindowScene*>(scenes.front());
    if (!scene) return missing("windowScene == nil");

    const auto windows = scene->windows();
    const auto key = std::find_if(windows.begin(), windows.end(),
                                  [](const UIWindow* window) { return window->isKeyWindow(); });
    if (key == windows.end()) return missing("keyWindow == nil");

    UIViewController* top = (*key)->rootViewController();
    if (!top) return missing("topViewController == nil");
    while (UIViewController* presented = top->presentedViewController()) top = presented;

    if (const auto* navigation = dynamic_cast<UINavigationController*>(top)) {
        return bottomOf(*navigation);
    }
    if (const auto* tabs = dynamic_cast<UITabBarController*>(top)) {
        UIViewController* selected = tabs->viewControllers().at(tabs->selectedIndex());
        const auto* navigation = dynamic_cast<UINavigationController*>(selected);
        return navigation ? bottomOf(*navigation) : selected;
    }
    return top;
}

}  // namespace quillmere
