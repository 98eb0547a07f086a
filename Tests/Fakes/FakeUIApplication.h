// Windows and controllers as a test puts them together.
#pragma once

#include <algorithm>
#include <initializer_list>

#include "Platform/Application/UIApplication.h"

namespace quillmere {

/// What all kinds of controllers have in common.
template <class Kind>
class FakeController : public Kind {
public:
    UIViewController* presented = nullptr;
    UIViewController* parent = nullptr;
    UINavigationController* navigation = nullptr;

    UIViewController* presentedViewController() const override { return presented; }
    UIViewController* parentViewController() const override { return parent; }
    UINavigationController* navigationController() const override { return navigation; }
};

class FakeViewController final : public FakeController<UIViewController> {};

class FakeNavigationController final : public FakeController<UINavigationController> {
public:
    std::vector<UIViewController*> stack;
    bool goesBackBySwipe = true;

    std::vector<UIViewController*> viewControllers() const override { return stack; }
    void removeInteractivePopGestureRecognizer() override { goesBackBySwipe = false; }
};

class FakeTabBarController final : public FakeController<UITabBarController> {
public:
    std::vector<UIViewController*> tabs;
    std::size_t selected = 0;

    std::vector<UIViewController*> viewControllers() const override { return tabs; }
    std::size_t selectedIndex() const override { return selected; }
};

class FakeWindow final : public UIWindow {
public:
    FakeWindow(bool key, UIViewController* root) : key_(key), root_(root) {}

    bool isKeyWindow() const override { return key_; }
    UIViewController* rootViewController() const override { return root_; }

private:
    bool key_;
    UIViewController* root_;
};

class FakeWindowScene final : public UIWindowScene {
public:
    std::vector<UIWindow*> shown;

    std::vector<UIWindow*> windows() const override { return shown; }
};

class FakeUIApplication final : public UIApplication {
public:
    std::vector<UIScene*> scenes;
    bool idleTimerDisabled = false;

    std::vector<UIScene*> connectedScenes() const override { return scenes; }
    std::vector<std::string> openable;  // beginnings of addresses
    std::vector<std::string> opened;
    std::function<void(bool)> answered;  // of the last question

    void setIdleTimerDisabled(bool disabled) override { idleTimerDisabled = disabled; }
    bool canOpenURL(std::string_view url, std::function<void(bool)> later) override {
        answered = std::move(later);
        return std::any_of(openable.begin(), openable.end(),
                           [&](const std::string& start) { return url.starts_with(start); });
    }
    void openURL(std::string url, std::function<void(bool)> completionHandler) override {
        const bool can = canOpenURL(url, {});
        opened.push_back(std::move(url));
        if (completionHandler) completionHandler(can);
    }
};

}  // namespace quillmere
