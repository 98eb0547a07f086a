#include "Desktop/Analytics/EventQueue.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere {
namespace {

TEST(EventQueue, AFullQueueDropsAndCountsWhatItDropped) {
    EventQueue queue(4);
    for (int i = 0; i < 7; ++i) queue.push(std::to_string(i), std::nullopt);
    const auto first = queue.next();
    ASSERT_TRUE(first);
    ASSERT_EQ(first->events.size(), 4u);
    EXPECT_EQ(first->events.back().name, "3");
    EXPECT_EQ(first->dropped, 3u);

    queue.push("next", std::nullopt);
    queue.close();
    const auto second = queue.next();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->events.size(), 1u);
    EXPECT_EQ(second->dropped, 0u);
    EXPECT_FALSE(queue.next());
}

TEST(EventQueue, AnEventOfAnySizeDoesNotFillTheMemory) {
    EventQueue queue(4);
    const std::string half(EventQueue::largestEvent / 2, 'x');
    queue.push(half, AnalyticsParameters{{"Style", half}});
    queue.push(std::string(1 << 20, 'x'), std::nullopt);
    queue.push(half, std::nullopt);
    queue.close();
    const auto batch = queue.next();
    ASSERT_TRUE(batch);
    EXPECT_EQ(batch->events.size(), 1u);
    EXPECT_EQ(batch->dropped, 2u);
}

TEST(EventQueue, AClosedQueueTakesNothingAndSaysSo) {
    EventQueue queue(4);
    queue.close();
    EXPECT_FALSE(queue.next());
    queue.push("late", std::nullopt);
    const auto batch = queue.next();
    ASSERT_TRUE(batch);
    EXPECT_TRUE(batch->events.empty());
    EXPECT_EQ(batch->dropped, 1u);
}

}  // namespace
}  // namespace quillmere
