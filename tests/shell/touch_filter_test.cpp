// The root's filter before the tree sees a touch: its rules in their order, each through the real touch path. What a
// closing tap, the popups and the bar do in detail stands in popup_test.cpp.

#include <gtest/gtest.h>

#include "shell/menu.h"
#include "shell/test_page.h"

namespace {

using Events = std::vector<std::string>;

} // namespace

// Rule 1 before rule 4: a touch while loading is no interaction either.
TEST(TouchFilterOrder, WhileLoadingATouchIsNoInteraction) {
    PageOnDisplay on;
    const uint64_t before = on.Root().lastInteraction;
    on.Root().loading = true;
    on.display.clock.Advance(500);
    on.display.Tap(360, 300);
    EXPECT_EQ(on.Root().lastInteraction, before);
    on.Root().loading = false;
    EXPECT_TRUE(on.TakeEvents().empty());
    EXPECT_EQ(on.Root().hitElement, nullptr);
}

// Rules 2 and 3: the touch wakes to the default screen, and the rest of it is dropped, whatever comes before its up.
TEST(TouchFilterOrder, ADarkDisplayWakesToItsDefaultScreenAndDropsTheRestOfTheTouch) {
    TestDisplay display(
        TestHouse::Of(R"([{"T":342,"U":1,"N":"One","C":1},{"T":342,"U":2,"N":"Two","C":1,"defScr":1}])"));
    CVrGuiMainWin& root = display.Root();
    display.Tap(100, 55);
    ASSERT_EQ(display.Page()->item->uuid, 1U);
    root.displayOff = root.idle = true;
    root.idleSince = 5;
    display.clock.Advance(500);
    display.Down(360, 400);
    EXPECT_FALSE(root.displayOff || root.idle);
    EXPECT_EQ(root.idleSince, 0U);
    EXPECT_EQ(display.Page()->item->uuid, 2U);
    const uint64_t woken = root.lastInteraction;
    EXPECT_EQ(woken, display.clock.Now());
    display.clock.Advance(500);
    display.Move(360, 300);
    display.Down(360, 300);
    display.Up(360, 300);
    EXPECT_EQ(root.lastInteraction, woken) << "the dropped rest is no second interaction";
    EXPECT_TRUE(display.TakeCommands().empty());
    display.Tap(360, 400);
    EXPECT_EQ(display.TakeCommands().size(), 1U);

    root.displayOff = true; // an up alone wakes too, and there is no rest to drop
    display.Up(360, 400);
    EXPECT_FALSE(root.displayOff || root.swallowUntilUp);
    display.Tap(360, 400);
    EXPECT_EQ(display.TakeCommands().size(), 1U);
}

// Rules 4 and 5: the up of a closing tap counts as interaction; when it gets lost, the next touch goes its way.
TEST(TouchFilterOrder, TheRestOfAClosingTapIsDroppedButCounts) {
    PageOnDisplay on;
    on.ShowSlider(50);
    on.display.Down(360, 130);
    ASSERT_TRUE(on.SliderFrame().IsHidden());
    EXPECT_FALSE(on.page->frameArea->Child(0)->pressed) << "no element saw the finger";
    on.display.clock.Advance(700);
    on.display.Up(360, 130);
    EXPECT_EQ(on.Root().lastInteraction, on.display.clock.Now());
    on.ShowSlider(50);
    on.display.Down(360, 130);
    on.display.Move(360, 200);
    on.display.Tap(360, 300); // the up never came
    EXPECT_EQ(on.TakeEvents(), Events({"50:1"}));
    EXPECT_FALSE(on.Root().swallowAfterPopup);
}

// Rule 6: what closes a popup is the visible content beside it, edges included.
TEST(TouchFilterOrder, OnlyVisibleContentBesideAPopupClosesIt) {
    struct Place {
        const char* name;
        int32_t x, y;
        bool closes;
    };
    const Place places[] = {
        {"upper left corner of the area", 16, 120, true},
        {"lower right corner of the area, edge included", 704, 130, true},
        {"rim of the page, left", 15, 300, false},
        {"rim of the page, top", 360, 119, false},
        {"below the area, beside the bar", 360, 618, false},
        {"first row of the popup", 500, 250, false},
        {"left edge of the popup", 226, 400, false},
        {"right edge of the popup", 704, 400, false},
        {"just left of the popup", 225, 400, true},
        {"above the popup", 500, 239, true},
    };
    for (const Place& place : places) {
        SCOPED_TRACE(place.name);
        PageOnDisplay on;
        on.Menu().ShowValueRows(612, 47, 215);
        on.Popup().SetHidden(false);
        on.Repaint();
        on.display.Down(place.x, place.y);
        EXPECT_EQ(on.Popup().IsHidden(), place.closes);
        on.display.Up(place.x, place.y);
        EXPECT_EQ(on.Root().swallowAfterPopup, false);
        EXPECT_TRUE(on.TakeEvents().empty());
    }
    PageOnDisplay on; // the area of a hidden page lies everywhere, and closes nothing
    on.ShowSlider(50);
    on.page->frameArea->SetHidden(true);
    on.display.Tap(360, 130);
    EXPECT_FALSE(on.SliderFrame().IsHidden());
}

// Rules 7 and 8: what the tree does not take is reported so, and then no element looks pressed.
TEST(TouchFilterOrder, APressThatNobodyEndedIsReleasedAndRepainted) {
    PageOnDisplay on;
    const CVrPoint at = PageOnDisplay::Middle(*on.Bar().Button(0));
    on.display.Down(at.x, at.y);
    EXPECT_EQ(on.Bar().Button(0)->state, CVrGuiElement::StateSelected);
    on.display.App().SetCapture(nullptr); // somebody took the finger away
    const uint32_t frames = on.display.FrameCount();
    on.display.Up(5, 100);
    EXPECT_EQ(on.Bar().Button(0)->state, CVrGuiElement::StateNormal);
    EXPECT_FALSE(on.Bar().Button(0)->pressed);
    EXPECT_GT(on.display.FrameCount(), frames);
    EXPECT_EQ(on.TakeEvents(), Events({"0:1"}));
    EXPECT_FALSE(on.Root().RouteEvent(CVrGuiElement::EventDown, CVrPoint(2, 2))) << "nobody is there";
}
