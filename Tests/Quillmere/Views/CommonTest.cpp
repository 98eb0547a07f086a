#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Quillmere/Views/Common/AlertTypes.h"
#include "Quillmere/Views/Common/DisableSwipeBackViewController.h"
#include "Quillmere/Views/Common/TopViewController.h"
#include "Tests/Fakes/FakeCrashLog.h"
#include "Tests/Fakes/FakeUIApplication.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class BareScene final : public UIScene {};

TEST(TopViewController, IsFoundThroughEachKindOfControllerOrTheCrashLogSaysWhyNot) {
    FakeViewController root, modal, first, second;
    FakeNavigationController navigation, empty;
    navigation.stack = {&first, &second};
    FakeTabBarController tabs, tabsWithStack, tabsWithEmptyStack;
    tabs.tabs = {&first, &second};
    tabs.selected = 1;
    tabsWithStack.tabs = {&second, &navigation};
    tabsWithStack.selected = 1;
    tabsWithEmptyStack.tabs = {&empty};
    FakeViewController underModal, underNavigation;
    underModal.presented = &modal;
    underNavigation.presented = &navigation;

    FakeWindow notKey(false, &root), bare(true, nullptr), second2(true, &second);
    const auto keyWindow = [](UIViewController* controller) {
        return FakeWindow(true, controller);
    };
    struct Case {
        const char* name;
        std::vector<FakeWindow> windows;
        UIViewController* expected;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {"no window", {}, nullptr, {"keyWindow == nil"}},
        {"no key window", {notKey}, nullptr, {"keyWindow == nil"}},
        {"empty window", {bare}, nullptr, {"topViewController == nil"}},
        {"first key window", {notKey, keyWindow(&root), second2}, &root, {}},
        {"modal", {keyWindow(&underModal)}, &modal, {}},
        {"bottom of a modal stack", {keyWindow(&underNavigation)}, &first, {}},
        {"empty stack", {keyWindow(&empty)}, nullptr, {}},
        {"selected tab", {keyWindow(&tabs)}, &second, {}},
        {"stack in a tab", {keyWindow(&tabsWithStack)}, &first, {}},
        {"empty stack in a tab", {keyWindow(&tabsWithEmptyStack)}, nullptr, {}},
    };
    for (Case c : cases) {
        SCOPED_TRACE(c.name);
        FakeWindowScene scene;
        for (FakeWindow& window : c.windows) scene.shown.push_back(&window);
        FakeUIApplication application;
        application.scenes = {&scene};
        FakeCrashLog crashLog;
        EXPECT_EQ(topViewController(application, crashLog), c.expected);
        EXPECT_THAT(crashLog.lines(), ElementsAreArray(c.lines));
    }

    BareScene bareScene;
    FakeWindowScene behind;
    for (const std::vector<UIScene*>& scenes :
         {std::vector<UIScene*>{}, std::vector<UIScene*>{&bareScene, &behind}}) {
        FakeUIApplication application;
        application.scenes = scenes;
        FakeCrashLog crashLog;
        EXPECT_EQ(topViewController(application, crashLog), nullptr);
        EXPECT_THAT(crashLog.lines(), ElementsAre("windowScene == nil"));
    }
}

TEST(DisableSwipeBack, TakesTheGestureFromTheStackAroundTheScreenAndNeedsEveryLink) {
    FakeNavigationController navigation;
    FakeViewController screen, host;
    DisableSwipeBackViewController::didMoveToParentViewController(nullptr);
    DisableSwipeBackViewController::didMoveToParentViewController(&host);
    host.parent = &screen;
    DisableSwipeBackViewController::didMoveToParentViewController(&host);
    EXPECT_TRUE(navigation.goesBackBySwipe);
    screen.navigation = &navigation;
    DisableSwipeBackViewController::didMoveToParentViewController(&host);
    EXPECT_FALSE(navigation.goesBackBySwipe);
}

TEST(AlertTypes, AreTheSameAlertByTheirCaseAndKeepTheirButtonsInOrder) {
    const AlertButton ok{"OK", {}, {}};
    const AlertButton back{"Back", AlertButton::Role::cancel, {}};
    EXPECT_EQ(AlertTypes::defaultButton("Error", "Disk full").id(), "ok");
    EXPECT_EQ(AlertTypes::singleButton("a", {}, ok).id(), "singleButton");
    const AlertTypes two = AlertTypes::twoButton("a", {}, ok, back);
    EXPECT_EQ(two.id(), "twoButton");
    ASSERT_EQ(two.buttons().size(), 2u);
    EXPECT_EQ(two.buttons()[1].title, "Back");
}

}  // namespace
}  // namespace quillmere
