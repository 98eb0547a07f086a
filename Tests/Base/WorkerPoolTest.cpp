#include "Base/WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace quillmere {
namespace {

struct Shape {
    std::size_t threads;
    std::size_t count;
};

class WorkerPoolShapes : public testing::TestWithParam<Shape> {};

TEST_P(WorkerPoolShapes, RunsEachIndexOnceAndShowsItsWritesToTheCaller) {
    const auto [threads, count] = GetParam();
    WorkerPool pool(threads);
    EXPECT_EQ(pool.threadCount(), threads);
    for (int round = 0; round < 50; ++round) {
        std::vector<int> runs(count, 0);  // plain ints: the pool itself must order the writes
        std::vector<std::atomic<int>> holders(threads);
        std::atomic<bool> shared = false;
        pool.parallelFor(count, [&](std::size_t index, std::size_t worker) {
            if (holders[worker].fetch_add(1) != 0) shared = true;
            ++runs[index];
            holders[worker].fetch_sub(1);
        });
        EXPECT_EQ(runs, std::vector<int>(count, 1));
        EXPECT_FALSE(shared) << "two threads held one worker number";
    }
}

INSTANTIATE_TEST_SUITE_P(All, WorkerPoolShapes,
                         testing::Values(Shape{1, 0}, Shape{1, 5}, Shape{2, 1}, Shape{2, 100},
                                         Shape{4, 3}, Shape{8, 1000}));

TEST(WorkerPool, CallersOnSeveralThreadsDoNotMixTheirLoops) {
    WorkerPool pool(3);
    std::vector<std::thread> callers;
    std::vector<std::atomic<int>> sums(4);
    for (std::size_t c = 0; c < sums.size(); ++c) {
        callers.emplace_back([&, c] {
            for (int round = 0; round < 100; ++round) {
                pool.parallelFor(10, [&](std::size_t index, std::size_t) {
                    sums[c] += static_cast<int>(index);
                });
            }
        });
    }
    for (std::thread& caller : callers) caller.join();
    for (const auto& sum : sums) EXPECT_EQ(sum, 4500);
}

TEST(WorkerPool, ALoopInsideALoopDoesNotDeadlock) {
    WorkerPool pool(2);
    std::atomic<int> runs = 0;
    pool.parallelFor(4, [&](std::size_t, std::size_t) {
        pool.parallelFor(5, [&](std::size_t, std::size_t) { ++runs; });
    });
    EXPECT_EQ(runs, 20);
}

}  // namespace
}  // namespace quillmere
