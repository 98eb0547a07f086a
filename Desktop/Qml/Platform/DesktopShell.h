// What the application tells the user's desktop: how far long work is, and that it has ended.
#pragma once

#include <QString>

namespace quillmere {

/// Over the session bus; does without where there is none, or nobody listens. Main thread.
class DesktopShell {
public:
    /// On the application's entry in the task bar, 0 to 1; below zero takes it away.
    void showProgress(double fraction);
    void notify(const QString& title, const QString& text);
};

}  // namespace quillmere
