// The action bar: how its buttons share the width, and what each kind reports.

#include <gtest/gtest.h>

#include "shell/test_page.h"
#include "support/golden.h"

VR_REGISTER_ELEMENT(CVrGuiTestPage)

namespace {

using Events = std::vector<std::string>;

} // namespace

TEST(Actionbar, OneToFourButtonsShareTheWidthAtTheBottom) {
    for (uint32_t count = 1; count <= 4; count++) {
        PageOnDisplay on(count);
        const int32_t width = (688 - static_cast<int32_t>(count - 1) * 10) / static_cast<int32_t>(count);
        for (uint32_t i = 0; i < count; i++) {
            EXPECT_EQ(on.Bar().Button(i)->rect.width, width);
            EXPECT_LE(on.Bar().Button(i)->rect.Right(), 688);
        }
        EXPECT_EQ(on.Bar().rect, CVrRect(10, 510, 688, 94));
        EXPECT_TRUE(golden::Matches("actionbar-" + std::to_string(count), on.display.Screen(), 720, 720));
    }
}

TEST(Actionbar, ALayoutOfThePageLeavesItWhereItStands) {
    PageOnDisplay on;
    on.page->ApplyLayout();
    EXPECT_EQ(on.Bar().rect.y, 510);
}

TEST(Actionbar, EachKindReportsInItsWay) {
    PageOnDisplay on;
    on.Tap(*on.Bar().Button(0));
    EXPECT_EQ(on.TakeEvents(), Events({"0:1"}));
    on.Tap(*on.Bar().Button(1));
    EXPECT_EQ(on.TakeEvents(), Events({"1:0", "1:1"}));
    on.Tap(*on.Bar().Button(2));
    EXPECT_EQ(on.TakeEvents(), Events({"2:1"}));
    EXPECT_EQ(on.Bar().Button(2)->state, CVrGuiElement::StateNormal) << "the control marks it, not the bar";
}

TEST(Actionbar, AFingerThatSlidOffStillReports) {
    PageOnDisplay on;
    const CVrPoint at = PageOnDisplay::Middle(*on.Bar().Button(1));
    on.display.Down(at.x, at.y);
    EXPECT_EQ(on.Bar().Button(1)->state, CVrGuiElement::StateSelected);
    on.display.Move(300, 200);
    on.display.Up(300, 200);
    EXPECT_EQ(on.TakeEvents(), Events({"1:0", "1:1"}));
    EXPECT_EQ(on.Bar().Button(1)->state, CVrGuiElement::StateNormal);
    EXPECT_EQ(on.display.App().Capture(), nullptr);
}

TEST(Actionbar, ACancelledTouchEndsThePressAndTheCapture) {
    PageOnDisplay on;
    for (uint32_t index : {1U, 3U}) {
        const CVrPoint at = PageOnDisplay::Middle(*on.Bar().Button(index));
        on.display.Down(at.x, at.y);
        on.display.App().PostTouch(0, at, CVrGuiApp::GestureCancel);
        on.display.Pass();
        EXPECT_EQ(on.display.App().Capture(), nullptr);
    }
    EXPECT_EQ(on.TakeEvents(), Events({"1:0", "1:1"})) << "a latching button had nothing to release";
}

TEST(Actionbar, ItMovesFromPageToPageAndHidesWhereItIsNotWanted) {
    PageOnDisplay on;
    on.display.Tap(600, 55);
    EXPECT_TRUE(on.Bar().IsHidden());
    EXPECT_EQ(on.Bar().parent, on.page);
    auto* other = on.Root().CreateChild<CVrGuiTestPage>("CVrGuiTestPage", false);
    other->flags |= CVrGuiElement::FlagPage | CVrGuiElement::FlagHidden;
    other->FillArea(nullptr);
    on.Root().ShowPage(other);
    EXPECT_EQ(on.Bar().parent, other);
    EXPECT_FALSE(on.Bar().IsHidden());
    on.Root().ShowPage(on.page);
    on.display.Settle();
    EXPECT_EQ(on.Bar().parent, on.page);
}
