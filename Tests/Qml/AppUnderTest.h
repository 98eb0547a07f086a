// The application in its own window, without a screen, driven as a user drives it.
#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Desktop/Qml/Composition.h"
#include "Desktop/Qml/MainWindow.h"

namespace quillmere {

/// One in a process: a test program makes it before its first test, over a home of its own.
class AppUnderTest {
public:
    /// Of this edition, when it is asked for first; else of the installed one.
    static AppUnderTest& shared(const std::optional<ProjectSettings>& edition = {});

    Composition& composition() { return *composition_; }
    AppBridge& bridge() { return composition_->bridge(); }
    QQuickWindow& window() { return *window_; }

    /// False if it does not become true within a minute.
    static bool waitUntil(const std::function<bool()>& predicate);
    /// The button of this text, or else what shows it, that can be seen; null without one.
    QQuickItem* find(const QString& text);
    QQuickItem* findItem(const std::function<bool(const QQuickItem&)>& isIt);
    /// Waits for it, and clicks on its middle. False where it does not come.
    bool click(const QString& text);
    void drag(QPointF from, QPointF to);
    void press(Qt::Key key);
    /// Into the folder of `$QUILLMERE_SCREENSHOTS`, named for the window's width and look as well.
    /// Without that folder, the window is only drawn.
    void takePicture(const std::string& name);
    static QPointF middleOf(const QQuickItem& item);
    /// What the record of events holds so far, which it is told a little later: "NAME KEY=VALUE".
    static std::vector<std::string> events();
    /// Opens the sample, lets the fastest style convert it, and saves it: the share screen comes.
    void saveSample();

private:
    explicit AppUnderTest(const std::optional<ProjectSettings>& edition);

    Composition* composition_ = nullptr;
    QQmlApplicationEngine engine_;
    QQuickWindow* window_ = nullptr;
};

/// The folder that is the user's home in the test program.
std::filesystem::path testHome();

}  // namespace quillmere
