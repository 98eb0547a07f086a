#include "Quillmere/Models/Services/AnalyticsEvents.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

namespace quillmere {
namespace {

AnalyticsParameters parametersOf(const AnalyticsEvent& event) {
    AnalyticsParameters parameters;
    for (const std::string_view name : event.parameters) {
        if (!name.empty()) parameters[std::string(name)] = "1";
    }
    return parameters;
}

TEST(AnalyticsEvents, NoNameStandsTwiceInTheVocabulary) {
    std::set<std::string_view> names;
    for (const AnalyticsEvent& event : analyticsEvents) names.insert(event.name);
    EXPECT_EQ(names.size(), 36u);
}

TEST(AnalyticsEvents, EachTakesItsParametersAndNoOthers) {
    for (const AnalyticsEvent& event : analyticsEvents) {
        SCOPED_TRACE(event.name);
        const AnalyticsParameters complete = parametersOf(event);
        EXPECT_EQ(isInVocabulary(event.name, complete), !complete.empty());
        EXPECT_EQ(isInVocabulary(event.name, std::nullopt), complete.empty());
        EXPECT_FALSE(isInVocabulary(event.name, AnalyticsParameters{}));
        for (const auto& [name, value] : complete) {
            AnalyticsParameters misspelt = complete;
            misspelt.erase(name);
            EXPECT_FALSE(isInVocabulary(event.name, misspelt));
            misspelt[name + "s"] = value;
            EXPECT_FALSE(isInVocabulary(event.name, misspelt));
        }
        AnalyticsParameters more = complete;
        more["source"] = "main_button";
        EXPECT_EQ(isInVocabulary(event.name, more), event.name == "share_image_tapped");
    }
}

TEST(AnalyticsEvents, ANameInAnotherWritingIsUnknown) {
    EXPECT_FALSE(isInVocabulary("appBecomeActive", std::nullopt));
    EXPECT_FALSE(isInVocabulary("", std::nullopt));
}

}  // namespace
}  // namespace quillmere
