// Golden pictures of what surrounds the pages: the menu row, the messages, the first page of the demonstration house.

#include <gtest/gtest.h>

#include "shell/frame_area.h"
#include "shell/menu.h"
#include "shell/test_page.h"
#include "shell/tree_list_button.h"
#include "support/golden.h"
#include "support/test_display.h"

// A page with a list that is longer than the screen.
class CVrGuiListPage : public CVrGuiTestPage {
public:
    bool IsScrollable() override { return true; }
    bool HasActionbar() override { return false; }
    void FillArea(CVrStructureItem* newItem) override {
        static const char* const kNames[] = {"Hall",    "Kitchen", "Living room", "Bathroom",
                                             "Terrace", "Garage",  "Attic"};
        CVrGuiFrame::FillArea(newItem);
        for (const char* name : kNames) {
            auto* tile = frameArea->CreateChild<CVrGuiTreeListBtn>("CVrGuiTreeListBtn", true);
            tile->text = name;
            tile->secondLine = "21.5 degrees";
            tile->listener = this;
        }
        ApplyLayout();
        ReloadAreaColors();
    }
};

VR_REGISTER_ELEMENT(CVrGuiListPage)

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

// A finger pulls the list beyond both ends: under it the page's colour, above it the corners of the area stay round.
TEST(GoldenShell, ListInTheRubberBandAtBothEnds) {
    TestDisplay display(TestHouse::FromFolder("tests/houses/six-pages"));
    auto* page = display.Root().CreateChild<CVrGuiListPage>("CVrGuiListPage", false);
    page->flags |= CVrGuiElement::FlagPage | CVrGuiElement::FlagHidden;
    page->FillArea(nullptr);
    page->ReloadColors();
    display.Root().ShowPage(page);
    display.App().WakeForRepaint();
    display.Settle();
    const CVrGuiFrameArea& area = *page->frameArea;
    const int32_t lowest = area.rect.height - area.storeSize.height;
    ASSERT_LT(lowest, -300);

    display.Drag(360, 200, 360, 215, 20);
    display.Down(360, 200);
    display.Move(360, 230);
    display.Move(360, 600);
    EXPECT_EQ(area.offsetY, 66); // 400 pixels too far: 200 * 100 / 300
    EXPECT_TRUE(ScreenMatches(display, "list-rubber-top"));
    display.Advance(200);
    display.Up(360, 600);
    display.Settle();
    EXPECT_EQ(area.offsetY, 0);

    for (int fling = 0; fling < 3; fling++) {
        display.Drag(360, 650, 360, 150, 100);
        display.Settle();
    }
    EXPECT_EQ(area.offsetY, lowest);
    display.Down(360, 650);
    display.Move(360, 600);
    display.Move(360, 250);
    EXPECT_EQ(area.offsetY, lowest - 66);
    EXPECT_TRUE(ScreenMatches(display, "list-rubber-bottom"));
    display.Up(360, 250);
    display.Settle();
    EXPECT_EQ(area.offsetY, lowest);
    EXPECT_TRUE(page->events.empty()) << "a drag is no tap";
}
