#pragma once

#include <condition_variable>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/URLSession/URLSession.h"

namespace quillmere {

/// Answers by address, as a test sets it before; `requests` tells what was asked.
class FakeURLSession final : public URLSession {
public:
    explicit FakeURLSession(Dispatch& dispatch) : state_(std::make_shared<State>(dispatch)) {}

    /// Those that were waiting for an answer that never comes are cancelled.
    ~FakeURLSession() override {
        std::vector<CompletionHandler> waiting;
        {
            const std::lock_guard lock(state_->mutex);
            state_->ended = true;
            waiting.swap(state_->waiting);
        }
        for (CompletionHandler& handler : waiting) {
            complete(state_, std::move(handler), failure(URLErrorCode::cancelled));
        }
        std::unique_lock lock(state_->mutex);
        state_->returned.wait(lock, [this] {
            return state_->pending == state_->running.count(std::this_thread::get_id());
        });
    }

    /// Addresses that are not set answer 404.
    std::map<std::string, Result<URLAnswer>> answers;
    std::set<std::string> neverAnswered;

    std::vector<URLRequest> requests() const {
        const std::lock_guard lock(state_->mutex);
        return state_->requests;
    }

    std::unique_ptr<URLSessionDataTask> dataTaskWithRequest(
        URLRequest request, CompletionHandler completionHandler) override {
        Result<URLAnswer> answer = answerTo(request);
        const bool never = neverAnswered.contains(request.url);
        return std::make_unique<Task>(state_, std::move(request), std::move(answer), never,
                                      std::move(completionHandler));
    }

    static Error failure(URLErrorCode code) {
        return {errorDomain, static_cast<int>(code), "The request failed."};
    }

private:
    struct State {
        explicit State(Dispatch& d) : dispatch(d) {}

        Dispatch& dispatch;
        std::mutex mutex;
        std::condition_variable returned;
        bool ended = false;
        std::size_t pending = 0;
        std::set<std::thread::id> running;
        std::vector<URLRequest> requests;
        std::vector<CompletionHandler> waiting;
    };

    static void complete(const std::shared_ptr<State>& state, CompletionHandler handler,
                         Result<URLAnswer> answer) {
        state->dispatch.globalQueue(QualityOfService::utility)
            .async([state, handler = std::move(handler), answer = std::move(answer)]() mutable {
                const auto self = std::this_thread::get_id();
                {
                    const std::lock_guard lock(state->mutex);
                    state->running.insert(self);
                }
                handler(std::move(answer));
                handler = nullptr;
                const std::lock_guard lock(state->mutex);
                state->running.erase(self);
                --state->pending;
                state->returned.notify_all();
            });
    }

    class Task final : public URLSessionDataTask {
    public:
        Task(std::shared_ptr<State> state, URLRequest request, Result<URLAnswer> answer, bool never,
             CompletionHandler handler)
            : state_(std::move(state)),
              request_(std::move(request)),
              answer_(std::move(answer)),
              never_(never),
              handler_(std::move(handler)) {}

        void resume() override {
            const std::lock_guard lock(state_->mutex);
            CompletionHandler handler = std::exchange(handler_, nullptr);
            if (!handler || state_->ended) return;
            ++state_->pending;
            state_->requests.push_back(request_);
            if (never_) {
                state_->waiting.push_back(std::move(handler));
            } else {
                complete(state_, std::move(handler), answer_);
            }
        }

    private:
        const std::shared_ptr<State> state_;
        const URLRequest request_;
        const Result<URLAnswer> answer_;
        const bool never_;
        CompletionHandler handler_;
    };

    Result<URLAnswer> answerTo(const URLRequest& request) const {
        const auto scheme = request.url.substr(0, request.url.find("://"));
        if (scheme == request.url) return failure(URLErrorCode::badURL);
        if (scheme != "http" && scheme != "https") return failure(URLErrorCode::unsupportedURL);
        const auto found = answers.find(request.url);
        if (found == answers.end()) return URLAnswer{{}, HTTPURLResponse{404, {}}};
        if (found->second && found->second->data.size() > request.maximumDataLength) {
            return failure(URLErrorCode::dataLengthExceedsMaximum);
        }
        return found->second;
    }

    const std::shared_ptr<State> state_;
};

}  // namespace quillmere
