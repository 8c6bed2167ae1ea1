// Popups: lists, sliders and tables, the touch that closes them, and the rules that the root's filter keeps.

#include <gtest/gtest.h>

#include <cstring>

#include "shell/menu.h"
#include "shell/menu_button.h"
#include "shell/popup_menu_button.h"
#include "shell/test_page.h"
#include "support/golden.h"

namespace {

testing::AssertionResult ScreenMatches(PageOnDisplay& on, const std::string& name) {
    on.Repaint();
    return golden::Matches(name, on.display.Screen(), kScreenSide, kScreenSide);
}

void FillList(PageOnDisplay& on, int count, const char* rowClass) {
    static const char* const names[] = {"Eco", "Comfort", "Party", "Holiday", "Building protection"};
    for (int i = 0; i < count; i++) {
        auto* row = on.Menu().CreateChild<CVrGuiPopupMenuBtn>(rowClass, false);
        row->id = 70 + i;
        row->text = names[i];
        row->layout = CVrGuiButton::LayoutTextLeft;
        row->listener = on.page;
        row->StartTree();
    }
    on.Menu().popupMode = PopupMode::List;
    on.Menu().ApplyLayout();
    on.Popup().ReloadColors();
    on.Popup().SetHidden(false);
    on.Repaint();
}

CVrGuiPopupMenuSlider& Row(PageOnDisplay& on, uint32_t index) {
    return *static_cast<CVrGuiPopupMenuSlider*>(on.Menu().Child(index));
}

} // namespace

TEST(PopupMenu, ThreeRowsFitAndFiveShowHalfARowMore) {
    int32_t bottom = 0;
    {
        PageOnDisplay three;
        bottom = three.Popup().rect.Bottom();
        FillList(three, 3, "CVrGuiPopupMenuBtn");
        EXPECT_EQ(three.Popup().rect.height, 3 * 110 + 2 * 10 + 20);
        EXPECT_EQ(three.Popup().rect.Bottom(), bottom);
        EXPECT_EQ(three.Menu().scrollState, CVrGuiScrollArea::ScrollState::Fixed);
        three.Menu().Child(1)->OnClick(CVrPoint());
        EXPECT_TRUE(ScreenMatches(three, "popup-list-3"));
    }
    PageOnDisplay five;
    FillList(five, 5, "CVrGuiPopupMenuBtn");
    EXPECT_EQ(five.Menu().rect.height, 3 * 110 + 2 * 10 + 55);
    EXPECT_EQ(five.Popup().rect.Bottom(), bottom);
    EXPECT_TRUE(ScreenMatches(five, "popup-list-5"));
    const CVrPoint at = PageOnDisplay::Middle(five.Menu());
    five.display.Drag(at.x, at.y, at.x, at.y - 100, 100);
    EXPECT_LT(five.Menu().offsetY, 0);
    EXPECT_TRUE(five.TakeEvents().empty());
}

TEST(PopupMenu, ATapMarksOneRowAndTellsThePage) {
    PageOnDisplay on;
    FillList(on, 3, "CVrGuiPopupMenuBtn");
    on.Tap(*on.Menu().Child(2));
    on.Tap(*on.Menu().Child(1));
    EXPECT_EQ(on.TakeEvents(), std::vector<std::string>({"72:1", "71:1"}));
    EXPECT_EQ(on.Menu().Child(1)->state, CVrGuiElement::StateSelected);
    EXPECT_EQ(on.Menu().Child(2)->state, CVrGuiElement::StateNormal);
}

TEST(PopupMenu, AHeldRowActsAfterASecondAndNotBefore) {
    PageOnDisplay on;
    FillList(on, 3, "CVrGuiPopupMenuTextBtn");
    const CVrPoint at = PageOnDisplay::Middle(*on.Menu().Child(0));
    on.display.Down(at.x, at.y);
    on.display.Advance(600);
    EXPECT_EQ(on.Menu().highlightedRow, on.Menu().Child(0));
    EXPECT_TRUE(golden::Matches("popup-hold", on.display.Screen(), kScreenSide, kScreenSide));
    on.display.Up(at.x, at.y);
    on.display.Advance(1000);
    EXPECT_TRUE(on.TakeEvents().empty()) << "let go too early";
    on.display.Down(at.x, at.y);
    on.display.Advance(1100);
    EXPECT_EQ(on.TakeEvents(), std::vector<std::string>({"70:1"}));
    on.display.Up(at.x, at.y);
    EXPECT_TRUE(on.TakeEvents().empty());
    EXPECT_EQ(on.Menu().highlightedRow, nullptr);
}

TEST(PopupMenu, TheValueTableKeepsItsSizeAndItsBottom) {
    PageOnDisplay on;
    const int32_t bottom = on.Popup().rect.Bottom();
    on.Menu().ShowValueRows(612, 47, -5);
    on.Popup().SetHidden(false);
    EXPECT_EQ(on.Popup().rect, CVrRect(698 - 478, bottom - 370, 478, 370));
    const CVrGuiElement* first = on.Menu().Child(0);
    on.Menu().ShowValueRows(613, 47, 215);
    EXPECT_EQ(on.Menu().Child(0), first) << "rows are kept";
    EXPECT_EQ(on.Popup().rect, CVrRect(698 - 478, bottom - 370, 478, 370));
    EXPECT_TRUE(ScreenMatches(on, "popup-values"));
    on.Menu().ShowValueRows(612, 47, -5);
    EXPECT_TRUE(ScreenMatches(on, "popup-values-negative"));
}

TEST(PopupMenu, VolumeRowsStandApartFromTheMaster) {
    PageOnDisplay on;
    on.ShowVolumes(2);
    EXPECT_EQ(on.Menu().Child(1)->rect.y - on.Menu().Child(0)->rect.Bottom(), 20);
    EXPECT_EQ(on.Menu().Child(2)->rect.y - on.Menu().Child(1)->rect.Bottom(), 10);
    EXPECT_EQ(on.Popup().rect.x, on.Bar().rect.x);
    EXPECT_EQ(on.Popup().rect.width, on.Bar().rect.width);
    EXPECT_TRUE(ScreenMatches(on, "popup-volumes"));
}

TEST(PopupMenu, ATapMutesAndUnmutesAPlayerButNotTheMaster) {
    PageOnDisplay on;
    on.ShowVolumes(2);
    Row(on, 1).SetValue(40);
    on.Tap(Row(on, 1));
    EXPECT_EQ(Row(on, 1).value, 0);
    on.Tap(Row(on, 1));
    EXPECT_EQ(Row(on, 1).value, 40);
    on.Tap(Row(on, 0));
    EXPECT_EQ(Row(on, 0).value, 40);
    EXPECT_EQ(on.page->refreshes, 3);
}

TEST(PopupMenu, ARowFollowsTheFingerBeyondFifteenPixels) {
    for (uint32_t zones : {2U, 4U}) { // a list that fits, and one that scrolls
        PageOnDisplay on;
        on.ShowVolumes(zones);
        CVrGuiPopupMenuSlider& row = Row(on, 1);
        row.SetValue(40);
        const CVrPoint at = PageOnDisplay::Middle(row);
        on.display.Down(at.x, at.y);
        on.display.Move(at.x + 15, at.y);
        EXPECT_EQ(row.value, 40);
        on.display.Move(at.x + 16, at.y);
        EXPECT_EQ(row.value, 42);
        EXPECT_FALSE(row.SetValue(90)) << "nobody else moves a slider that a finger drags";
        on.display.Move(at.x + 134, at.y - 60);
        EXPECT_EQ(row.value, 60) << "it keeps the finger that leaves it";
        on.display.Up(at.x + 134, at.y - 60);
        EXPECT_EQ(row.value, 60);
        EXPECT_EQ(on.Menu().offsetY, 0);
        EXPECT_EQ(on.display.App().Capture(), nullptr);
        EXPECT_TRUE(row.SetValue(90));
    }
}

TEST(PopupMenu, AVerticalFingerScrollsALongVolumeList) {
    PageOnDisplay on;
    on.ShowVolumes(4);
    CVrGuiPopupMenuSlider& row = Row(on, 2);
    row.SetValue(40);
    const CVrPoint at = PageOnDisplay::Middle(row);
    on.display.Drag(at.x, at.y, at.x + 5, at.y - 120, 100);
    EXPECT_EQ(row.value, 40);
    EXPECT_LT(on.Menu().offsetY, 0);
}

TEST(PopupMenu, TheSameVolumeRowsAreKeptAndOthersReplaced) {
    PageOnDisplay on;
    on.ShowVolumes(3);
    const CVrGuiElement* first = on.Menu().Child(1);
    on.ShowVolumes(3);
    EXPECT_EQ(on.Menu().Child(1), first);
    on.ShowVolumes(1);
    EXPECT_EQ(on.Menu().ChildCount(), 2U);
}

TEST(PopupSlider, ShowsItsValueByDayAndByNight) {
    for (bool night : {false, true}) {
        PageOnDisplay on;
        if (night)
            on.display.ShowNight(true);
        for (int32_t value : {0, 1, 50, 100}) {
            on.ShowSlider(value);
            EXPECT_TRUE(ScreenMatches(on, (night ? "slider-night-" : "slider-") + std::to_string(value)));
        }
    }
}

TEST(PopupSlider, OnePixelMovesItAndADragSendsEveryValue) {
    PageOnDisplay on;
    on.ShowSlider(50);
    const CVrPoint at = PageOnDisplay::Middle(on.Slider());
    on.display.Down(at.x, at.y);
    on.display.Move(at.x, at.y + 30);
    EXPECT_FALSE(on.Slider().IsDragged());
    int32_t last = 50;
    for (int32_t dx = 1; dx <= 300; dx++) {
        on.display.Move(at.x + dx, at.y + 30);
        EXPECT_LE(on.Slider().value - last, 1);
        last = on.Slider().value;
    }
    EXPECT_EQ(last, 50 + 300 * 100 / 668);
    EXPECT_EQ(on.page->refreshes, last - 50);
    on.display.Move(at.x + 300, at.y + 200); // over the action bar
    on.display.Up(at.x + 300, at.y + 200);
    EXPECT_EQ(on.page->refreshes, last - 50 + 1);
    EXPECT_TRUE(on.TakeEvents().empty());
    EXPECT_FALSE(on.Slider().IsDragged());
}

TEST(PopupSlider, HidesByItselfButNotUnderAFinger) {
    PageOnDisplay on;
    on.ShowSlider(50);
    on.Slider().HideAfter(2500);
    on.display.Advance(2000);
    const CVrPoint at = PageOnDisplay::Middle(on.Slider());
    on.display.Down(at.x, at.y);
    on.display.Advance(1000);
    EXPECT_FALSE(on.SliderFrame().IsHidden());
    on.display.Move(at.x + 10, at.y);
    on.display.Up(at.x + 10, at.y);
    on.display.Advance(2400);
    EXPECT_FALSE(on.SliderFrame().IsHidden()) << "every change begins the time anew";
    on.display.Advance(200);
    EXPECT_TRUE(on.SliderFrame().IsHidden());
    EXPECT_FALSE(on.Slider().IsTimerActive());
}

TEST(PopupSlider, StaysAboveTheBarWhenThePageIsLaidOutAgain) {
    PageOnDisplay on;
    on.ShowSlider(50);
    const CVrRect before = on.SliderFrame().rect;
    on.page->ApplyLayout();
    EXPECT_EQ(on.SliderFrame().rect, before);
    EXPECT_EQ(on.Slider().rect, CVrRect(10, 10, 668, 114));
}

// The page has no store of its own: what is darkened lies in the root's, and only within the content's rectangle.
TEST(Popups, TheContentBehindIsDarkenedAndNothingElse) {
    PageOnDisplay on;
    const std::vector<uint32_t> before(on.display.Screen(), on.display.Screen() + kScreenSide * kScreenSide);
    on.ShowSlider(50);
    const CVrRect popup(on.SliderFrame().ToRoot(on.SliderFrame().rect.Origin()),
                        on.SliderFrame().rect.Size());
    const CVrRect content(on.page->frameArea->ToRoot(on.page->frameArea->rect.Origin()),
                          on.page->frameArea->rect.Size());
    uint32_t wrong = 0;
    for (int32_t y = 0; y < kScreenSide; y++) {
        for (int32_t x = 0; x < kScreenSide; x++) {
            const uint32_t was = before[static_cast<size_t>(y * kScreenSide + x)];
            uint32_t wanted = was;
            if (popup.Contains(CVrPoint(x, y)))
                continue;
            if (content.Shrunken(16).Contains(CVrPoint(x, y))) // short of the round corners
                wanted = 0xFF000000 | (was >> 16 & 0xFF) * 127 / 255 << 16 |
                         (was >> 8 & 0xFF) * 127 / 255 << 8 | (was & 0xFF) * 127 / 255;
            else if (content.Contains(CVrPoint(x, y)))
                continue;
            wrong += on.display.PixelAt(x, y) != wanted;
        }
    }
    EXPECT_EQ(wrong, 0U);
    on.SliderFrame().SetHidden(true);
    on.Repaint();
    EXPECT_EQ(memcmp(before.data(), on.display.Screen(), before.size() * sizeof(uint32_t)), 0);
}

TEST(Popups, TheTapThatClosesThemDoesNothingElse) {
    PageOnDisplay on;
    on.ShowSlider(50);
    on.ShowVolumes(2);
    on.Bar().Button(3)->ShowState(CVrGuiElement::StateSelected);
    on.SliderFrame().SetHidden(false);
    on.display.Down(360, 130);
    EXPECT_TRUE(on.Popup().IsHidden());
    EXPECT_TRUE(on.SliderFrame().IsHidden());
    EXPECT_EQ(on.Bar().Button(3)->state, CVrGuiElement::StateNormal);
    on.display.Move(360, 140);
    on.display.Up(360, 140);
    EXPECT_TRUE(on.TakeEvents().empty());
    on.display.Tap(360, 140);
    EXPECT_EQ(on.TakeEvents(), std::vector<std::string>({"50:1"})) << "the next one counts";
}

TEST(Popups, TapsInsideThemAndOnBarAndMenuGoThrough) {
    PageOnDisplay on;
    on.ShowVolumes(2);
    on.Tap(Row(on, 1));
    EXPECT_EQ(on.page->refreshes, 1);
    on.Tap(*on.Bar().Button(0));
    EXPECT_EQ(on.TakeEvents(), std::vector<std::string>({"0:1"}));
    EXPECT_FALSE(on.Popup().IsHidden());
    on.display.Tap(600, 55);
    EXPECT_EQ(on.display.Page()->item->uuid, 2U);
    EXPECT_TRUE(on.Popup().IsHidden());
    EXPECT_EQ(on.Menu().ChildCount(), 0U) << "nothing is carried to another page";
}

TEST(Popups, ARefusalClosesTheListOnly) {
    PageOnDisplay on;
    on.ShowVolumes(1);
    on.Popup().OnPopupResult(true);
    EXPECT_FALSE(on.Popup().IsHidden());
    on.Popup().OnPopupResult(false);
    EXPECT_TRUE(on.Popup().IsHidden());
}

TEST(TouchFilter, AFinishedTouchIsAnInteractionAndAMoveIsNot) {
    PageOnDisplay on;
    const uint64_t start = on.Root().lastInteraction;
    on.display.clock.Advance(500);
    on.display.Down(360, 300);
    on.display.Move(360, 305);
    EXPECT_EQ(on.Root().lastInteraction, start);
    on.display.Up(360, 305);
    EXPECT_GT(on.Root().lastInteraction, start);
}

TEST(TouchFilter, LoadingComesBeforeTheDarkAndTheDarkBeforePopups) {
    PageOnDisplay on;
    on.ShowSlider(50);
    on.Root().loading = true;
    on.Root().displayOff = true;
    on.display.Tap(360, 130);
    EXPECT_TRUE(on.Root().displayOff) << "while loading nothing wakes";
    on.Root().loading = false;
    on.display.Down(360, 130);
    EXPECT_FALSE(on.Root().displayOff);
    EXPECT_FALSE(on.SliderFrame().IsHidden()) << "the touch that wakes closes nothing";
    on.display.Move(360, 140);
    on.display.Up(360, 140);
    EXPECT_FALSE(on.SliderFrame().IsHidden());
    EXPECT_FALSE(on.Root().swallowUntilUp);
    on.display.Tap(360, 130);
    EXPECT_TRUE(on.SliderFrame().IsHidden());
}

TEST(TouchFilter, NothingLooksPressedAfterTheFingerHasGone) {
    PageOnDisplay on;
    on.display.Down(360, 300);
    EXPECT_TRUE(on.page->frameArea->Child(0)->pressed);
    on.display.Up(20, 20);
    EXPECT_FALSE(on.page->frameArea->Child(0)->pressed);
    EXPECT_TRUE(on.TakeEvents().empty());
}

TEST(Rest, ARunningActiveControllerOnTheVisiblePageHoldsItOff) {
    TestDisplay display(
        TestHouse::Of(R"([{"T":342,"U":1,"N":"One","C":1},{"T":342,"U":2,"N":"Two","C":1}])"));
    CVrGuiMainWin& root = display.Root();
    CVrStructureItem& first = *display.App().structure.root.children[0];
    first.activeController = true;
    display.Tap(360, 400); // switches it on
    display.Advance(61'000);
    EXPECT_FALSE(root.idle);
    display.Tap(600, 55); // the other page
    display.Advance(60'200);
    EXPECT_TRUE(root.idle) << "a control on a hidden page does not count";
    display.Tap(600, 300);
    EXPECT_FALSE(root.idle);
    root.keepOn = true;
    display.Advance(61'000);
    EXPECT_FALSE(root.idle);
    root.keepOn = false;
    root.restMode = 5;
    display.Advance(61'000);
    EXPECT_FALSE(root.idle);
}
