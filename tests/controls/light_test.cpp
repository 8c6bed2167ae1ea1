// The light page: what a touch makes of the state and what it sends, the held brightness buttons, the strip, and what it
// looks like. State comes in through the item and UpdateFromItem, touches through the real path.

#include <gtest/gtest.h>

#include "controls/light.h"
#include "controls/light_item.h"
#include "foundation/translator.h"
#include "shell/actionbar.h"
#include "shell/frame_area.h"
#include "shell/frame_button.h"
#include "shell/main_window.h"
#include "shell/popup_frame.h"
#include "shell/popup_slider.h"
#include "support/golden.h"
#include "support/test_display.h"

namespace {

using Commands = std::vector<std::string>;

constexpr int kUuid = 900;
enum Button : uint32_t { Power = 0, Darker = 1, Brighter = 2 };

std::string Command(int event, int value) {
    return R"({"U":900,"E":)" + std::to_string(event) + R"(,"T":2,"V":)" + std::to_string(value) + ".0}";
}

Commands Steps(int first, int last) {
    Commands steps;
    for (int value = first;; value += first < last ? 1 : -1) {
        steps.push_back(Command(6, value));
        if (value == last)
            return steps;
    }
}

std::string Light(int uuid, const std::string& moods) {
    return R"({"T":484,"U":)" + std::to_string(uuid) + R"(,"N":"Light","C":1,"moodList":[)" + moods + "]}";
}

// Moods 11, 12, ... with names of different lengths.
std::string Moods(int count) {
    static const char* names[] = {"Bright", "Dinner", "Reading corner by the fire", "Вечір", "Movie"};
    std::string list;
    for (int i = 0; i < count; i++)
        list += std::string(i ? "," : "") + R"({"id":)" + std::to_string(11 + i) + R"(,"name":")" +
                names[i % 5] + R"("})";
    return list;
}

// A light's page and a switch's, so that there is a menu row.
struct LightOnDisplay {
    explicit LightOnDisplay(int moods) : LightOnDisplay(Moods(moods)) {}
    explicit LightOnDisplay(const std::string& moods)
        : display(TestHouse::Of("[" + Light(kUuid, moods) + R"(,{"T":342,"U":2,"N":"Switch","C":1}])")) {
        page = static_cast<CVrGuiLightController2*>(display.Page());
        item = page->lightItem;
        slider = display.Root().popupSliderFrame->popupSlider;
        display.Settle();
    }
    ~LightOnDisplay() { CVrTranslator::Instance().SetLanguage("ENG"); }

    CVrGuiFrameBtn& Mood(uint32_t index) {
        return *static_cast<CVrGuiFrameBtn*>(page->frameArea->Child(index));
    }
    CVrGuiActionbarBtn& Bar(uint32_t index) { return *display.Root().actionbar->Button(index); }
    CVrPoint OnScreen(CVrGuiElement& element) { return element.ToRoot(element.rect.Center()); }
    void Tap(CVrGuiElement& element) {
        const CVrPoint at = OnScreen(element);
        display.Tap(at.x, at.y);
        display.Settle();
    }
    void TapCorner(uint32_t mood) {
        const CVrGuiFrameBtn& button = Mood(mood);
        const CVrPoint at =
            button.ToRoot(CVrPoint(button.rect.Right() - 10, button.rect.y + 10 + page->frameArea->offsetY));
        display.Tap(at.x, at.y);
        display.Settle();
    }
    void Press(uint32_t button) {
        const CVrPoint at = OnScreen(Bar(button));
        display.Down(at.x, at.y);
    }
    void Release(uint32_t button) {
        const CVrPoint at = OnScreen(Bar(button));
        display.Up(at.x, at.y);
    }
    void Hold(uint32_t button, uint64_t ms) {
        Press(button);
        display.Advance(ms);
        Release(button);
    }
    void Set(int32_t brightness, const std::vector<uint32_t>& active = {}) {
        for (uint32_t i = 0; i < item->moods.GetSize(); i++)
            item->moods[i]->active = std::find(active.begin(), active.end(), i) != active.end();
        item->brightness = brightness;
        item->element->UpdateFromItem(item);
        display.App().WakeForRepaint();
        display.Settle();
    }
    bool IsStripUp() const { return !page->customButton->IsHidden(); }
    bool IsSliderUp() { return !display.Root().popupSliderFrame->IsHidden(); }
    // "on 1,3 40" or "off - -1 strip": what the item holds, with the strip if it shows.
    std::string State() const {
        std::string moods;
        for (uint32_t i = 0; i < item->moods.GetSize(); i++)
            if (item->moods[i]->active)
                moods += (moods.empty() ? "" : ",") + std::to_string(i);
        return std::string(item->lightOn ? "on " : "off ") + (moods.empty() ? "-" : moods) + " " +
               std::to_string(item->brightness) + (IsStripUp() ? " strip" : "");
    }
    // The page shows what the item holds, everywhere.
    void ExpectConsistent() {
        bool any = false;
        for (uint32_t i = 0; i < item->moods.GetSize(); i++) {
            EXPECT_EQ(Mood(i).state, item->moods[i]->active ? 1U : 0U) << i;
            any |= item->moods[i]->active;
        }
        for (uint32_t i = 0; i < item->moods.GetSize(); i++)
            EXPECT_EQ(Mood(i).addIcon.HasBitmap(), any && !item->moods[i]->active) << i;
        EXPECT_EQ(Bar(Power).iconName, StaticSymbolName(item->lightOn ? 10021 : 10020));
        EXPECT_EQ(Bar(Power).state, CVrGuiElement::StateNormal);
        EXPECT_EQ(IsStripUp(), !any && item->brightness > 0);
        EXPECT_EQ(page->frameArea->topInset, IsStripUp() ? 66 : 0);
        if (item->brightness >= 0) {
            EXPECT_EQ(slider->value, item->brightness);
        }
    }
    // What a touch has left on the screen is what the same fields show when they come from elsewhere, and what a
    // page shows that is built from them.
    void ExpectSameFromItem() {
        const std::vector<uint32_t> touched = Picture();
        const int32_t brightness = item->brightness;
        std::vector<uint32_t> active;
        for (uint32_t i = 0; i < item->moods.GetSize(); i++)
            if (item->moods[i]->active)
                active.push_back(i);
        Set(77);
        Set(-1, {0, 1, 2, 3});
        Set(brightness, active);
        EXPECT_TRUE(Picture() == touched) << "through the fields";
        page->FillArea(item);
        EXPECT_TRUE(Picture() == touched) << "rebuilt";
    }
    std::vector<uint32_t> Picture() {
        display.App().WakeForRepaint();
        display.Settle();
        return {display.Screen(), display.Screen() + kScreenSide * kScreenSide};
    }
    testing::AssertionResult Matches(const std::string& name) {
        display.App().WakeForRepaint();
        display.Pass();
        return golden::Matches("light-" + name, display.Screen(), kScreenSide, kScreenSide);
    }

    TestDisplay display;
    CVrGuiLightController2* page = nullptr;
    CVrStructureItemLightController2* item = nullptr;
    CVrGuiPopupSlider* slider = nullptr;
};

} // namespace

TEST(Light, EveryTouchLeadsFromStateToState) {
    enum Touch { Mood0, Mood1, Corner1, TapPower, TapStrip };
    struct Row {
        const char* what;
        int32_t brightness;
        std::vector<uint32_t> active;
        Touch touch;
        const char* state;
        int event, value;
    };
    const Row rows[] = {
        {"off, a mood", -1, {}, Mood0, "on 0 -1", 1, 11},
        {"off, a mood at its very corner", -1, {}, Corner1, "on 1 -1", 2, 12},
        {"one, itself", 30, {0}, Mood0, "off - 0", 0, 11},
        {"one, another", 30, {0}, Mood1, "on 1 30", 1, 12},
        {"one, the corner of another", 30, {0}, Corner1, "on 0,1 30", 2, 12},
        {"mixed, one of them", 30, {0, 1, 2}, Mood1, "on 0,2 30", 3, 12},
        {"mixed, one of them at its corner", 30, {0, 1}, Corner1, "on 0 30", 3, 12},
        {"mixed, another", 30, {0, 2}, Mood1, "on 1 30", 1, 12},
        {"custom, a mood", 40, {}, Mood0, "on 0 40", 1, 11},
        {"custom, a corner", 40, {}, Corner1, "on 1 40", 1, 12},
        {"custom, the strip", 40, {}, TapStrip, "off - 0", 0, 1},
        {"off, power", -1, {}, TapPower, "on 0 -1", 1, 11},
        {"off at 0, power", 0, {}, TapPower, "on 0 0", 1, 11},
        {"one, power", 30, {1}, TapPower, "off - 0", 0, 0},
        {"mixed, power", 30, {1, 2}, TapPower, "off - 0", 0, 0},
        {"custom, power", 40, {}, TapPower, "off - 0", 0, 0},
    };
    LightOnDisplay on(4);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        on.Set(row.brightness, row.active);
        on.ExpectConsistent();
        switch (row.touch) {
        case Mood0:
            on.Tap(on.Mood(0));
            break;
        case Mood1:
            on.Tap(on.Mood(1));
            break;
        case Corner1:
            on.TapCorner(1);
            break;
        case TapPower:
            on.Tap(on.Bar(Power));
            break;
        case TapStrip:
            on.Tap(*on.page->customButton);
            break;
        }
        EXPECT_EQ(on.State(), row.state);
        EXPECT_EQ(on.display.TakeCommands(), Commands({Command(row.event, row.value)}));
        on.ExpectConsistent();
        on.ExpectSameFromItem();
    }
}

TEST(Light, HeldButtonsStepAfter600MsAndThenEach100) {
    struct Row {
        const char* what;
        int32_t brightness;
        std::vector<uint32_t> active;
        Button button;
        uint64_t ms;
        int first, last; // of the values sent; first above 100: none
        const char* state;
    };
    const Row rows[] = {
        {"a tap", 50, {}, Brighter, 50, 51, 51, "on - 51 strip"},
        {"just before the first step", 50, {}, Brighter, 590, 51, 51, "on - 51 strip"},
        {"the first step, and the release's own", 50, {}, Brighter, 600, 51, 52, "on - 52 strip"},
        {"three steps and one", 50, {}, Darker, 830, 49, 46, "on - 46 strip"},
        {"a mood gives way", 50, {1}, Brighter, 50, 51, 51, "on - 51 strip"},
        {"1 to off", 1, {}, Darker, 50, 0, 0, "off - 0"},
        {"nothing below 0", 0, {}, Darker, 900, 101, 0, "off - 0"},
        {"from off", 0, {}, Brighter, 50, 1, 1, "on - 1 strip"},
    };
    LightOnDisplay on(4);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        on.Set(row.brightness, row.active);
        on.Hold(row.button, row.ms);
        EXPECT_TRUE(on.IsSliderUp());
        on.display.Advance(2400);
        EXPECT_TRUE(on.IsSliderUp()) << "it stays for 2.5 s";
        on.display.Advance(200);
        on.display.Settle();
        EXPECT_FALSE(on.IsSliderUp());
        EXPECT_EQ(on.display.TakeCommands(), row.first > 100 ? Commands() : Steps(row.first, row.last));
        EXPECT_EQ(on.State(), row.state);
        on.ExpectConsistent();
        on.ExpectSameFromItem();
    }
}

TEST(Light, TheStripAppearsAtOnceUnlessTheStepEndsTheLight) {
    LightOnDisplay on(4);
    const std::pair<int32_t, bool> darker[] = {{0, false}, {1, false}, {2, true}};
    for (const auto& [brightness, strip] : darker) {
        on.Set(brightness, {0});
        on.Press(Darker);
        EXPECT_EQ(on.IsStripUp(), strip) << brightness;
        EXPECT_TRUE(on.IsSliderUp());
        on.Release(Darker);
        on.display.Advance(3000);
    }
}

TEST(Light, ADragOverTheSliderSendsEachValueAndPaintsItInTheSamePass) {
    LightOnDisplay on(9);
    on.Set(0);
    on.Hold(Brighter, 50);
    on.display.TakeCommands();
    const CVrPoint at = on.OnScreen(*on.slider);
    const int32_t width = on.slider->rect.width;
    on.display.Down(at.x, at.y);
    for (int value = 2; value <= 100; value++) {
        const uint32_t frames = on.display.FrameCount();
        on.display.clock.Advance(10);
        on.display.Move(at.x + ((value - 1) * width + 99) / 100,
                        at.y - value); // the finger may leave it upwards
        EXPECT_EQ(on.display.TakeCommands(), Commands({Command(6, value)}));
        EXPECT_EQ(on.display.FrameCount(), frames + 1) << value;
        EXPECT_EQ(on.item->brightness, value);
    }
    // Nobody else moves what a finger holds.
    on.item->brightness = 5;
    on.page->RefreshView();
    EXPECT_EQ(on.slider->value, 100);
    on.display.Up(at.x + width, at.y);
    EXPECT_EQ(on.display.TakeCommands(), Commands({Command(6, 100)})) << "the end of the drag";
    on.display.Settle();
    on.ExpectConsistent();
}

TEST(Light, ListsOfEveryKindMakeAPage) {
    LightOnDisplay none("");
    none.Tap(none.Bar(Power));
    EXPECT_EQ(none.display.TakeCommands(), Commands({Command(1, 0)}));
    EXPECT_EQ(none.State(), "off - -1");
    none.Hold(Brighter, 50);
    none.display.Settle();
    EXPECT_EQ(none.State(), "on - 1 strip");

    // "Off" leaves no button; what has no record any more sends its command and changes nothing.
    LightOnDisplay gap(
        R"({"id":5,"name":"A"},{"id":778,"name":"Off"},"none",{"id":7,"name":"B"},{"id":7,"name":"C"})");
    ASSERT_EQ(gap.page->frameArea->ChildCount(), 3U);
    EXPECT_EQ(gap.item->moods[1]->index, 3);
    gap.Tap(gap.Mood(2)); // two share an id: the tapped one
    EXPECT_EQ(gap.State(), "on 2 -1");
    gap.Set(-1);
    gap.display.TakeCommands();
    gap.Mood(0).id = 4711;
    gap.Tap(gap.Mood(0));
    EXPECT_EQ(gap.display.TakeCommands(), Commands({Command(1, 4711)}));
    EXPECT_EQ(gap.State(), "off - -1");

    LightOnDisplay many(14);
    EXPECT_TRUE(many.page->IsScrollable());
    many.display.Drag(360, 450, 360, 150, 300);
    many.display.Settle();
    many.TapCorner(13);
    EXPECT_EQ(many.State(), "on 13 -1");
}

TEST(Light, TheGridGlidesUnderTheGrowingStrip) {
    LightOnDisplay on(4);
    const CVrRect wide = on.Mood(3).rect, bar = on.display.Root().actionbar->rect;
    on.display.TakeLog();
    on.Press(Brighter);
    on.display.Advance(90);
    EXPECT_EQ(on.page->customButton->rect.height, 0) << "the strip waits until the grid has begun to move";
    EXPECT_LT(on.Mood(3).rect.height, wide.height);
    on.display.Advance(110);
    const int32_t half = on.page->customButton->rect.height;
    EXPECT_GT(half, 20);
    EXPECT_LT(half, 50);
    on.display.Advance(120);
    EXPECT_EQ(on.page->customButton->rect, CVrRect(10, 10, on.page->frameArea->rect.width, 66));
    EXPECT_EQ(on.Mood(0).rect.y, 66 + 10);
    EXPECT_EQ(on.Mood(3).rect.Bottom(), wide.Bottom());
    EXPECT_EQ(on.display.Root().actionbar->rect, bar);
    EXPECT_EQ(on.display.Root().popupSliderFrame->rect.Bottom(), bar.y - 10);
    on.Release(Brighter);
    on.Tap(on.Bar(Power));
    EXPECT_EQ(on.Mood(3).rect, wide);
    for (const std::string& line : on.display.TakeLog())
        EXPECT_EQ(line.find("Outside"), std::string::npos) << line;
}

// Run under the address sanitizer, these fail when something points at what has gone.
TEST(Light, ThePageMayGoWhileAnythingRuns) {
    enum What { HeldButton, Slider, RunningTween };
    for (const What what : {HeldButton, Slider, RunningTween}) {
        SCOPED_TRACE(what);
        for (const bool rebuild : {true, false}) {
            LightOnDisplay on(9);
            on.Set(50, {3});
            on.Press(Brighter);
            on.display.Advance(what == RunningTween ? 150 : 650);
            CVrPoint finger = on.OnScreen(on.Bar(Brighter));
            if (what == Slider) {
                on.Release(Brighter);
                finger = on.OnScreen(*on.slider);
                on.display.Down(finger.x, finger.y);
                on.display.Move(finger.x + 50, finger.y);
            }
            if (rebuild) {
                on.page->FillArea(on.item);
                EXPECT_EQ(on.IsStripUp(), on.State() != "on 3 50");
            } else {
                const TestHouse next = TestHouse::Of("[" + Light(7, Moods(3)) + "]");
                on.display.App().LoadStructure(next.structure.c_str(), next.categories.c_str(),
                                               next.rooms.c_str(), next.symbols.c_str());
                on.display.App().BeginLoop();
                EXPECT_EQ(on.display.App().Capture(), nullptr);
            }
            on.display.Advance(500);
            on.display.Move(finger.x + 9, finger.y);
            on.display.Up(finger.x + 9, finger.y);
            on.display.Settle();
            on.display.TakeCommands();
            on.display.Advance(3000);
            EXPECT_TRUE(on.display.TakeCommands().empty()) << "nothing steps on";
            on.Tap(on.Bar(Power));
            EXPECT_EQ(on.display.TakeCommands().size(), 1U);
        }
    }
}

TEST(Light, AHeldButtonStopsWhenItsPageTurnsToAnotherLightOrLeaves) {
    LightOnDisplay on(4);
    on.Set(50);
    on.Press(Brighter);
    on.display.Advance(750);
    CVrStructureItemLightController2 other;
    other.type = on.item->type;
    on.page->FillArea(&other);
    on.display.TakeCommands();
    on.display.Advance(500);
    on.Release(Brighter);
    EXPECT_TRUE(on.display.TakeCommands().empty());
    on.page->FillArea(on.item);
    on.Press(Brighter);
    on.display.Advance(750);
    on.display.Root().ShowPage(on.display.App().structure.root.children[1]->element);
    on.display.TakeCommands();
    on.display.Advance(2000);
    on.Release(Brighter);
    EXPECT_TRUE(on.display.TakeCommands().empty());
    // Hidden, it takes its state from the item and leaves the shared bar alone.
    on.Set(-1, {0, 2});
    on.display.Tap(100, 55);
    on.display.Settle();
    on.ExpectConsistent();
}

TEST(Light, ALanguageReachesStripAndSlider) {
    LightOnDisplay on(4);
    on.Set(40);
    CVrTranslator::Instance().SetLanguage("DEU");
    on.display.App().ApplyLanguage();
    EXPECT_EQ(on.page->customButton->text, CVrTranslator::Instance().Translate("light.custom"));
    EXPECT_EQ(on.slider->text, CVrTranslator::Instance().Translate("light.brightness"));
}

// ---------------------------------------------------------------------------------------------- pictures

// All grids on one sheet, each page at a third of its size.
TEST(GoldenLight, GridsOfOneToFourteenMoods) {
    constexpr int kColumns = 5, kSide = 240, kScale = 3;
    golden::Picture sheet{kColumns * kSide, 3 * kSide,
                          std::vector<uint32_t>(kColumns * kSide * 3 * kSide, 0xFF000000)};
    for (int moods = 1; moods <= 14; moods++) {
        LightOnDisplay on(moods);
        on.Set(-1, {static_cast<uint32_t>(moods - 1) / 2});
        for (int y = 0; y < kSide; y++)
            for (int x = 0; x < kSide; x++)
                sheet.pixels[static_cast<size_t>(((moods - 1) / kColumns * kSide + y) * sheet.width +
                                                 (moods - 1) % kColumns * kSide + x)] =
                    on.display.PixelAt(x * kScale + 1, y * kScale + 1);
    }
    EXPECT_TRUE(golden::Matches("light-grids", sheet));
}

TEST(GoldenLight, StatesByDayAndByNight) {
    for (const bool night : {false, true}) {
        const std::string end = night ? "-night" : "";
        LightOnDisplay on(6);
        on.display.ShowNight(night);
        on.Set(-1, {1, 4});
        EXPECT_TRUE(on.Matches("mixed" + end));
        on.Set(40);
        EXPECT_TRUE(on.Matches("custom" + end));
        on.Set(0);
        on.Press(Brighter);
        EXPECT_TRUE(on.Matches("strip-begins" + end));
        on.display.Advance(200);
        EXPECT_TRUE(on.Matches("strip-half" + end));
        on.display.Advance(750);
        on.Release(Brighter);
        EXPECT_TRUE(on.Matches("slider" + end));
    }
}

TEST(GoldenLight, AGridThatScrollsUnderTheStrip) {
    LightOnDisplay on(14);
    on.Set(70);
    on.display.Drag(360, 450, 360, 330, 300);
    on.display.Settle();
    EXPECT_TRUE(on.Matches("scrolled-under-strip"));
}
