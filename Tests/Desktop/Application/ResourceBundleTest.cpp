#include "Desktop/Application/ResourceBundle.h"

#include <gtest/gtest.h>

#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

TEST(ResourceBundle, FindsEachKindOfResourceInItsPlace) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "Strings");
    std::filesystem::create_directory(folder / "Samples");
    const ResourceBundle bundle(folder.path());
    EXPECT_EQ(bundle.urlForResource("Defaults", "plist"), std::nullopt);
    for (const auto& [name, extension, place] : {std::tuple("Defaults", "plist", "Defaults.plist"),
                                                 std::tuple("en", "json", "Strings/en.json"),
                                                 std::tuple("cat", "png", "Samples/cat.png")}) {
        const auto path = folder.write(place, "");
        EXPECT_EQ(bundle.urlForResource(name, extension), path);
    }
    EXPECT_EQ(bundle.urlForResource("not-fetched", "mlmodelc"),
              folder / "Models" / "not-fetched.mlmodelc");
}

}  // namespace
}  // namespace quillmere
