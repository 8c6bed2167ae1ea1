// Another house arrives while a finger, a popup or a movement holds on to the present one. Under the address sanitizer
// these fail when anything points at what has gone.

#include <gtest/gtest.h>

#include "shell/menu.h"
#include "shell/popup_menu_button.h"
#include "shell/test_page.h"

namespace {

// What is going on when the house changes; each leaves a finger on the screen where `finger` says so.
struct Situation {
    const char* name;
    CVrPoint (*begin)(PageOnDisplay& on);
    bool finger = true;
};

CVrPoint Press(PageOnDisplay& on, const CVrGuiElement& element) {
    const CVrPoint at = PageOnDisplay::Middle(element);
    on.display.Down(at.x, at.y);
    return at;
}

void ShowHoldRows(PageOnDisplay& on) {
    for (int i = 0; i < 5; i++) {
        auto* row = on.Menu().CreateChild<CVrGuiPopupMenuBtn>("CVrGuiPopupMenuTextBtn", false);
        row->listener = on.page;
        row->StartTree();
    }
    on.Menu().popupMode = PopupMode::List;
    on.Menu().ApplyLayout();
    on.Popup().SetHidden(false);
    on.Repaint();
}

const Situation kSituations[] = {
    {"a tile is pressed", [](PageOnDisplay& on) { return Press(on, *on.page->frameArea->Child(0)); }},
    {"an action button is pressed", [](PageOnDisplay& on) { return Press(on, *on.Bar().Button(0)); }},
    {"an action button is held", [](PageOnDisplay& on) { return Press(on, *on.Bar().Button(1)); }},
    {"a latching button is pressed with its popup up",
     [](PageOnDisplay& on) {
         on.ShowSlider(50);
         return Press(on, *on.Bar().Button(2));
     }},
    {"the popup slider is dragged",
     [](PageOnDisplay& on) {
         on.ShowSlider(50);
         const CVrPoint at = Press(on, on.Slider());
         on.display.Move(at.x + 40, at.y);
         return at.Moved(40, 0);
     }},
    {"a list in the popup is dragged",
     [](PageOnDisplay& on) {
         on.ShowVolumes(4);
         const CVrPoint at = Press(on, *on.Menu().Child(1));
         on.display.Move(at.x, at.y - 60);
         return at.Moved(0, -60);
     }},
    {"a row is held for its second",
     [](PageOnDisplay& on) {
         ShowHoldRows(on);
         const CVrPoint at = Press(on, *on.Menu().Child(0));
         on.display.Advance(300);
         return at;
     }},
    {"the list in the popup still runs on",
     [](PageOnDisplay& on) {
         on.ShowVolumes(4);
         const CVrPoint at = PageOnDisplay::Middle(on.Menu());
         on.display.Drag(at.x, at.y, at.x, at.y - 150, 50);
         return at;
     },
     false},
    {"the menu row is dragged",
     [](PageOnDisplay& on) {
         on.display.Down(360, 55);
         on.display.Move(300, 55);
         return CVrPoint(300, 55);
     }},
    {"a popup was just closed by this touch",
     [](PageOnDisplay& on) {
         on.ShowSlider(50);
         on.display.Down(360, 130);
         return CVrPoint(360, 130);
     }},
};

} // namespace

TEST(Reload, AnotherHouseMayComeAtAnyTime) {
    for (const Situation& situation : kSituations) {
        SCOPED_TRACE(situation.name);
        PageOnDisplay on;
        const CVrPoint at = situation.begin(on);
        const TestHouse other = TestHouse::Of(
            R"([{"T":342,"U":7,"N":"Seven","C":1},{"T":469,"U":8,"N":"Eight","C":1},{"T":342,"U":9,"N":"Nine"}])");
        on.display.App().LoadStructure(other.structure.c_str(), other.categories.c_str(), other.rooms.c_str(),
                                       other.symbols.c_str());
        EXPECT_EQ(on.display.App().Capture(), nullptr);
        EXPECT_EQ(on.Root().hitElement, nullptr);
        EXPECT_EQ(on.Root().menu->pressedChild, nullptr);
        EXPECT_FALSE(on.Root().IsPopupUp());
        on.display.App().BeginLoop();
        if (situation.finger) {
            on.display.Move(at.x + 3, at.y - 20);
            on.display.Advance(1200); // every timer of the former house would have come by now
            on.display.Up(at.x + 3, at.y - 20);
        }
        on.display.Advance(1200);
        on.display.Settle();
        on.display.TakeCommands();
        on.display.Tap(360, 55); // the middle one of three pages
        ASSERT_EQ(on.display.Page()->item->uuid, 8U);
        EXPECT_EQ(on.Bar().parent, on.display.Page());
        on.Tap(*on.Bar().Button(2));
        EXPECT_EQ(on.display.TakeCommands(), std::vector<std::string>{R"({"U":8,"E":2,"T":2,"V":0.5})"});
    }
}
