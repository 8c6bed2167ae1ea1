// The room climate page: what it shows for each state of its item, what it sends, and its table of room values; the
// large number by itself. State comes in through the item and UpdateFromItem, touches through the real path.

#include <gtest/gtest.h>

#include "controls/room_climate.h"
#include "controls/room_climate_item.h"
#include "controls/temperature_widget.h"
#include "foundation/translator.h"
#include "gui/plain_text.h"
#include "shell/actionbar.h"
#include "shell/frame_area.h"
#include "shell/main_window.h"
#include "shell/popup_frame.h"
#include "shell/popup_menu.h"
#include "shell/tree_list_button.h"
#include "support/golden.h"
#include "support/test_display.h"

namespace {

using Commands = std::vector<std::string>;

struct State {
    int32_t operatingMode, activeMode;
    int32_t currentTemp = 215, targetTemp = 210;
};

// A climate page and a switch, so that there is a menu row; two climate pages when a test needs a neighbour.
struct ClimateOnDisplay {
    explicit ClimateOnDisplay(const char* second = R"({"T":342,"U":2,"N":"Switch","C":1})")
        : display(
              TestHouse::Of(std::string(R"([{"T":469,"U":1234,"N":"Living room","C":1},)") + second + "]")) {
        page = static_cast<CVrGuiHeatIRoomController2*>(display.Page());
        item = static_cast<CVrStructureItemHeatIRoomController2*>(page->item);
        Root().roomCo2 = 612;
        Root().roomHumidity = 47;
    }
    ~ClimateOnDisplay() { CVrTranslator::Instance().SetLanguage("ENG"); }
    CVrGuiMainWin& Root() { return display.Root(); }
    CVrGuiActionbarBtn& Button(uint32_t index) { return *Root().actionbar->Button(index); }
    bool IsInfoUp() { return !Root().popupFrame->IsHidden(); }
    void Show(const State& state) {
        item->operatingMode = state.operatingMode;
        item->activeMode = state.activeMode;
        item->currentTemp = state.currentTemp;
        item->targetTemp = state.targetTemp;
        item->element->UpdateFromItem(item);
        Repaint();
    }
    void Repaint() {
        display.App().WakeForRepaint();
        display.Settle();
    }
    void Tap(uint32_t button) {
        const CVrPoint at = Button(button).ToRoot(Button(button).rect.Center());
        display.Tap(at.x, at.y);
    }
    std::string ValueRow(uint32_t index) {
        const auto* row = static_cast<CVrGuiTreeListBtn*>(Root().popupFrame->popupMenu->Child(index));
        return row ? Joined(row->text, row->valueText) : "none";
    }
    static std::string Joined(const CVrxStringU& title, const CVrxStringU& value) {
        return std::string(title.CStr()) + " = " + value.CStr();
    }
    testing::AssertionResult Matches(const std::string& name) {
        Repaint();
        return golden::Matches("climate-" + name, display.Screen(), kScreenSide, kScreenSide);
    }

    TestDisplay display;
    CVrGuiHeatIRoomController2* page = nullptr;
    CVrStructureItemHeatIRoomController2* item = nullptr;
};

std::string Command(int event, const char* value) {
    return R"({"U":1234,"E":)" + std::to_string(event) + R"(,"T":2,"V":)" + value + "}";
}

// What a label shows; "-" when it is hidden.
std::string Shown(const CVrGuiPlainText* label) {
    return label->IsHidden() ? "-" : label->text.CStr();
}

} // namespace

TEST(Climate, EachStateHasItsWordsItsSymbolAndItsPlaces) {
    struct Row {
        State state;
        const char* mode;
        int32_t symbol;
        const char* target;
        const char* activeMode;
    };
    const Row rows[] = {
        {{1, 0}, "Heating", 10029, "Min 21.0", "Eco"},
        {{4, 1, 199, 225}, "Heating", 10029, "Min 22.5", "Comfort"},
        {{2, 2, 250, 260}, "Cooling", 10030, "Max 26.0", "Building protection"},
        {{5, 3, 250, 5}, "Cooling", 10030, "Max 0.5", "Fixed setpoint"},
        {{1, 19}, "Heating", 10029, "Min 21.0", "Fixed setpoint"}, // bit 16
        {{1, 4}, "Heating", 10029, "Min 21.0", "-"},               // a mode without a word
        {{3, 0}, "", 0, "21.0", "Eco"},                            // neither heats nor cools
        {{0, 16, -5, -5}, "", 0, "-0.5", "Fixed setpoint"},
        {{1, 255}, "Off", 0, "-", "-"},
        {{1, 0, INT32_MIN, INT32_MIN}, "Heating", 10029, "Min -214748364.8", "Eco"},
    };
    ClimateOnDisplay on;
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.state.operatingMode) + "/" + std::to_string(row.state.activeMode));
        on.Show(row.state);
        const CVrGuiHeatIRoomController2& page = *on.page;
        EXPECT_EQ(Shown(page.modeText), row.mode);
        EXPECT_EQ(page.modeSymbol, row.symbol);
        EXPECT_EQ(page.modeSymbolText->IsHidden(), row.symbol == 0);
        EXPECT_EQ(page.modeSymbolText->icon.HasBitmap(), row.symbol != 0);
        EXPECT_EQ(Shown(page.targetText), row.target);
        EXPECT_EQ(Shown(page.activeModeText), row.activeMode);
        EXPECT_EQ(on.Button(0).IsHidden(), row.state.activeMode == 1);
        EXPECT_EQ(on.Button(0).state, CVrGuiElement::StateSelected);
        EXPECT_EQ(page.frameArea->rect, CVrRect(10, 10, 688, 490));
        EXPECT_EQ(page.widget->rect, CVrRect(0, 5 + 139, 688, 148));
        EXPECT_EQ(page.modeText->rect.y, 5 + 87);
        if (row.symbol == 0)
            EXPECT_EQ(page.modeText->rect, CVrRect(0, 5 + 87, 688, 32));
        else // the pair stands 44 pixels from edge to edge
            EXPECT_EQ(page.modeText->rect.x - page.modeSymbolText->rect.x, 44);
    }
}

TEST(Climate, TheNumberCarriesItsSignAlsoBeforeAZero) {
    ClimateOnDisplay on;
    on.Show({0, 0, -5});
    EXPECT_EQ(on.page->widget->wholePart, 0);
    EXPECT_EQ(on.page->widget->fractionPart, 5);
    const std::vector<uint32_t> below(on.display.Screen(), on.display.Screen() + kScreenSide * kScreenSide);
    on.Show({0, 0, 5});
    int32_t left = kScreenSide, right = 0; // of the columns in which the two differ
    for (int32_t y = 240; y < 420; y++)
        for (int32_t x = 0; x < kScreenSide; x++)
            if (below[static_cast<size_t>(y * kScreenSide + x)] != on.display.PixelAt(x, y)) {
                left = std::min(left, x);
                right = std::max(right, x);
            }
    EXPECT_LT(left, right) << "there is a minus";
    EXPECT_GT(left, 150) << "and the number stays in the middle";
    EXPECT_LT(right, 570);
}

// No letter is lost at the end of its row, whatever the language.
TEST(Climate, EveryLanguageFindsRoomForItsWords) {
    ClimateOnDisplay on;
    for (const char* language : {"ENG", "ENU", "DEU", "BGR", "CAT", "CSY", "ESN", "FRA", "HUN", "ITA", "NLD",
                                 "NOR", "PLK", "PTG", "ROM", "RUS", "SKY", "TRK", "UKR"}) {
        CVrTranslator::Instance().SetLanguage(language);
        on.display.App().ApplyLanguage();
        for (int32_t mode : {1, 2}) {
            SCOPED_TRACE(std::string(language) + " " + on.page->modeText->text.CStr());
            on.Show({mode, 2});
            // The same word with room to spare has the same ink.
            const CVrRect row(on.page->modeText->ToRoot(on.page->modeText->rect.Origin()), CVrSize(400, 40));
            const auto ink = [&] {
                uint64_t sum = 0;
                for (int32_t y = row.y - 4; y < row.Bottom(); y++)
                    for (int32_t x = row.x; x < std::min(row.Right(), kScreenSide); x++)
                        sum += on.display.PixelAt(x, y) & 0xFF;
                return sum;
            };
            const uint64_t tight = ink();
            on.page->modeText->rect.width = 400;
            on.page->modeText->Invalidate();
            on.Repaint();
            EXPECT_EQ(tight, ink());
            EXPECT_LT(on.page->activeModeText->text.GetLength(), 60U);
        }
    }
}

TEST(Climate, TheBarSendsItsCommandsInOrder) {
    ClimateOnDisplay on;
    on.Show({1, 0});
    on.Tap(1);
    on.Tap(2);
    on.Tap(2);
    on.Tap(0);
    on.Tap(3);
    EXPECT_EQ(on.display.TakeCommands(),
              Commands({Command(3, "0.5"), Command(2, "0.5"), Command(2, "0.5"), Command(1, "1.0")}));
    EXPECT_EQ(on.page->targetTemp, 210) << "the answer moves the target, not the tap";
    on.Show({1, 255});
    on.Tap(1);
    on.Tap(2);
    on.Tap(0);
    EXPECT_EQ(on.display.TakeCommands(), Commands({Command(1, "1.0")}));
    on.Show({1, 1}); // without the schedule three buttons share the width
    EXPECT_EQ(on.Button(1).rect.width, (688 - 2 * 10) / 3);
    on.Tap(1);
    on.Tap(2);
    EXPECT_EQ(on.display.TakeCommands(), Commands({Command(3, "0.5"), Command(2, "0.5")}));
}

TEST(Climate, TheInfoButtonOpensAndClosesTheTable) {
    ClimateOnDisplay on;
    on.Show({1, 0, -5});
    on.Tap(3);
    EXPECT_TRUE(on.IsInfoUp());
    EXPECT_EQ(on.Button(3).state, CVrGuiElement::StateSelected);
    EXPECT_EQ(on.Root().popupFrame->rect.Size(), CVrSize(478, 370));
    EXPECT_EQ(on.ValueRow(0), "Current Temperature = -0.5°");
    EXPECT_EQ(on.ValueRow(1), "Humidity = 47%");
    EXPECT_EQ(on.ValueRow(2), "Co2 = 612ppm");
    on.Tap(3);
    EXPECT_FALSE(on.IsInfoUp());
    EXPECT_EQ(on.Button(3).state, CVrGuiElement::StateNormal);
    for (uint32_t other : {0U, 1U, 2U}) {
        on.Tap(3);
        on.Tap(other);
        EXPECT_FALSE(on.IsInfoUp()) << other;
        EXPECT_EQ(on.Button(3).state, CVrGuiElement::StateNormal);
    }
    on.display.TakeCommands();
    on.Tap(3);
    on.display.Tap(360, 150); // beside the table
    EXPECT_FALSE(on.IsInfoUp());
    EXPECT_EQ(on.Button(3).state, CVrGuiElement::StateNormal);
    EXPECT_EQ(on.Button(0).state, CVrGuiElement::StateSelected) << "the schedule's mark is no popup's";
    EXPECT_TRUE(on.display.TakeCommands().empty());
}

TEST(Climate, WhatArrivesWhileTheTableIsUpShowsInIt) {
    ClimateOnDisplay on;
    on.Show({1, 0});
    on.Tap(3);
    const CVrRect place = on.Root().popupFrame->rect;
    on.Show({2, 1, 233});
    EXPECT_TRUE(on.IsInfoUp());
    EXPECT_EQ(on.ValueRow(0), "Current Temperature = 23.3°");
    EXPECT_EQ(on.Root().popupFrame->rect, place);
    EXPECT_EQ(on.Button(3).state, CVrGuiElement::StateSelected);
    on.Tap(3);
    EXPECT_FALSE(on.IsInfoUp()) << "one tap closes it";
}

TEST(Climate, ASymbolThatDoesNotLoadIsTriedAgain) {
    ClimateOnDisplay on;
    CVrxStringU& flame = *on.display.App().structure.staticSymbols.Lookup(10029);
    const CVrxStringU name = flame;
    flame = "no-such-symbol.svg";
    on.Show({1, 0});
    EXPECT_EQ(on.page->modeSymbol, 0);
    EXPECT_TRUE(on.page->modeSymbolText->IsHidden());
    EXPECT_EQ(Shown(on.page->modeText), "Heating");
    flame = name;
    on.Show({1, 0});
    EXPECT_EQ(on.page->modeSymbol, 10029);
    EXPECT_FALSE(on.page->modeSymbolText->IsHidden());
    EXPECT_TRUE(on.page->modeSymbolText->icon.HasBitmap());
}

TEST(Climate, APageThatIsNotUpLeavesTheSharedElementsAlone) {
    ClimateOnDisplay on(R"({"T":469,"U":99,"N":"Bath","C":1})");
    on.Show({1, 0});
    auto* other =
        static_cast<CVrStructureItemHeatIRoomController2*>(on.display.App().structure.root.children[1]);
    on.display.Tap(600, 55);
    ASSERT_EQ(on.display.Page()->item, other);
    on.Tap(3);
    on.Show({2, 255, 300}); // the first page, hidden now
    EXPECT_TRUE(on.IsInfoUp());
    EXPECT_EQ(on.ValueRow(0), "Current Temperature = 0.0°");
    EXPECT_EQ(on.Button(1).owner, on.display.Page());
    EXPECT_EQ(on.Button(3).state, CVrGuiElement::StateSelected);
    on.display.Tap(100, 55);
    EXPECT_FALSE(on.IsInfoUp()) << "nothing is carried to another page";
    EXPECT_EQ(Shown(on.page->modeText), "Off");
    on.Tap(0);
    EXPECT_EQ(on.display.TakeCommands(), Commands({Command(1, "1.0")}));
}

// Run under the address sanitizer, these fail when something points at what has gone.
TEST(Climate, ThePageMayBeRebuiltOrGoWhileTheTableIsUp) {
    ClimateOnDisplay on;
    on.Show({2, 2, 251, 260});
    on.Tap(3);
    on.page->FillArea(on.item);
    on.Repaint();
    EXPECT_EQ(on.page->modeSymbol, 10030);
    EXPECT_TRUE(on.page->modeSymbolText->icon.HasBitmap()) << "the new label has its symbol too";
    EXPECT_EQ(Shown(on.page->targetText), "Max 26.0");
    EXPECT_EQ(on.page->widget->wholePart, 25);
    const CVrPoint plus = on.Button(2).ToRoot(on.Button(2).rect.Center());
    on.display.Down(plus.x, plus.y); // held while the house goes
    const TestHouse next = TestHouse::Of(R"([{"T":469,"U":7,"N":"Attic","C":1}])");
    on.display.App().LoadStructure(next.structure.c_str(), next.categories.c_str(), next.rooms.c_str(),
                                   next.symbols.c_str());
    on.display.App().BeginLoop();
    EXPECT_EQ(on.display.App().Capture(), nullptr);
    on.display.Move(plus.x, plus.y + 5);
    on.display.Up(plus.x, plus.y + 5);
    on.display.Settle();
    on.display.TakeCommands();
    EXPECT_FALSE(on.IsInfoUp());
    on.Tap(0);
    EXPECT_EQ(on.display.TakeCommands(), Commands({R"({"U":7,"E":1,"T":2,"V":1.0})"}));
}

// ---------------------------------------------------------------------------------------------- pictures

TEST(GoldenClimate, EachModeByDayAndByNight) {
    const std::pair<const char*, State> pictures[] = {
        {"heating", {1, 1, 199, 225}},    {"cooling", {5, 0, 264, 240}}, {"off", {1, 255, 187}},
        {"protection", {4, 2, -124, 50}}, {"neither", {3, 19, -5, -5}},
    };
    for (bool night : {false, true}) {
        ClimateOnDisplay on;
        if (night)
            on.display.ShowNight(true);
        for (const auto& [name, state] : pictures) {
            on.Show(state);
            EXPECT_TRUE(on.Matches(std::string(name) + (night ? "-night" : "")));
        }
        on.Show({1, 0, 214, 225});
        on.Tap(3);
        EXPECT_TRUE(on.Matches(night ? "info-night" : "info"));
    }
}

TEST(GoldenClimate, InAnotherLanguageAndAlone) {
    ClimateOnDisplay on;
    on.Show({1, 2, 175, 160});
    CVrTranslator::Instance().SetLanguage("UKR");
    on.display.App().ApplyLanguage();
    EXPECT_TRUE(on.Matches("ukrainian"));
    TestDisplay alone(TestHouse::Of(R"([{"T":469,"U":1,"N":"Living room","C":1}])"));
    alone.Settle();
    EXPECT_TRUE(golden::Matches("climate-alone", alone.Screen(), kScreenSide, kScreenSide));
}

// The number as other pages use it.
TEST(GoldenClimate, TheLargeNumberInItsVariants) {
    struct Variant {
        int32_t value;
        bool isTenths, unitOutside;
        const char* unit;
    };
    constexpr int32_t kRows = 3, kRowPitch = 163;
    const Variant pictures[][kRows] = {
        {{85, false, true, "°"},         // a sauna: the digits alone are centred
         {-85, true, false, "°"},        // a minus
         {123, true, false, "kW"}},      // a writable value
        {{-1234567, true, false, "kWh"}, // wider than its element: dissolves
         {1000, false, true, ""},        // no unit
         {47, false, false, "%"}},       // without fraction the unit stands alone
    };
    for (bool night : {false, true}) {
        ClimateOnDisplay on;
        if (night)
            on.display.ShowNight(true);
        CVrGuiFrameArea& area = *on.page->frameArea;
        const Variant(&rows)[kRows] = pictures[night];
        area.ForEachChild([](CVrGuiElement& child) { child.SetHidden(true); });
        for (int32_t i = 0; i < kRows; i++) {
            auto* widget = area.CreateChild<CVrGuiTemperatureWidget>("CVrGuiTemperatureWidget", true);
            widget->unit = rows[i].unit;
            widget->unitOutside = rows[i].unitOutside;
            widget->showFraction = rows[i].isTenths;
            if (rows[i].isTenths)
                widget->ShowTenths(rows[i].value);
            else
                widget->ShowWhole(rows[i].value);
            widget->TakeColors(*on.page);
            widget->SetRect(0, i * kRowPitch, area.rect.width, 148);
        }
        EXPECT_TRUE(on.Matches(night ? "numbers-night" : "numbers"));
    }
}
