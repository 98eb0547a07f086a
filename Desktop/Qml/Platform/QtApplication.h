// The application's window as the logic sees it, and the system's ways to open addresses.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWindow>
#include <functional>
#include <map>
#include <vector>

#include "Desktop/Application/SleepInhibitor.h"
#include "Platform/Application/UIApplication.h"

namespace quillmere {

/// One scene with one window, which is the key window while it can be seen: a screen reader presses
/// its controls without making it active. Sheets and alerts lie in its QML, so that its root
/// controller is always the top one.
class QtApplication final : public UIApplication {
public:
    void setWindow(QWindow* window) { window_.window = window; }

    std::vector<UIScene*> connectedScenes() const override;
    void setIdleTimerDisabled(bool disabled) override {
        disabled ? sleep_.inhibit() : sleep_.release();
    }
    bool canOpenURL(std::string_view url, std::function<void(bool)> answered) override;
    void openURL(std::string url, std::function<void(bool)> completionHandler) override;

private:
    struct Root final : UIViewController {
        UIViewController* presentedViewController() const override { return nullptr; }
        UIViewController* parentViewController() const override { return nullptr; }
        UINavigationController* navigationController() const override { return nullptr; }
    };
    struct Window final : UIWindow {
        QPointer<QWindow> window;
        Root root;
        bool isKeyWindow() const override { return window && window->isVisible(); }
        UIViewController* rootViewController() const override { return const_cast<Root*>(&root); }
    };
    struct Scene final : UIWindowScene {
        explicit Scene(Window& window) : window_(window) {}
        std::vector<UIWindow*> windows() const override {
            if (!window_.window) return {};
            return {&window_};
        }
        Window& window_;
    };

    using Answered = std::function<void(bool)>;

    /// Tells at once, once it is known, or else when the system has answered.
    void askWhoOpens(const QString& scheme, Answered answered);
    void answer(const QString& scheme, bool opens);

    SleepInhibitor sleep_;
    Window window_;
    mutable Scene scene_{window_};
    /// Schemes that the system was asked for; what has none is no address.
    std::map<QString, bool> opens_{{QString(), false}};
    std::map<QString, std::vector<Answered>> asking_;  // those that it is being asked for
    QObject queries_;                                  // owns the programs that ask
};

}  // namespace quillmere
