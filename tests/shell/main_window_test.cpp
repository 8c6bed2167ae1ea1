// From the structure to pages, and the first way of a touch.

#include <gtest/gtest.h>

#include "shell/frame.h"
#include "shell/frame_area.h"
#include "shell/menu.h"
#include "shell/menu_button.h"
#include "support/test_display.h"

namespace {

std::string Switch(int uuid, const char* more = "") {
    return R"({"T":342,"U":)" + std::to_string(uuid) + R"(,"N":"Switch )" + std::to_string(uuid) +
           R"(","C":1)" + more + "}";
}

std::string Shading(int uuid, int type, int kind) {
    return R"({"T":)" + std::to_string(type) + R"(,"U":)" + std::to_string(uuid) +
           R"(,"N":"Blind","details":{"type":)" + std::to_string(kind) + "}}";
}

CVrGuiMenuBtn* MenuButton(TestDisplay& display, uint32_t index) {
    return static_cast<CVrGuiMenuBtn*>(display.Root().menu->Child(index));
}

} // namespace

TEST(MainWindow, OneEntryFillsTheScreenWithoutAMenu) {
    TestDisplay display(TestHouse::Of("[" + Switch(1) + "]"));
    EXPECT_TRUE(display.Root().menu->IsHidden());
    EXPECT_EQ(display.Page()->rect, CVrRect(6, 6, 708, 708));
}

TEST(MainWindow, TheFirstPageShowsAndATapOnTheMenuChangesIt) {
    TestDisplay display(TestHouse::Of("[" + Switch(1) + "," + Switch(2) + "," + Switch(3) + "]"));
    EXPECT_FALSE(display.Root().menu->IsHidden());
    EXPECT_EQ(display.Page()->item->uuid, 1U);
    EXPECT_EQ(display.Page()->rect, CVrRect(6, 110, 708, 604));
    display.Tap(360, 55);
    EXPECT_EQ(display.Page()->item->uuid, 2U);
    EXPECT_EQ(MenuButton(display, 0)->state, CVrGuiElement::StateNormal);
    EXPECT_EQ(MenuButton(display, 1)->state, CVrGuiElement::StateSelected);
}

TEST(MainWindow, AnEmptyStructureSaysSo) {
    TestDisplay display(TestHouse::Of("[]"));
    EXPECT_TRUE(display.Root().emptyConfiguration);
    EXPECT_EQ(display.PixelAt(2, 2), 0xFF000000U);
    EXPECT_EQ(display.PixelAt(360, 60), 0xFF8DFF70U);
    EXPECT_EQ(display.PixelAt(360, 690), 0xFFFFFFFFU);
}

TEST(MainWindow, AStructureThatCannotBeParsedIsAnEmptyOne) {
    for (const char* text : {"", "[", "{\"T\":", "not json", "[{]}"}) {
        SCOPED_TRACE(text);
        TestDisplay display(TestHouse::Of(text));
        EXPECT_TRUE(display.Root().emptyConfiguration);
        display.Tap(360, 360);
        EXPECT_TRUE(display.TakeCommands().empty());
    }
}

TEST(MainWindow, BrokenTablesLeaveTheRestOfTheHouse) {
    TestHouse house = TestHouse::Of("[" + Switch(1) + "]");
    house.categories = "[{";
    house.rooms = "";
    house.symbols = "nothing";
    TestDisplay display(house);
    display.Tap(360, 360);
    EXPECT_EQ(display.TakeCommands().size(), 1U);
}

TEST(MainWindow, UniformGroupsOfShadingsShareOnePage) {
    TestDisplay display(TestHouse::Of(R"([{"N":"Blinds","sub":[)" + Shading(1, 476, 4) + "," +
                                      Shading(2, 502, 4) + R"(]},{"N":"Mixed","sub":[)" + Shading(3, 476, 2) +
                                      "," + Switch(4) + "]}]"));
    auto* blinds = MenuButton(display, 0)->linkedElement.As<CVrGuiFrame>();
    ASSERT_NE(blinds, nullptr);
    EXPECT_EQ(blinds->frameType, 476U);
    EXPECT_EQ(blinds->ServedCount(), 2);
    auto* mixed = MenuButton(display, 1)->linkedElement.As<CVrGuiFrame>();
    EXPECT_EQ(mixed->frameType, 0U);
}

TEST(MainWindow, HiddenPlayersGetNoPage) {
    TestDisplay display(
        TestHouse::Of(R"([{"T":507,"U":1,"N":"Kitchen","details":{"hidden":true}},)" + Switch(2) + "]"));
    EXPECT_EQ(display.Root().menu->ChildCount(), 1U);
    EXPECT_EQ(display.App().structure.audioZones.GetSize(), 1U);
}

TEST(MainWindow, TheDefaultScreenComesUpWithItsMenuButton) {
    TestDisplay display(TestHouse::Of("[" + Switch(1) + "," + Switch(2, R"(,"defScr":1)") + "]"));
    ASSERT_TRUE(display.Root().ShowDefaultScreen());
    display.Settle();
    EXPECT_EQ(display.Page()->item->uuid, 2U);
    EXPECT_EQ(MenuButton(display, 1)->state, CVrGuiElement::StateSelected);
}

TEST(MainWindow, ATouchOnADarkDisplayOnlyWakes) {
    TestDisplay display(TestHouse::Of("[" + Switch(1) + "]"));
    display.Root().displayOff = true;
    display.Tap(360, 360);
    EXPECT_FALSE(display.Root().displayOff);
    EXPECT_TRUE(display.TakeCommands().empty());
    display.Tap(360, 360);
    EXPECT_EQ(display.TakeCommands().size(), 1U);
}

TEST(MainWindow, WhileLoadingNothingIsTouched) {
    TestDisplay display(TestHouse::Of("[" + Switch(1) + "]"));
    display.Root().loading = true;
    display.Tap(360, 360);
    display.Root().loading = false;
    EXPECT_TRUE(display.TakeCommands().empty());
}

TEST(MainWindow, GarbageTouchesNeverWedgeIt) {
    TestDisplay display(TestHouse::Of("[" + Switch(1) + "," + Switch(2) + "]"));
    uint32_t seed = 1;
    for (int i = 0; i < 3'000; i++) {
        seed = seed * 1664525 + 1013904223;
        const uint32_t type = 1U << (seed >> 28) % 3;
        display.App().PostTouch(type, CVrPoint(static_cast<int32_t>(seed >> 8 & 1023) - 150,
                                               static_cast<int32_t>(seed >> 18 & 1023) - 150));
        display.clock.Advance(seed & 15);
        display.Pass();
    }
    display.Up(0, 0);
    display.Settle();
    display.TakeCommands();
    display.Tap(360, 400);
    EXPECT_EQ(display.TakeCommands().size(), 1U);
}

TEST(MainWindow, ATouchDoesNotSwallowARepaintThatSomebodyAskedFor) {
    TestDisplay display(TestHouse::Of("[" + Switch(1) + "]"));
    display.Settle();
    const uint32_t frames = display.FrameCount();
    display.App().WakeForRepaint();
    display.Move(1, 1); // reaches nothing, before the loop has run
    EXPECT_EQ(display.FrameCount(), frames + 1);
}

TEST(MainWindow, AStructureCanBeReplaced) {
    TestDisplay display(TestHouse::Of("[" + Switch(1) + "," + Switch(2) + "]"));
    display.Down(360, 360);
    const TestHouse other = TestHouse::Of("[" + Switch(7) + "]");
    display.App().LoadStructure(other.structure.c_str(), other.categories.c_str(), other.rooms.c_str(),
                                other.symbols.c_str());
    display.App().BeginLoop();
    display.Up(360, 360);
    display.Tap(360, 360);
    EXPECT_EQ(display.Page()->item->uuid, 7U);
    EXPECT_FALSE(display.TakeCommands().empty());
}
