// Covers with their swipes, arrows and zones; tiles as push buttons and rows; the numeric keypad on a page.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>

#include "gui/application.h"
#include "gui/image.h"
#include "media/jpeg/jpeg.h"
#include "shell/num_keypad.h"
#include "shell/test_page.h"
#include "shell/tree_list_button.h"
#include "support/golden.h"

// A page that wants a code: it makes the keypad, takes all touches of its area and hands them on.
class CVrGuiCodePage : public CVrGuiFrame {
public:
    void FillArea(CVrStructureItem* newItem) override {
        CVrGuiFrame::FillArea(newItem);
        keypad = frameArea->CreateChild<CVrGuiNumKeypad>("CVrGuiNumKeypad", true);
        keypad->layoutLocked = true;
        keypad->SetRect(CVrRect(0, 0, frameArea->rect.width, frameArea->rect.height));
        keypad->headIconName = "lock-close-1.svg";
        keypad->cornerIconName = "close-cover.svg";
        keypad->dotDelay = 500;
        keypad->ReloadColors();
        keypad->ApplyLayout();
        LoadStaticButtonFile(TheApplication()->StaticArchive(), "empty-circle.svg", keypad->dotIcon.image,
                             keypad->dotSize, true, SymbolStyle::Filled);
        keypad->hitInto = true;
        eventMask = EventDown | EventUp;
        ApplyLayout();
    }
    bool ApplyLayout() override {
        CVrGuiFrame::ApplyLayout();
        if (keypad)
            frameArea->eventMask = keypad->eventMask = 0;
        return false;
    }
    void OnTouchDown(const CVrPoint& point) override {
        const CVrPoint inKeypad = point - rect.Origin() - frameArea->rect.Origin() - keypad->rect.Origin();
        keypad->hitElement = keypad->HitTest(inKeypad, nullptr);
        keypad->OnTouchDown(inKeypad);
    }
    void OnTouchUp(const CVrPoint& point) override { keypad->OnTouchUp(point); }

    CVrGuiNumKeypad* keypad = nullptr;
};

VR_REGISTER_ELEMENT(CVrGuiCodePage)

namespace {

using Events = std::vector<std::string>;

std::unique_ptr<CVrGuiImage> Cover(int32_t width, int32_t height) {
    std::ifstream file(std::string(WALLSLATE_SOURCE_DIR) + "/resources/cover/default_1.jpg",
                       std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    CVrGuiImage picture;
    CJpeg decoder;
    uint8_t* pixels =
        decoder.LoadJpeg(reinterpret_cast<const uint8_t*>(bytes.data()), static_cast<uint32_t>(bytes.size()));
    if (!pixels)
        return nullptr;
    picture.Adopt(pixels, decoder.width, decoder.height);
    return std::unique_ptr<CVrGuiImage>(CreateScaledImage(picture, CVrSize(width, height)));
}

// A cover over the whole area of the page, above the action bar.
struct CoverOnDisplay : PageOnDisplay {
    explicit CoverOnDisplay(bool withArrows) : PageOnDisplay(4) {
        page->FillArea(nullptr);
        cover = page->frameArea->CreateChild<CVrGuiFrameCoverBtn>("CVrGuiFrameCoverBtn", false);
        cover->id = 60;
        cover->listener = page;
        cover->eventMask = CVrGuiElement::EventAll;
        cover->text = "Bright Horizon\nThe Slate Quartet";
        cover->layout = CVrGuiButton::LayoutTextBottom;
        page->frameArea->buttonCount = 1;
        page->ReloadColors();
        page->ApplyLayout();
        cover->state = CVrGuiElement::StateSelected;
        cover->addIcon.SetStaticIconFromFile(CVrxStringU("close-cover.svg"), 40, false);
        cover->SetImage(Cover(cover->rect.width, cover->rect.height).release(), true);
        if (withArrows)
            cover->SetArrows("arrow-left-cover.svg", "arrow-right-cover.svg");
        Repaint();
    }
    void Drag(int32_t dx, int32_t dy) { display.Drag(360, 400, 360 + dx, 400 + dy, 100); }

    CVrGuiFrameCoverBtn* cover = nullptr;
};

} // namespace

TEST(Cover, LooksByDayAndByNight) {
    CoverOnDisplay on(true);
    ASSERT_NE(on.cover->image, nullptr);
    ASSERT_TRUE(on.cover->arrowsShown);
    EXPECT_TRUE(golden::Matches("cover-arrows", on.display.Screen(), 720, 720));
    on.cover->ShowArrows(false);
    on.Repaint();
    EXPECT_TRUE(golden::Matches("cover-plain", on.display.Screen(), 720, 720));
    on.cover->ShowArrows(true);
    on.display.ShowNight(true);
    on.Root().RepaintAll();
    on.Repaint();
    EXPECT_TRUE(golden::Matches("cover-night", on.display.Screen(), 720, 720));
}

TEST(Cover, SwipesSkipAndClose) {
    CoverOnDisplay on(true);
    on.Drag(-100, 0);
    on.Drag(100, 10);
    on.Drag(0, 100);
    EXPECT_EQ(on.TakeEvents(), Events({"next", "previous", "close"}));
    on.Drag(0, -100);
    EXPECT_TRUE(on.TakeEvents().empty()) << "upwards means nothing, and is no tap";
    on.Drag(18, 14);
    EXPECT_EQ(on.TakeEvents(), Events({"previous"}));
    on.Drag(-18, 15);
    EXPECT_EQ(on.TakeEvents(), Events({"60:1"})) << "too slanted for a swipe: a tap";
}

TEST(Cover, TapsGoToArrowsCornerOrCover) {
    CoverOnDisplay on(true);
    const CVrPoint origin = on.cover->ToRoot(on.cover->rect.Origin());
    const int32_t middle = origin.y + on.cover->rect.height / 2;
    on.display.Tap(origin.x + 24 + 10, middle);
    on.display.Tap(origin.x + on.cover->rect.width - 24 - 10, middle);
    EXPECT_EQ(on.TakeEvents(), Events({"previous", "next"}));
    on.display.Tap(origin.x + on.cover->rect.width - 20, origin.y + 20);
    EXPECT_TRUE(on.cover->cornerHit);
    on.display.Tap(360, middle);
    EXPECT_FALSE(on.cover->cornerHit);
    EXPECT_EQ(on.TakeEvents(), Events({"60:1", "60:1"}));
    on.cover->ShowArrows(false);
    on.display.Tap(origin.x + 24 + 10, middle);
    EXPECT_EQ(on.TakeEvents(), Events({"60:1"}));
}

// Tiles of a page as music shows them: pictures with their names below; one of them plays.
TEST(GoldenCover, ATileThatPlaysMovesAndOthersDoNot) {
    PageOnDisplay on;
    on.page->frameArea->DeleteChildren();
    std::vector<CVrGuiFrameCoverBtn*> tiles;
    for (const char* name : {"Bright Horizon", "Slow Rivers"}) {
        auto* tile = on.page->frameArea->CreateChild<CVrGuiFrameCoverBtn>("CVrGuiFrameCoverBtn", false);
        tile->text = name;
        tile->layout =
            CVrGuiButton::LayoutIcon | CVrGuiButton::LayoutTextLeft | CVrGuiButton::LayoutTextBelow;
        tiles.push_back(tile);
    }
    on.page->frameArea->buttonCount = 2;
    on.page->ReloadColors();
    on.page->ApplyLayout();
    for (CVrGuiFrameCoverBtn* tile : tiles)
        tile->SetImage(Cover(tile->rect.width, tile->rect.width).release(), true);
    on.Repaint();
    tiles[0]->ShowPlaying(true); // from here on it never comes to rest
    const uint32_t before = on.display.FrameCount();
    on.display.Advance(500);
    EXPECT_EQ(on.display.FrameCount() - before, 10u) << "a frame every 50 ms";
    EXPECT_TRUE(golden::Matches("cover-tile-plays", on.display.Screen(), kScreenSide, kScreenSide));

    // On a page that is not up the time counts, but nothing is painted.
    on.page->SetHidden(true);
    on.Repaint();
    const uint32_t hidden = on.display.FrameCount();
    const uint64_t frame = tiles[0]->vector->currentFrame;
    on.display.Advance(400);
    EXPECT_EQ(on.display.FrameCount(), hidden);
    EXPECT_NE(tiles[0]->vector->currentFrame, frame);
    tiles[0]->ShowPlaying(false);
    on.page->SetHidden(false);
    on.Repaint();
    EXPECT_EQ(tiles[0]->vector, nullptr);
    EXPECT_FALSE(tiles[0]->IsTimerActive());
}

TEST(Cover, ArrowsThatAreMissingLeaveTheSwipes) {
    CoverOnDisplay on(false);
    on.cover->SetArrows("no-such.svg", "arrow-right-cover.svg");
    EXPECT_FALSE(on.cover->arrowsShown);
    on.cover->ShowArrows(true);
    EXPECT_FALSE(on.cover->arrowsShown);
    on.Drag(-60, 0);
    EXPECT_EQ(on.TakeEvents(), Events({"next"}));
}

TEST(FrameButton, ACornerTapKeepsTheNeighboursSelected) {
    PageOnDisplay on;
    auto* area = on.page->frameArea;
    area->CreateChild<CVrGuiFrameBtn>("CVrGuiFrameBtn", false)->eventMask = CVrGuiElement::EventUp;
    area->buttonCount = 2;
    on.page->ApplyLayout();
    auto* left = static_cast<CVrGuiFrameBtn*>(area->Child(0));
    auto* right = static_cast<CVrGuiFrameBtn*>(area->Child(1));
    left->addIconSize = right->addIconSize = 40;
    on.Tap(*left);
    const CVrPoint corner = right->ToRoot(CVrPoint(right->rect.Right() - 10, right->rect.y + 10));
    on.display.Tap(corner.x, corner.y);
    EXPECT_TRUE(right->cornerHit);
    EXPECT_EQ(left->state + right->state, 2U);
    on.Tap(*left);
    EXPECT_EQ(left->state, CVrGuiElement::StateNormal) << "a second tap takes the mark off";
    on.Tap(*left);
    EXPECT_EQ(right->state, CVrGuiElement::StateNormal) << "a plain tap selects one alone";
}

namespace {

// A page of list tiles; `scrolling` makes more than fit.
struct TilesOnDisplay : PageOnDisplay {
    explicit TilesOnDisplay(int count) {
        page->FillArea(nullptr);
        for (int i = 0; i < count; i++) {
            auto* tile = page->frameArea->CreateChild<CVrGuiTreeListBtn>("CVrGuiTreeListBtn", true);
            tile->id = 80 + i;
            tile->text = "Living room floor heating";
            tile->listener = page;
        }
        page->ReloadColors();
        page->ApplyLayout();
        Repaint();
    }
    CVrGuiTreeListBtn& Tile(uint32_t index) {
        return *static_cast<CVrGuiTreeListBtn*>(page->frameArea->Child(index));
    }
};

} // namespace

TEST(ListTile, APushButtonReportsPressAndReleaseAndFades) {
    TilesOnDisplay on(3);
    on.Tile(0).secondLine = "21 degrees";
    on.Tile(1).SetPushMode();
    on.Tile(2).SetStatusRow();
    on.page->ApplyLayout();
    on.Repaint();
    on.Tap(on.Tile(0));
    on.Tap(on.Tile(2));
    EXPECT_EQ(on.TakeEvents(), Events({"80:1"})) << "a row takes no touch";
    const CVrPoint at = PageOnDisplay::Middle(on.Tile(1));
    on.display.Down(at.x, at.y);
    EXPECT_EQ(on.TakeEvents(), Events({"81:0"}));
    on.display.Advance(200);
    EXPECT_EQ(on.Tile(1).fade, 255);
    EXPECT_TRUE(golden::Matches("tiles", on.display.Screen(), 720, 720));
    on.display.Up(at.x, at.y);
    EXPECT_EQ(on.TakeEvents(), Events({"81:1"}));
    on.display.Advance(90);
    EXPECT_EQ(on.Tile(1).fade, 255);
    on.display.Advance(200);
    EXPECT_EQ(on.Tile(1).fade, 0);
    EXPECT_FALSE(on.Tile(1).IsTimerActive());
    on.display.Down(at.x, at.y);
    on.display.Move(at.x, at.y + 300);
    on.display.Up(at.x, at.y + 300);
    EXPECT_EQ(on.TakeEvents(), Events({"81:0", "81:1"})) << "a finger that left it ends the press once";
}

TEST(ListTile, AValueTakesThePlaceOfTheArrow) {
    TilesOnDisplay on(2);
    EXPECT_TRUE(on.Tile(0).arrowLoaded);
    on.Tile(0).SetValueText("1");
    EXPECT_FALSE(on.Tile(0).arrowLoaded);
    EXPECT_EQ(on.Tile(0).valueText, "1") << "no item says that this is on or off";
}

TEST(Keypad, ACodeIsEnteredAndTheDotsCountDown) {
    TestDisplay display(TestHouse::Of(R"([{"T":342,"U":1,"N":"One","C":1}])"));
    auto* page = display.Root().CreateChild<CVrGuiCodePage>("CVrGuiCodePage", false);
    page->flags |= CVrGuiElement::FlagPage;
    page->FillArea(nullptr);
    page->SetHidden(true);
    display.Root().ShowPage(page);
    page->frameArea->LoadColors();
    page->LoadColors();
    display.App().WakeForRepaint();
    display.Settle();
    CVrGuiNumKeypad& keypad = *page->keypad;
    const auto matches = [&display](const std::string& name) {
        return golden::Matches(name, display.Screen(), 720, 720);
    };
    const auto press = [&](int key) {
        const CVrPoint at = PageOnDisplay::Middle(*keypad.keys[key]);
        display.Down(at.x, at.y);
    };
    const auto release = [&] { display.Up(360, 150); };
    EXPECT_EQ(keypad.keys[9]->rect.x, keypad.keys[2]->rect.x) << "the 0 stands at the right";
    EXPECT_TRUE(matches("keypad-empty"));
    press(0);
    EXPECT_EQ(keypad.entryState, CVrGuiNumKeypad::EntryUnderWay);
    EXPECT_TRUE(matches("keypad-pressed"));
    release();
    display.Advance(1600);
    EXPECT_EQ(keypad.dotsLeft, 2) << "the first dot stays for two steps";
    EXPECT_TRUE(matches("keypad-counting"));
    display.Advance(1000);
    EXPECT_EQ(keypad.dotsLeft, 0);
    EXPECT_TRUE(matches("keypad-timed-out"));
    EXPECT_EQ(keypad.value, 1U) << "the time does not take the value away";
    press(9);
    release();
    press(4);
    release();
    press(8);
    release();
    EXPECT_EQ(keypad.value, 1059U);
    EXPECT_EQ(keypad.entryState, CVrGuiNumKeypad::EntryComplete);
    display.Advance(3000);
    EXPECT_TRUE(matches("keypad-complete")) << "no countdown once the code is whole";
    const CVrPoint corner = PageOnDisplay::Middle(*keypad.cornerButton);
    display.Tap(corner.x, corner.y);
    EXPECT_EQ(keypad.entered, 4U);
    keypad.ApplyLayout();
    EXPECT_EQ(keypad.entered, 0U);
    EXPECT_EQ(keypad.value, 1059U);
    press(4);
    release();
    display.Advance(1100);
    display.ShowNight(true);
    EXPECT_TRUE(matches("keypad-counting-night"));
}
