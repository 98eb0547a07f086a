// All cores on one loop: the only parallelism inside the runtime and the picture rooms.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quillmere {

/// A fixed set of threads that share the iterations of one loop at a time.
///
/// Guarantees: every index runs exactly once; when `parallelFor` returns, all have run and their
/// writes are visible to the caller. Indices are taken one by one as threads become free, in
/// ascending order of starting. Several threads may call at once: their loops follow each other.
/// A call from inside a body runs on the thread that makes it, so that nesting can't deadlock.
class WorkerPool {
public:
    /// `index` is the iteration; `worker` lies in [0, threadCount()) and is held by one thread of
    /// the loop only, so that it may choose a scratch buffer. A body must not throw.
    using Body = std::function<void(std::size_t index, std::size_t worker)>;

    /// `threadCount` counts the calling thread; 0 means one for each core that this process has.
    explicit WorkerPool(std::size_t threadCount = 0);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    std::size_t threadCount() const noexcept { return threads_.size() + 1; }

    void parallelFor(std::size_t count, const Body& body);

private:
    struct Loop;

    void work(std::size_t worker);

    std::mutex callers_;  // held for a whole loop: one loop at a time
    std::mutex mutex_;    // held for every change of what is below
    std::condition_variable wake_;
    std::condition_variable finished_;
    Loop* loop_ = nullptr;
    std::atomic<unsigned long> generation_ = 0;  // read without the mutex as well, like busy_
    std::atomic<std::size_t> busy_ = 0;
    bool stopping_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace quillmere
