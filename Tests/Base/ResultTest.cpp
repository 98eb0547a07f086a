#include "Base/Result.h"

#include <gtest/gtest.h>

#include <memory>

namespace quillmere {
namespace {

TEST(Result, CarriesAMoveOnlyValueOutWithoutACopy) {
    Result<std::unique_ptr<int>> result(std::make_unique<int>(7));
    ASSERT_TRUE(result);
    const std::unique_ptr<int> taken = *std::move(result);
    EXPECT_EQ(*taken, 7);
}

TEST(Result, KeepsTheWholeErrorForTheCallerToBranchOn) {
    const Error error{"disk", 3305, "The disk is full."};
    const Result<int> failed(error);
    EXPECT_FALSE(failed);
    EXPECT_EQ(failed.error(), error);

    const Result<void> failedVoid(error);
    EXPECT_FALSE(failedVoid);
    EXPECT_EQ(failedVoid.error(), error);
    EXPECT_TRUE(Result<void>());
}

TEST(ResultDeathTest, ReadingTheSideThatIsNotThereEndsTheProcess) {
    const Result<int> failed(Error{"disk", 1, ""});
    const Result<int> good(1);
    EXPECT_EXIT((void)failed.value(), testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT((void)good.error(), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace quillmere
