// Published fields as properties of an object that QML binds to.
#pragma once

#include <QMetaObject>
#include <QObject>
#include <QString>
#include <string>
#include <vector>

#include "Base/Published.h"

namespace quillmere {

inline QString qt(const std::string& text) { return QString::fromStdString(text); }
inline QString qt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Lives on the main thread. A subclass reads fields when QML asks; here its signals are emitted
/// when they have changed, on the main thread, whoever wrote them.
class Bridge : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

protected:
    template <class T, class Self>
    void watch(Published<T>& field, void (Self::*signal)()) {
        subscriptions_.push_back(field.subscribe([this, signal](const T&) {
            QMetaObject::invokeMethod(
                this, [this, signal] { (static_cast<Self*>(this)->*signal)(); },
                Qt::AutoConnection);
        }));
    }

private:
    std::vector<Subscription> subscriptions_;
};

}  // namespace quillmere
