// The machine going to sleep and waking up, and the session ending.
#pragma once

#include <QObject>
#include <functional>

namespace quillmere {

/// Main thread. Hears of sleep from the login manager over the system bus; does without where
/// there is none.
class SessionEvents final : public QObject {
    Q_OBJECT

public:
    SessionEvents(std::function<void()> goesToBackground, std::function<void()> wakesUp);

private slots:
    void prepareForSleep(bool begins);

private:
    std::function<void()> goesToBackground_;
    std::function<void()> wakesUp_;
};

}  // namespace quillmere
