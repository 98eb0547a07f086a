#include "Base/FormatString.h"

#include <gtest/gtest.h>

#include "Quillmere/Models/Services/LocalizedReason.h"
#include "Tests/Fakes/FakeLocalization.h"

namespace quillmere {
namespace {

TEST(FormatString, FillsPlaceholdersAndLeavesStrangersAlone) {
    EXPECT_EQ(formatString("Failed (%@).", {"5"}), "Failed (5).");
    EXPECT_EQ(formatString("%@ of %@", {"1", "3"}), "1 of 3");
    EXPECT_EQ(formatString("%2$@ %1$@", {"a", "b"}), "b a");
    EXPECT_EQ(formatString("100%% %@", {"%@"}), "100% %@");
    EXPECT_EQ(formatString("%@ %3$@ %d %", {}), "%@ %3$@ %d %");
}

TEST(LocalizedReason, IsTheTablesOrElseTheErrorsOwn) {
    CallLog log;
    FakeLocalization localization(log);
    localization.texts["domain.-5"] = "Der Grund";
    EXPECT_EQ(localizedReason({"domain", -5, "The reason"}, localization), "Der Grund");
    EXPECT_EQ(localizedReason({"domain", 5, "The reason"}, localization), "The reason");
}

}  // namespace
}  // namespace quillmere
