// Queues and time on the desktop.
#pragma once

#include <memory>

#include "Desktop/Dispatch/Clock.h"
#include "Desktop/Dispatch/GlobalQueue.h"
#include "Desktop/Dispatch/MainQueue.h"
#include "Desktop/Dispatch/ThreadGroup.h"
#include "Platform/Dispatch/Dispatch.h"

namespace quillmere {

/// Answers `Dispatch` with threads. Qualities of service are not told apart.
///
/// At its end, delayed blocks and those of the main queue are dropped, and it waits until every
/// other block of the global and serial queues has run; all references to serial queues must be
/// gone by then, but for those that dropped blocks hold. A process that
/// ends without waiting for work in flight ends without destroying it.
class DesktopDispatch final : public Dispatch {
public:
    explicit DesktopDispatch(std::unique_ptr<Clock> clock = std::make_unique<SteadyClock>());
    ~DesktopDispatch() override;

    MainQueue& mainQueue() override { return main_; }
    DispatchQueue& globalQueue(QualityOfService quality) override;
    std::shared_ptr<DispatchQueue> makeSerialQueue(std::string label,
                                                   QualityOfService quality) override;
    std::shared_ptr<DispatchGroup> makeGroup() override;
    std::shared_ptr<DispatchSemaphore> makeSemaphore(int count) override;
    std::chrono::nanoseconds now() const override { return clock_->now(); }

private:
    std::unique_ptr<Clock> clock_;
    ThreadGroup threads_;
    MainQueue main_;
    GlobalQueue global_;
};

}  // namespace quillmere
