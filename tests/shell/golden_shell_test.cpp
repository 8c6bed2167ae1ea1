// Golden pictures of what surrounds the pages: the menu row, the messages, the first page of the demonstration house.

#include <gtest/gtest.h>

#include "shell/frame_area.h"
#include "shell/menu.h"
#include "support/golden.h"
#include "support/test_display.h"

namespace {

testing::AssertionResult ScreenMatches(const TestDisplay& display, const std::string& name) {
    return golden::Matches(name, display.Screen(), kScreenSide, kScreenSide);
}

} // namespace

TEST(GoldenShell, FirstPageOfTheDemonstrationHouse) {
    TestDisplay display(TestHouse::FromFolder("demo"));
    display.Settle();
    EXPECT_TRUE(ScreenMatches(display, "demo-first-page"));
}

TEST(GoldenShell, EmptyConfiguration) {
    TestDisplay display(TestHouse::Of("[]"));
    EXPECT_TRUE(ScreenMatches(display, "empty-configuration"));
}

TEST(GoldenShell, LoadingPanel) {
    TestDisplay display(TestHouse::Of("[]"));
    display.clock.Set(1'000'320); // the spinner turns with the clock
    display.Root().DrawStatusPanel("Loading structure...", true);
    EXPECT_TRUE(ScreenMatches(display, "loading"));
}

TEST(GoldenShell, MenuRowAtBothEnds) {
    TestDisplay display(TestHouse::FromFolder("tests/houses/twelve-pages"));
    display.Settle();
    EXPECT_TRUE(ScreenMatches(display, "menu-left-end"));
    display.Tap(700, 55);
    display.Settle();
    EXPECT_TRUE(ScreenMatches(display, "menu-middle"));
    display.Tap(700, 55);
    display.Settle();
    EXPECT_TRUE(ScreenMatches(display, "menu-right-end"));
    EXPECT_EQ(display.Root().menu->offsetX, 710 - 12 * 142);
}
