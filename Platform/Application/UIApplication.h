// The windows of the application, and the controllers that show something in them.
//
// All of this belongs to the main thread. What is handed out lives until the main queue's next
// block, so nobody keeps it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

class UINavigationController;

/// Something that fills a window or lies over another controller.
class UIViewController {
public:
    virtual ~UIViewController() = default;

    /// What lies over this one, if anything.
    virtual UIViewController* presentedViewController() const = 0;
    virtual UIViewController* parentViewController() const = 0;
    /// The nearest one that this controller stands in, if any.
    virtual UINavigationController* navigationController() const = 0;
};

/// A stack of controllers.
class UINavigationController : public UIViewController {
public:
    /// From the bottom of the stack to what is seen.
    virtual std::vector<UIViewController*> viewControllers() const = 0;

    /// Takes away the gesture that goes back by a swipe, for the whole stack and for good. Nothing
    /// happens where there is none.
    virtual void removeInteractivePopGestureRecognizer() = 0;
};

/// Controllers side by side, one of which is seen.
class UITabBarController : public UIViewController {
public:
    virtual std::vector<UIViewController*> viewControllers() const = 0;
    /// A valid index, as there is at least one controller.
    virtual std::size_t selectedIndex() const = 0;
};

class UIWindow {
public:
    virtual ~UIWindow() = default;

    /// Whether it takes the keyboard.
    virtual bool isKeyWindow() const = 0;
    virtual UIViewController* rootViewController() const = 0;
};

/// One way in which the application is shown; not each has windows.
class UIScene {
public:
    virtual ~UIScene() = default;
};

class UIWindowScene : public UIScene {
public:
    virtual std::vector<UIWindow*> windows() const = 0;
};

class UIApplication {
public:
    virtual ~UIApplication() = default;

    virtual std::vector<UIScene*> connectedScenes() const = 0;

    /// Keeps the machine from sleeping for want of a user, while work goes on.
    virtual void setIdleTimerDisabled(bool disabled) = 0;

    /// Whether some program opens addresses of that scheme, as far as is known at once. Where the
    /// system takes a while to tell, this is no, and `answered` hears of it later, on the main
    /// thread.
    virtual bool canOpenURL(std::string_view url, std::function<void(bool can)> answered) = 0;
    /// Hands the address to the program that opens it; `completionHandler`, which may be empty, is
    /// told on the main thread whether there was one.
    virtual void openURL(std::string url, std::function<void(bool opened)> completionHandler) = 0;
};

}  // namespace quillmere
