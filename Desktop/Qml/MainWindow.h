// Opening the window of the application.
#pragma once

#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include "Desktop/Qml/Composition.h"

namespace quillmere {

/// Loads the screens over the composition's bridges; null where they can't be loaded, which Qt has
/// told. The window belongs to the engine.
QQuickWindow* openMainWindow(Composition& composition, QQmlApplicationEngine& engine);

}  // namespace quillmere
