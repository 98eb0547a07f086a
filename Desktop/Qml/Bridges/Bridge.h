// Published fields as properties of an object that QML binds to.
#pragma once

#include <QMetaObject>
#include <QObject>
#include <QString>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "Base/Published.h"

namespace quillmere {

inline QString qt(const std::string& text) { return QString::fromStdString(text); }
inline QString qt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Lives on the main thread. A subclass reads fields when QML asks; here its signals are emitted
/// when they have changed, whoever wrote them: on the main thread, and a turn of its loop later, so
/// that a step of the logic is whole before a screen answers it. Changes of one turn are one.
class Bridge : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

protected:
    template <class T, class Self>
    void watch(Published<T>& field, void (Self::*signal)()) {
        const auto isPosted = std::make_shared<std::atomic<bool>>(false);
        subscriptions_.push_back(field.subscribe([this, signal, isPosted](const T&) {
            if (isPosted->exchange(true)) return;
            QMetaObject::invokeMethod(
                this,
                [this, signal, isPosted] {
                    isPosted->store(false);
                    (static_cast<Self*>(this)->*signal)();
                },
                Qt::QueuedConnection);
        }));
    }

private:
    std::vector<Subscription> subscriptions_;
};

/// QML lets go of a bridge a little later than the logic does.
template <class T>
void letGo(std::unique_ptr<T>& bridge) {
    if (bridge) bridge.release()->deleteLater();
}

}  // namespace quillmere
