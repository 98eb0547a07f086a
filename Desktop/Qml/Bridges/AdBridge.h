// The ads that are on the screen.
#pragma once

#include "Desktop/AdLibrary/AdStage.h"
#include "Desktop/Qml/Bridges/Bridge.h"
#include "Platform/Application/UIApplication.h"

namespace quillmere {

class AdBridge final : public Bridge {
    Q_OBJECT
    /// Names of applications; empty without an ad.
    Q_PROPERTY(QString fullScreen READ fullScreen NOTIFY fullScreenChanged)
    Q_PROPERTY(QString banner READ banner NOTIFY bannerChanged)
    /// The signs of these, by the names of Symbol.qml.
    Q_PROPERTY(QString fullScreenIcon READ fullScreenIcon NOTIFY fullScreenChanged)
    Q_PROPERTY(QString bannerIcon READ bannerIcon NOTIFY bannerChanged)

public:
    struct Ports {
        AdStage& stage;
        UIApplication& application;
        const ProjectSettings& settings;
    };

    explicit AdBridge(const Ports& ports) : ports_(ports) {
        watch(ports.stage.fullScreen, &AdBridge::fullScreenChanged);
        watch(ports.stage.banner, &AdBridge::bannerChanged);
    }

    QString fullScreen() const { return nameOf(ports_.stage.fullScreen.get()); }
    QString banner() const { return nameOf(ports_.stage.banner.get()); }
    QString fullScreenIcon() const { return iconOf(ports_.stage.fullScreen.get()); }
    QString bannerIcon() const { return iconOf(ports_.stage.banner.get()); }

    Q_INVOKABLE void closeFullScreen() {
        if (ports_.stage.fullScreen.get()) ports_.stage.fullScreen.set(nullptr);
    }
    Q_INVOKABLE void openFullScreen() { open(ports_.stage.fullScreen.get()); }
    Q_INVOKABLE void openBanner() { open(ports_.stage.banner.get()); }

signals:
    void fullScreenChanged();
    void bannerChanged();

private:
    static QString nameOf(const MoreApp* app) { return app ? QString(app->title) : QString(); }
    static QString iconOf(const MoreApp* app) { return app ? QString(app->icon) : QString(); }
    void open(const MoreApp* app) {
        const auto page = app ? storePageOf(*app, ports_.settings) : std::nullopt;
        if (page) ports_.application.openURL(*page, nullptr);
    }

    Ports ports_;
};

}  // namespace quillmere
