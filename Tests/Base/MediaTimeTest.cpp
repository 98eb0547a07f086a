#include "Base/MediaTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace quillmere {
namespace {

TEST(MediaTime, ComparesMomentsExactlyWhereDoublesCanNot) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    struct Case {
        MediaTime a, b;
        std::partial_ordering expected;
    };
    const Case cases[] = {
        {{1, 2}, {2, 4}, std::partial_ordering::equivalent},
        {{1001, 30000}, {1, 30}, std::partial_ordering::greater},
        {{-1, 3}, {0, 7}, std::partial_ordering::less},
        {{-4, 3}, {-5, 4}, std::partial_ordering::less},
        {{most, 2147483647}, {most - 1, 2147483647}, std::partial_ordering::greater},
        {{most, 1}, {most, 2}, std::partial_ordering::greater},
        {{}, {}, std::partial_ordering::equivalent},
        {{}, {1, 2}, std::partial_ordering::unordered},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.a <=> c.b, c.expected) << c.a.value << '/' << c.a.timescale;
        EXPECT_EQ(c.a == c.b, c.expected == 0);
    }
    EXPECT_TRUE(std::isnan(MediaTime{}.seconds()));
    EXPECT_EQ((MediaTime{1001, 1000}).seconds(), 1.001);
}

}  // namespace
}  // namespace quillmere
