// Golden pictures of the pages of switches, push buttons and door stations.

#include <gtest/gtest.h>

#include "controls/switch_item.h"
#include "shell/frame.h"
#include "shell/frame_area.h"
#include "support/golden.h"
#include "support/test_display.h"

namespace {

testing::AssertionResult ScreenMatches(const TestDisplay& display, const std::string& name) {
    return golden::Matches(name, display.Screen(), kScreenSide, kScreenSide);
}

// Two top-level entries, so that the menu row shows, of which the first page serves so many switches.
void ShowSwitches(TestDisplay& display, uint32_t count) {
    CVrGuiFrame* page = display.Page();
    page->items.Clear();
    const VrPtrs<CVrStructureItem>& members = display.App().structure.root.children[1]->children;
    for (uint32_t i = 0; i < count; i++)
        page->items.Add(members[i]);
    page->FillArea(members[0]);
    page->InvalidateTree();
    display.App().WakeForRepaint();
    display.Settle();
}

TestHouse FourSwitches() {
    TestHouse house = TestHouse::Of(R"([
        {"T":342,"U":1,"N":"Kitchen","C":1},
        {"N":"Members","I":2,"sub":[
            {"T":342,"U":11,"N":"Kitchen island","C":1},
            {"T":342,"U":12,"N":"Стельове світло у вітальні","C":1,"I":3},
            {"T":342,"U":13,"N":"Wintergarten, Leuchten über dem großen Esstisch","C":1},
            {"T":342,"U":14,"N":"Fan","I":4}]}])");
    house.symbols = R"([{"I":1,"N":"lightbulb.svg"},{"I":2,"N":"house.svg"},{"I":3,"N":"lamp-ceiling.svg"},
                        {"I":4,"N":"fan.svg"}])";
    return house;
}

} // namespace

TEST(GoldenPages, OneToFourSwitches) {
    TestDisplay display(FourSwitches());
    static_cast<CVrStructureItemSwitch*>(display.App().structure.root.children[1]->children[1])->active =
        true;
    for (uint32_t count = 1; count <= 4; count++) {
        ShowSwitches(display, count);
        EXPECT_TRUE(ScreenMatches(display, "switches-" + std::to_string(count)));
    }
}

TEST(GoldenPages, PushButtonHeld) {
    TestDisplay display(
        TestHouse::Of(R"([{"T":493,"U":1,"N":"Door opener","C":1},{"T":342,"U":2,"N":"S","C":1}])"));
    display.Down(360, 400);
    display.Settle();
    EXPECT_TRUE(ScreenMatches(display, "push-button-held"));
    display.Up(360, 400);
}

TEST(GoldenPages, ComingSoon) {
    TestDisplay display(
        TestHouse::Of(R"([{"T":458,"U":1,"N":"Front door","C":1},{"T":342,"U":2,"N":"S","C":1}])"));
    display.Settle();
    EXPECT_TRUE(ScreenMatches(display, "coming-soon"));
    display.Page()->item->icon = 7; // the category's symbol comes first
    display.Page()->FillArea(nullptr);
    EXPECT_EQ(display.Page()->frameArea->Child(0)->iconName, "lightbulb.svg");
    display.Page()->item->category = 0;
    display.Page()->item->icon = 0;
    display.Page()->FillArea(nullptr);
    EXPECT_TRUE(display.Page()->frameArea->Child(0)->iconStatic) << "the default is one of our own";
    display.Tap(360, 400);
    EXPECT_TRUE(display.TakeCommands().empty()) << "the page takes no touch";
}
