// The machine going to sleep, and the session ending.
#pragma once

#include <QObject>
#include <functional>

namespace quillmere {

/// Main thread. Hears of sleep from the login manager over the system bus; does without where
/// there is none.
class SessionEvents final : public QObject {
    Q_OBJECT

public:
    explicit SessionEvents(std::function<void()> goesToBackground);

private slots:
    void prepareForSleep(bool begins);

private:
    std::function<void()> goesToBackground_;
};

}  // namespace quillmere
