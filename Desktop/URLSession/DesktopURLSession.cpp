#include "Desktop/URLSession/DesktopURLSession.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "Desktop/URLSession/Transfer.h"

namespace quillmere {

/// The requests that were resumed and whose handlers have not returned.
class DesktopURLSession::Requests {
public:
    /// False once the session has ended.
    bool add(const std::shared_ptr<Transfer>& transfer) {
        const std::lock_guard lock(mutex_);
        if (!ended_) threads_.emplace(transfer, std::thread::id());
        return !ended_;
    }

    /// From here on, `transfer` runs on this thread.
    void enter(const std::shared_ptr<Transfer>& transfer) {
        const std::lock_guard lock(mutex_);
        threads_[transfer] = std::this_thread::get_id();
    }

    void leave(const std::shared_ptr<Transfer>& transfer) {
        const std::lock_guard lock(mutex_);
        threads_.erase(transfer);
        left_.notify_all();
    }

    /// Cancels all, and waits for those that don't run on this very thread.
    void end() {
        std::unique_lock lock(mutex_);
        ended_ = true;
        for (const auto& [transfer, thread] : threads_) transfer->cancel();
        left_.wait(lock, [this] {
            return std::all_of(threads_.begin(), threads_.end(), [](const auto& entry) {
                return entry.second == std::this_thread::get_id();
            });
        });
    }

private:
    std::mutex mutex_;
    std::condition_variable left_;
    bool ended_ = false;
    std::map<std::shared_ptr<Transfer>, std::thread::id> threads_;
};

class DesktopURLSession::Task final : public URLSessionDataTask {
public:
    Task(Dispatch& dispatch, std::shared_ptr<Requests> requests, std::shared_ptr<Transfer> transfer,
         CompletionHandler handler)
        : dispatch_(dispatch),
          requests_(std::move(requests)),
          transfer_(std::move(transfer)),
          handler_(std::move(handler)) {}

    void resume() override {
        const std::lock_guard lock(mutex_);
        const auto transfer = std::exchange(transfer_, nullptr);
        if (!transfer || !requests_->add(transfer)) return;
        dispatch_.globalQueue(QualityOfService::utility)
            .async([requests = requests_, transfer, handler = std::move(handler_)]() mutable {
                requests->enter(transfer);
                handler(transfer->perform());
                handler = nullptr;  // what it holds may not outlive the session either
                requests->leave(transfer);
            });
    }

private:
    Dispatch& dispatch_;
    const std::shared_ptr<Requests> requests_;
    std::mutex mutex_;
    std::shared_ptr<Transfer> transfer_;  // null once resumed
    CompletionHandler handler_;
};

DesktopURLSession::DesktopURLSession(Dispatch& dispatch,
                                     std::filesystem::path certificateAuthorities)
    : dispatch_(dispatch),
      certificateAuthorities_(std::move(certificateAuthorities)),
      requests_(std::make_shared<Requests>()) {}

DesktopURLSession::~DesktopURLSession() { requests_->end(); }

std::unique_ptr<URLSessionDataTask> DesktopURLSession::dataTaskWithRequest(
    URLRequest request, CompletionHandler completionHandler) {
    return std::make_unique<Task>(
        dispatch_, requests_,
        std::make_shared<Transfer>(std::move(request), certificateAuthorities_),
        std::move(completionHandler));
}

}  // namespace quillmere
