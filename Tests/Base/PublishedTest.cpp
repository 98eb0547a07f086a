#include "Base/Published.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace quillmere {
namespace {

TEST(Published, TellsEachObserverOfEachSetInOrder) {
    Published<int> field(1);
    std::vector<std::pair<char, int>> calls;
    const Subscription a = field.subscribe([&](int value) { calls.push_back({'a', value}); });
    Subscription b = field.subscribe([&](int value) { calls.push_back({'b', value}); });
    field.set(2);
    field.set(2);
    b.reset();
    field.set(3);
    EXPECT_EQ(calls, (std::vector<std::pair<char, int>>{
                         {'a', 2}, {'b', 2}, {'a', 2}, {'b', 2}, {'a', 3}}));
    EXPECT_EQ(field.get(), 3);
}

TEST(Published, AnObserverMayEndItselfAndOthersAndSubscribe) {
    Published<int> field;
    int first = 0, second = 0, third = 0;
    Subscription ending, other, added;
    ending = field.subscribe([&](int) {
        ++first;
        ending.reset();
        other.reset();
        added = field.subscribe([&](int) { ++third; });
    });
    other = field.subscribe([&](int) { ++second; });
    field.set(1);
    field.set(2);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0) << "was ended before its turn";
    EXPECT_EQ(third, 2);
}

TEST(Published, AnObserverMayWriteTheFieldAgain) {
    Published<int> field;
    std::vector<int> values;
    const Subscription clamp = field.subscribe([&](int value) {
        values.push_back(value);
        if (value > 10) field.set(10);
    });
    field.set(99);
    EXPECT_EQ(field.get(), 10);
    EXPECT_EQ(values, (std::vector<int>{99, 10}));
}

TEST(Published, SubscriptionMayOutliveTheField) {
    Subscription left;
    {
        Published<int> field;
        left = field.subscribe([](int) {});
    }
    left.reset();
}

TEST(Published, NoCallRunsOnceTheSubscriptionIsGone) {
    for (int round = 0; round < 200; ++round) {
        Published<int> field;
        std::atomic<bool> gone = false, calledAfter = false;
        Subscription subscription = field.subscribe([&](int) {
            if (gone) calledAfter = true;
        });
        std::thread writer([&] {
            for (int n = 0; n < 20; ++n) field.set(n);
        });
        subscription.reset();
        gone = true;
        writer.join();
        EXPECT_FALSE(calledAfter);
    }
}

}  // namespace
}  // namespace quillmere
