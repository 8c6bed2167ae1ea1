// Switch and push button through the real touch path: state, commands, layout.

#include <gtest/gtest.h>

#include "controls/push_button_item.h"
#include "controls/switch_item.h"
#include "shell/frame.h"
#include "shell/frame_area.h"
#include "support/test_display.h"

namespace {

using Commands = std::vector<std::string>;

TestHouse OutputHouse(int type, int count) {
    std::string members;
    for (int i = 1; i <= count; i++)
        members += (i > 1 ? "," : "") + std::string(R"({"T":)") + std::to_string(type) + R"(,"U":)" +
                   std::to_string(i) + R"(,"N":"Output )" + std::to_string(i) + R"(","C":1})";
    return TestHouse::Of("[" + members + "]");
}

std::string Command(int uuid, int event) {
    return R"({"U":)" + std::to_string(uuid) + R"(,"E":)" + std::to_string(event) + R"(,"T":2,"V":1.0})";
}

} // namespace

TEST(Switch, TapsSendOnThenOffWhateverAnybodyAnswers) {
    TestDisplay display(OutputHouse(342, 1));
    auto* item = static_cast<CVrStructureItemSwitch*>(display.Page()->item);
    display.Tap(360, 360);
    EXPECT_TRUE(item->active);
    EXPECT_EQ(display.TakeCommands(), Commands{Command(1, 0)});
    display.Tap(360, 360);
    EXPECT_FALSE(item->active);
    EXPECT_EQ(display.TakeCommands(), Commands{Command(1, 1)});
}

TEST(Switch, StateComesInThroughTheItem) {
    TestDisplay display(OutputHouse(342, 1));
    CVrGuiFrame* page = display.Page();
    static_cast<CVrStructureItemSwitch*>(page->item)->active = true;
    page->UpdateFromItem(page->item);
    EXPECT_EQ(page->frameArea->Child(0)->state, CVrGuiElement::StateSelected);
    display.Tap(360, 360);
    EXPECT_EQ(display.TakeCommands(), Commands{Command(1, 1)});
}

TEST(Switch, AFingerThatLeavesTheButtonSendsNothing) {
    TestDisplay display(OutputHouse(342, 1));
    display.Drag(360, 360, 360, 719, 100);
    EXPECT_TRUE(display.TakeCommands().empty());
    display.Tap(360, 360);
    EXPECT_EQ(display.TakeCommands().size(), 1U);
}

TEST(Switch, UnsignedNumbersPrintSigned) {
    TestDisplay display(TestHouse::Of(R"([{"T":342,"U":"80000001","N":"Far","C":1}])"));
    display.Tap(360, 360);
    EXPECT_EQ(display.TakeCommands(), Commands{R"({"U":-2147483647,"E":0,"T":2,"V":1.0})"});
}

TEST(Switch, AGroupPageBindsToItsFirstSwitch) {
    TestDisplay display(OutputHouse(342, 1));
    CVrStructureItem group;
    auto* other = new CVrStructureItem;
    auto* output = new CVrStructureItemSwitch;
    other->type = ObjectType::PushButton;
    output->type = ObjectType::Switch;
    group.children.Add(other);
    group.children.Add(output);
    CVrGuiFrame* page = display.Page();
    page->CreateContent(&group);
    EXPECT_EQ(page->item, output);
    EXPECT_EQ(output->element, page);
    page->item = nullptr;
}

TEST(PushButton, CommandsAtTouchDownAndShowsTheFinger) {
    TestDisplay display(OutputHouse(493, 1));
    CVrGuiElement* button = display.Page()->frameArea->Child(0);
    display.Down(360, 360);
    EXPECT_EQ(button->state, CVrGuiElement::StateSelected);
    EXPECT_EQ(display.TakeCommands(), Commands{Command(1, 0)});
    display.Up(360, 360);
    EXPECT_EQ(button->state, CVrGuiElement::StateNormal);
    EXPECT_TRUE(display.TakeCommands().empty());
}

TEST(PushButton, APressThatLeavesIsReleasedAndSendsNothingMore) {
    TestDisplay display(OutputHouse(493, 1));
    CVrGuiElement* button = display.Page()->frameArea->Child(0);
    display.Down(360, 360);
    display.TakeCommands();
    display.Move(360, 30);
    display.Up(360, 30);
    EXPECT_EQ(button->state, CVrGuiElement::StateNormal);
    EXPECT_FALSE(button->pressed);
    EXPECT_TRUE(display.TakeCommands().empty());
}

// One, two and three large buttons fill the area without a gap at the edges; four fall into the grid.
TEST(OutputPage, ButtonsShareTheArea) {
    for (int count = 1; count <= 4; count++) {
        SCOPED_TRACE(count);
        TestDisplay display(TestHouse::Of("[]"));
        std::string members;
        for (int i = 1; i <= count; i++)
            members += R"({"T":342,"U":)" + std::to_string(i) + R"(,"N":"S"},)";
        CVrStructure& structure = display.App().structure;
        structure.LoadJsonConfig(("[" + members + "]").c_str(), "[]", "[]", "[]");
        auto* page = display.Root().CreateChild<CVrGuiFrame>("CVrGuiSwitch", false);
        ASSERT_NE(page, nullptr);
        page->frameType = ObjectType::Switch;
        for (CVrStructureItem* item : structure.root.children)
            page->items.Add(item);
        page->FillArea(structure.root.children[0]);
        const CVrGuiFrameArea& area = *page->frameArea;
        ASSERT_EQ(area.ChildCount(), static_cast<uint32_t>(count));
        CVrRect all;
        for (uint32_t i = 0; i < area.ChildCount(); i++) {
            for (uint32_t k = 0; k < i; k++)
                EXPECT_FALSE(area.Child(i)->rect.Intersects(area.Child(k)->rect)) << i << " covers " << k;
            all = all.United(area.Child(i)->rect);
        }
        EXPECT_EQ(all, CVrRect(0, 0, area.rect.width, area.rect.height));
    }
}
