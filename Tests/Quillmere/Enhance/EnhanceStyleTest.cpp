#include "Quillmere/Models/Enhance/EnhanceStyle.h"

#include <gtest/gtest.h>

#include <set>

#include "Quillmere/Models/Enhance/StyleRows.h"
#include "Tests/Fakes/FakeVideoToolbox.h"

namespace quillmere {
namespace {

using enum EnhanceStyle;

class FixedDevice final : public Device {
public:
    explicit FixedDevice(SystemVersion version) : version_(version) {}
    SystemVersion systemVersion() const override { return version_; }

private:
    SystemVersion version_;
};

TEST(EnhanceStyle, RawValuesOutsideTheTenGiveNoStyle) {
    for (const int value : {-1, 10, 1000, -2147483647 - 1}) {
        EXPECT_FALSE(enhanceStyleFromRawValue(value)) << value;
    }
    for (int value = 0; value < 10; ++value) {
        const auto style = enhanceStyleFromRawValue(value);
        ASSERT_TRUE(style);
        EXPECT_EQ(*style, allEnhanceStyles[static_cast<std::size_t>(value)]);
        EXPECT_EQ(rawValue(*style), value);
    }
}

TEST(EnhanceStyle, EachStyleHasANameOfItsOwn) {
    std::set<std::string_view> keys;
    for (const EnhanceStyle style : allEnhanceStyles) keys.insert(displayKey(style));
    EXPECT_EQ(keys.size(), allEnhanceStyles.size());
    EXPECT_EQ(displayKey(kyokuHigh), "kyokuHigh");
    EXPECT_EQ(displayKey(rapidHQ), "rapidHQ");
}

TEST(StyleRows, TheFourthRowNeedsAVideoTheSystemAndTheScaler) {
    struct Case {
        bool video;
        SystemVersion version;
        bool supported;
        std::size_t rows;
    };
    const Case cases[] = {
        {true, {26, 0}, true, 4}, {true, {27, 3}, true, 4},  {false, {26, 0}, true, 3},
        {true, {25, 9}, true, 3}, {true, {26, 0}, false, 3}, {false, {16, 0}, false, 3},
    };
    for (const Case& c : cases) {
        FakeVideoToolbox videoToolbox;
        videoToolbox.state.isSupported = c.supported;
        const auto rows = styleRows(c.video, FixedDevice(c.version), videoToolbox);
        ASSERT_EQ(rows.size(), c.rows);
        EXPECT_EQ(rows[0], (std::vector{original, high, superHigh}));
        EXPECT_EQ(rows[1], (std::vector{godHigh, oniHigh, kyokuHigh}));
        EXPECT_EQ(rows[2], (std::vector{speedGeneral, speedAnime, superSpeed}));
        if (rows.size() == 4) {
            EXPECT_EQ(rows[3], std::vector{rapidHQ});
        }
    }
}

TEST(StyleLabelColor, OnlySlowStylesAreGrayAndOnlyOnAVideo) {
    const std::set<EnhanceStyle> slow = {high, superHigh, godHigh, oniHigh, kyokuHigh};
    for (const EnhanceStyle style : allEnhanceStyles) {
        const EnhanceStyle other = style == original ? rapidHQ : original;
        EXPECT_EQ(styleLabelColor(style, style, true), StyleLabelColor::white);
        EXPECT_EQ(styleLabelColor(style, style, false), StyleLabelColor::white);
        EXPECT_EQ(styleLabelColor(style, other, false), StyleLabelColor::primary);
        EXPECT_EQ(styleLabelColor(style, other, true),
                  slow.contains(style) ? StyleLabelColor::gray : StyleLabelColor::primary)
            << displayKey(style);
    }
}

}  // namespace
}  // namespace quillmere
