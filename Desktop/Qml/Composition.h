// The application with windows: its logic over the desktop's adapters and Qt's.
#pragma once

#include <memory>
#include <optional>

#include "Base/Result.h"
#include "Desktop/DesktopPlatform.h"
#include "Desktop/Qml/Bridges/AppBridge.h"
#include "Desktop/Qml/Platform/HostDevice.h"
#include "Desktop/Qml/Platform/QtApplication.h"
#include "Desktop/Qml/Platform/QtMail.h"
#include "Platform/Application/SKStoreReviewController.h"
#include "Quillmere/Models/Enhance/TileEngine.h"
#include "Quillmere/QuillmereApp.h"

namespace quillmere {

/// Made once, on the main thread, when Qt is there; never destroyed, as work that is under way
/// uses it until the process ends.
class Composition {
public:
    static constexpr const char* errorDomain = "quillmere.application";

    /// In the user's language; of another edition than the installed one, if `edition` is told.
    /// Fails, with a sentence for the user, where something of the program's own is missing.
    static Result<Composition*> make(const std::optional<ProjectSettings>& edition = {});

    DesktopPlatform& platform() { return *platform_; }
    QtApplication& application() { return application_; }
    QuillmereApp& app() { return *app_; }
    HomeView& home() { return *home_; }
    AppBridge& bridge() { return *bridge_; }

private:
    struct NoReview final : SKStoreReviewController {
        void requestReviewInScene(UIWindowScene&) override {}
    };

    explicit Composition(std::unique_ptr<DesktopPlatform> platform);
    DetailPorts detailPorts();
    AppBridge::Screens screens();
    void pumpMainQueue();

    std::unique_ptr<DesktopPlatform> platform_;
    QtApplication application_;
    HostDevice host_;
    QtMail mail_;
    QtAlert alert_;
    ShareSheet shareSheet_;
    NoReview review_;
    std::unique_ptr<QuillmereApp> app_;
    std::unique_ptr<ModelCatalogue> catalogue_;
    std::unique_ptr<TileEngine> engine_;
    std::unique_ptr<VideoFileManager> videoFiles_;
    std::unique_ptr<HomeView> home_;
    std::unique_ptr<WaysIn> waysIn_;
    std::unique_ptr<AppBridge> bridge_;
};

}  // namespace quillmere
