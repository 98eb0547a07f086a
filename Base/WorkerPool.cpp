#include "Base/WorkerPool.h"

#include <algorithm>
#include <atomic>
#include <chrono>

#ifdef __linux__
#include <sched.h>
#endif

namespace quillmere {
namespace {

thread_local bool insideLoop = false;

// A container or `taskset` may grant fewer cores than the machine has.
std::size_t availableCores() {
#ifdef __linux__
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0) {
        return static_cast<std::size_t>(std::max(1, CPU_COUNT(&set)));
    }
#endif
    return std::max(1u, std::thread::hardware_concurrency());
}

// While a network runs, its next loop comes within microseconds, sooner than a sleeping thread
// would wake: who waits looks out for that long before it sleeps.
template <class Condition>
void lookOutFor(const Condition& condition) {
    constexpr std::chrono::microseconds patience{50};
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition() && std::chrono::steady_clock::now() < end) {
    }
}

}  // namespace

struct WorkerPool::Loop {
    const Body& body;
    std::size_t count;
    std::atomic<std::size_t> next{0};

    void run(std::size_t worker) {
        insideLoop = true;
        for (std::size_t i = next.fetch_add(1, std::memory_order_relaxed); i < count;
             i = next.fetch_add(1, std::memory_order_relaxed)) {
            body(i, worker);
        }
        insideLoop = false;
    }
};

WorkerPool::WorkerPool(std::size_t threadCount) {
    if (threadCount == 0) threadCount = availableCores();
    for (std::size_t worker = 1; worker < threadCount; ++worker) {
        threads_.emplace_back([this, worker] { work(worker); });
    }
}

WorkerPool::~WorkerPool() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

void WorkerPool::parallelFor(std::size_t count, const Body& body) {
    if (insideLoop || threads_.empty() || count <= 1) {
        for (std::size_t i = 0; i < count; ++i) body(i, 0);
        return;
    }
    const std::lock_guard oneLoop(callers_);
    Loop loop{body, count};
    {
        const std::lock_guard lock(mutex_);
        loop_ = &loop;
        ++generation_;
        busy_ = threads_.size();
    }
    wake_.notify_all();
    loop.run(0);
    lookOutFor([this] { return busy_ == 0; });
    std::unique_lock lock(mutex_);
    finished_.wait(lock, [this] { return busy_ == 0; });
    loop_ = nullptr;
}

void WorkerPool::work(std::size_t worker) {
    unsigned long seen = 0;
    for (;;) {
        lookOutFor([&] { return generation_ != seen; });
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [&] { return stopping_ || generation_ != seen; });
        if (stopping_) return;
        seen = generation_;
        Loop& loop = *loop_;
        lock.unlock();
        loop.run(worker);
        lock.lock();
        if (--busy_ == 0) finished_.notify_one();
        lock.unlock();
    }
}

}  // namespace quillmere
