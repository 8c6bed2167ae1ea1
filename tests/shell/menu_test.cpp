// The menu row: button widths, snapping, arrow zones and paging.

#include <gtest/gtest.h>

#include "shell/frame.h"
#include "shell/menu.h"
#include "support/test_display.h"

namespace {

TestHouse Pages(int count) {
    std::string entries;
    for (int i = 1; i <= count; i++)
        entries +=
            (i > 1 ? "," : "") + std::string(R"({"T":342,"U":)") + std::to_string(i) + R"(,"N":"P","C":1})";
    return TestHouse::Of("[" + entries + "]");
}

} // namespace

TEST(Menu, UpToFiveButtonsShareTheRowAndDoNotScroll) {
    for (int count = 2; count <= 5; count++) {
        TestDisplay display(Pages(count));
        const CVrGuiMenu& menu = *display.Root().menu;
        EXPECT_EQ(menu.Child(0)->rect.width, 710 / count);
        display.Drag(600, 55, 100, 55, 200);
        EXPECT_EQ(menu.offsetX, 0);
    }
}

TEST(Menu, SixButtonsPageByTheArrowAndBack) {
    TestDisplay display(Pages(6));
    const CVrGuiMenu& menu = *display.Root().menu;
    EXPECT_EQ(menu.Child(5)->rect, CVrRect(5 * 142, 0, 142, 110));
    display.Tap(700, 55);
    EXPECT_EQ(menu.offsetX, -142);
    display.Tap(20, 55);
    EXPECT_EQ(menu.offsetX, 0);
    EXPECT_EQ(display.Page()->item->uuid, 1U) << "an arrow opens no page";
}

TEST(Menu, AFingerThatLeavesTheArrowDoesNotPage) {
    TestDisplay display(Pages(6));
    display.Drag(700, 55, 300, 55, 100);
    EXPECT_EQ(display.Root().menu->offsetX, 0);
    EXPECT_EQ(display.App().Capture(), nullptr);
}

TEST(Menu, AReleasedDragSnapsToABorder) {
    TestDisplay display(Pages(12));
    const CVrGuiMenu& menu = *display.Root().menu;
    display.Drag(500, 55, 300, 55, 400);
    display.Advance(3000);
    EXPECT_LT(menu.offsetX, 0);
    EXPECT_EQ(menu.offsetX % 142, 0);
}

TEST(Menu, SnapPositionTakesTheNearerBorder) {
    TestDisplay display(Pages(12));
    CVrGuiMenu& menu = *display.Root().menu;
    EXPECT_EQ(menu.SnapPosition(-70, -994, 0), 0);
    EXPECT_EQ(menu.SnapPosition(-71, -994, 0), -142) << "half-way goes to the border further from 0";
    EXPECT_EQ(menu.SnapPosition(-72, -994, 0), -142);
    EXPECT_EQ(menu.SnapPosition(-5000, -994, 0), -994);
    EXPECT_EQ(menu.SnapPosition(40, -994, 0), 0);
}
