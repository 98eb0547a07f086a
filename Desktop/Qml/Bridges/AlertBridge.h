// The alert of a screen.
#pragma once

#include <QStringList>
#include <optional>

#include "Desktop/Qml/Bridges/Bridge.h"
#include "Quillmere/Views/Common/AlertTypes.h"

namespace quillmere {

/// Bound to a screen's `alert`, which outlives this.
class AlertBridge final : public Bridge {
    Q_OBJECT
    Q_PROPERTY(bool isShown READ isShown NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)
    /// Empty for an alert with the system's own button.
    Q_PROPERTY(QStringList buttons READ buttons NOTIFY changed)

public:
    explicit AlertBridge(Published<std::optional<AlertTypes>>& alert, QObject* parent = nullptr)
        : Bridge(parent), alert_(alert) {
        watch(alert, &AlertBridge::changed);
    }

    bool isShown() const { return alert_.get().has_value(); }
    QString title() const {
        const auto alert = alert_.get();
        return alert ? qt(alert->title()) : QString();
    }
    QString message() const {
        const auto alert = alert_.get();
        return alert ? qt(alert->message().value_or(std::string())) : QString();
    }
    QStringList buttons() const {
        QStringList titles;
        if (const auto alert = alert_.get()) {
            for (const AlertButton& button : alert->buttons()) titles << qt(button.title);
        }
        return titles;
    }

    /// Closes it by its n-th button, or without one: that is its button to cancel, where it has
    /// such.
    Q_INVOKABLE void close(int button) {
        const auto alert = alert_.get();
        alert_.set(std::nullopt);
        if (!alert) return;
        for (int number = 0; const AlertButton& each : alert->buttons()) {
            const bool isChosen =
                button < 0 ? each.role == AlertButton::Role::cancel : number++ == button;
            if (isChosen && each.action) return each.action();
        }
    }

signals:
    void changed();

private:
    Published<std::optional<AlertTypes>>& alert_;
};

}  // namespace quillmere
