// What every implementation of `Dispatch` owes its callers, held on real and on manual time.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Tests/Fakes/ManualClock.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;

enum class Time { real, manual };

class DispatchContract : public testing::TestWithParam<Time> {
protected:
    DispatchContract() {
        if (GetParam() == Time::manual) {
            auto clock = std::make_unique<ManualClock>();
            manualClock = clock.get();
            dispatch = std::make_unique<DesktopDispatch>(std::move(clock));
        } else {
            dispatch = std::make_unique<DesktopDispatch>();
        }
    }

    /// Real time passes by itself.
    void letTimePass(std::chrono::nanoseconds step) {
        if (manualClock) manualClock->advanceBy(step);
    }

    void runMainUntil(const std::function<bool()>& done) { dispatch->mainQueue().runUntil(done); }

    ManualClock* manualClock = nullptr;
    std::unique_ptr<DesktopDispatch> dispatch;
};

INSTANTIATE_TEST_SUITE_P(Times, DispatchContract, testing::Values(Time::real, Time::manual),
                         [](const auto& time) {
                             return time.param == Time::real ? "Real" : "Manual";
                         });

TEST_P(DispatchContract, MainQueueRunsBlocksInOrderOnThePumpingThreadOnly) {
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    const auto poster = [&](int n) {
        dispatch->mainQueue().async([&, n] {
            order.push_back(n);
            threads.push_back(std::this_thread::get_id());
        });
    };
    poster(1);
    poster(2);
    dispatch->mainQueue().async([&] { poster(4); });
    poster(3);
    EXPECT_TRUE(order.empty()) << "a block ran before anybody pumped";
    runMainUntil([&] { return order.size() == 4; });
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(threads, std::vector<std::thread::id>(4, std::this_thread::get_id()));
}

TEST_P(DispatchContract, BlocksThatNobodyPumpsAnyMoreHoldUpNoEnd) {
    auto serial = dispatch->makeSerialQueue("held", QualityOfService::standard);
    const auto posted = dispatch->makeSemaphore(0);
    const std::weak_ptr<DispatchQueue> weak = serial;
    serial->async([&main = dispatch->mainQueue(), weak, posted] {
        main.async([held = weak.lock()] {});
        posted->signal();
    });
    posted->wait();
    serial.reset();
    dispatch.reset();
    EXPECT_TRUE(weak.expired());
}

TEST_P(DispatchContract, MainQueueIsWokenByAPostFromAnotherThread) {
    bool ran = false;
    dispatch->globalQueue(QualityOfService::userInitiated).async([&] {
        dispatch->mainQueue().async([&] { ran = true; });
    });
    runMainUntil([&] { return ran; });
    EXPECT_TRUE(ran);
}

TEST_P(DispatchContract, SerialQueueKeepsOrderAndNeverOverlaps) {
    const auto queue = dispatch->makeSerialQueue("serial", QualityOfService::userInitiated);
    std::vector<int> order;  // not guarded: the queue itself must order the writes
    std::atomic<int> inside = 0;
    std::atomic<bool> overlapped = false;
    const auto done = dispatch->makeSemaphore(0);
    for (int n = 0; n < 500; ++n) {
        queue->async([&, n] {
            if (inside.fetch_add(1) != 0) overlapped = true;
            order.push_back(n);
            inside.fetch_sub(1);
        });
    }
    queue->async([&] { done->signal(); });
    done->wait();
    std::vector<int> expected(500);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
    EXPECT_FALSE(overlapped);
}

TEST_P(DispatchContract, SerialQueueRunsItsBlocksToTheEndWhenItsLastReferenceGoesFirst) {
    const auto gate = dispatch->makeSemaphore(0);
    const auto done = dispatch->makeSemaphore(0);
    auto queue = dispatch->makeSerialQueue("dropped", QualityOfService::userInitiated);
    queue->async([&] { gate->wait(); });
    queue->async([&] { done->signal(); });
    queue.reset();
    gate->signal();
    done->wait();
}

TEST_P(DispatchContract, LastReferenceToASerialQueueMayGoOnTheQueueItself) {
    const auto posted = dispatch->makeSemaphore(0);
    const auto done = dispatch->makeSemaphore(0);
    auto queue = dispatch->makeSerialQueue("own", QualityOfService::userInitiated);
    DispatchQueue& raw = *queue;
    raw.async([&, held = std::move(queue)]() mutable {
        posted->wait();
        held.reset();
    });
    raw.async([&] { done->signal(); });
    posted->signal();
    done->wait();
}

TEST_P(DispatchContract, GlobalQueueBlocksThatWaitDoNotStarveOthers) {
    DispatchQueue& queue = dispatch->globalQueue(QualityOfService::userInitiated);
    const auto gate = dispatch->makeSemaphore(0);
    const auto done = dispatch->makeSemaphore(0);
    constexpr int waiting = 64;
    for (int n = 0; n < waiting; ++n) {
        queue.async([&] {
            gate->wait();
            done->signal();
        });
    }
    queue.async([&] {
        for (int n = 0; n < waiting; ++n) gate->signal();
    });
    for (int n = 0; n < waiting; ++n) done->wait();
}

TEST_P(DispatchContract, DelayedBlocksRunWhenDueInTheOrderOfTheirTimes) {
    std::vector<int> order;
    dispatch->mainQueue().asyncAfter(20ms, [&] { order.push_back(20); });
    dispatch->mainQueue().asyncAfter(5ms, [&] { order.push_back(5); });
    const auto start = dispatch->now();
    letTimePass(5ms);
    runMainUntil([&] { return order.size() == 1; });
    if (manualClock) {
        letTimePass(14ms);
        dispatch->mainQueue().runPending();
        EXPECT_EQ(order.size(), 1u) << "ran before it was due";
        letTimePass(1ms);
    }
    runMainUntil([&] { return order.size() == 2; });
    EXPECT_EQ(order, (std::vector<int>{5, 20}));
    EXPECT_GE(dispatch->now() - start, 5ms);
}

TEST_P(DispatchContract, DelayedBlockKeepsItsSerialQueueAlive) {
    const auto done = dispatch->makeSemaphore(0);
    dispatch->makeSerialQueue("late", QualityOfService::utility)->asyncAfter(1ms, [&] {
        done->signal();
    });
    letTimePass(1ms);
    done->wait();
}

TEST_P(DispatchContract, DelayedBlocksThatAreNotDueNeverRunAndDoNotHoldUpTheEnd) {
    std::atomic<bool> ran = false;
    dispatch->globalQueue(QualityOfService::utility).asyncAfter(1h, [&] { ran = true; });
    dispatch->makeSerialQueue("far", QualityOfService::utility)->asyncAfter(1h, [&] {
        ran = true;
    });
    dispatch.reset();
    EXPECT_FALSE(ran);
}

TEST_P(DispatchContract, EndOfDispatchWaitsForBlocksThatBlocksPost) {
    std::atomic<int> ran = 0;
    DispatchQueue& queue = dispatch->globalQueue(QualityOfService::utility);
    queue.async([&] {
        ++ran;
        queue.async([&] { ++ran; });
    });
    dispatch.reset();
    EXPECT_EQ(ran, 2);
}

TEST_P(DispatchContract, GroupPostsOnceWhenTheCountReachesZero) {
    const auto group = dispatch->makeGroup();
    int posted = 0;
    group->enter();
    group->enter();
    group->notify(dispatch->mainQueue(), [&] { ++posted; });
    group->leave();
    dispatch->mainQueue().runPending();
    EXPECT_EQ(posted, 0);
    group->leave();
    dispatch->mainQueue().runPending();
    EXPECT_EQ(posted, 1);

    group->notify(dispatch->mainQueue(), [&] { ++posted; });
    dispatch->mainQueue().runPending();
    EXPECT_EQ(posted, 2) << "an empty group posts at once";
}

TEST_P(DispatchContract, LeavingAGroupMoreOftenThanEnteringStopsAtZero) {
    const auto group = dispatch->makeGroup();
    group->leave();
    group->enter();
    bool posted = false;
    group->notify(dispatch->mainQueue(), [&] { posted = true; });
    dispatch->mainQueue().runPending();
    EXPECT_FALSE(posted) << "the early leave was kept as a debt";
    group->leave();
    dispatch->mainQueue().runPending();
    EXPECT_TRUE(posted);
}

TEST_P(DispatchContract, GroupWaitReturnsAfterTheLastLeave) {
    const auto group = dispatch->makeGroup();
    int value = 0;
    group->enter();
    dispatch->globalQueue(QualityOfService::userInitiated).async([&] {
        value = 1;
        group->leave();
    });
    group->wait();
    EXPECT_EQ(value, 1);
}

TEST_P(DispatchContract, SemaphoreLetsItsCountPass) {
    const auto semaphore = dispatch->makeSemaphore(2);
    semaphore->wait();
    semaphore->wait();
    std::atomic<bool> passed = false;
    const auto done = dispatch->makeSemaphore(0);
    dispatch->globalQueue(QualityOfService::userInitiated).async([&] {
        semaphore->wait();
        passed = true;
        done->signal();
    });
    EXPECT_FALSE(passed);
    semaphore->signal();
    done->wait();
    EXPECT_TRUE(passed);
}

}  // namespace
}  // namespace quillmere
