#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

#include "gui/test_tree.h"
#include "support/plain_pixels.h"

using namespace test_tree;

namespace {

constexpr uint32_t kGray = 0xFF808080;
constexpr uint32_t kRed = 0xFFC02010;
constexpr uint32_t kBlue = 0xFF1020C0;

class ElementDrawTest : public testing::Test {
protected:
    uint32_t Pixel(int x, int y) const { return app.root->Row(y)[x]; }
    void Paint() { root.Draw(false, true); }
    // An area with a store of its own, larger than the area.
    Probe& AddScrolled(CVrGuiElement& parent, const CVrRect& rect, int contentHeight) {
        Probe& area = Add(parent, rect, kGray);
        area.flags |= CVrGuiElement::FlagOwnStore | CVrGuiElement::FlagScrollsVertically;
        area.keepsContent = true;
        area.InitMem(CVrRect(0, 0, rect.width, contentHeight));
        return area;
    }

    CVrTestClock clock;
    Application app;
    Probe& root = *app.root;
};

TEST_F(ElementDrawTest, LaterChildrenLieOnTopAndHiddenOnesAreSkipped) {
    Add(root, CVrRect(10, 10, 50, 50), kGray);
    Probe& top = Add(root, CVrRect(20, 20, 50, 50), kRed);
    Paint();
    EXPECT_EQ(Pixel(10, 10), kGray);
    EXPECT_EQ(Pixel(30, 30), kRed);
    EXPECT_FALSE(root.NeedsUpdateTree());
    top.SetHidden(true);
    Paint();
    EXPECT_EQ(Pixel(30, 30), kGray);
    top.SetHidden(false);
    top.flags &= ~uint32_t{CVrGuiElement::FlagPaintable};
    Paint();
    EXPECT_EQ(Pixel(30, 30), kGray);
}

TEST_F(ElementDrawTest, StateSelectsTheBackgroundAndTransparentPaintsNothing) {
    Add(root, CVrRect(0, 0, 50, 50), kGray);
    Probe& box = Add(root, CVrRect(0, 0, 20, 20), kRed);
    box.colors[CVrGuiElement::ColorBackgroundSelected] = kBlue;
    box.colorIndex[CVrGuiElement::ColorBackgroundDisabled] = 0;
    box.state = CVrGuiElement::StateSelected;
    Paint();
    EXPECT_EQ(Pixel(5, 5), kBlue);
    box.state = CVrGuiElement::StateDisabled;
    Paint();
    EXPECT_EQ(Pixel(5, 5), kGray);
    box.state = 77; // the outside of the table reads as normal
    Paint();
    EXPECT_EQ(Pixel(5, 5), kRed);
}

TEST_F(ElementDrawTest, RoundedStoreLetsWhatLiesBehindShowAtItsCorners) {
    Add(root, CVrRect(0, 0, 200, 200), kGray);
    Probe& panel = Add(root, CVrRect(20, 20, 100, 100), kRed);
    panel.flags |= CVrGuiElement::FlagOwnStore;
    panel.cornerMask = CornerAll;
    Paint();
    EXPECT_EQ(Pixel(20, 20), kGray);
    EXPECT_EQ(Pixel(119, 119), kGray);
    EXPECT_EQ(Pixel(70, 70), kRed);
    EXPECT_EQ(panel.Row(0)[0] >> 24, 0U);
}

TEST_F(ElementDrawTest, ScrolledContentShowsInItsViewOnly) {
    Probe& area = AddScrolled(root, CVrRect(10, 100, 200, 100), 300);
    Add(area, CVrRect(0, 100, 200, 50), kBlue);
    Add(area, CVrRect(0, 250, 200, 50), kRed);
    Paint();
    EXPECT_EQ(Pixel(100, 150), kGray);
    EXPECT_EQ(Pixel(100, 205), kUnpainted); // below the view
    area.SetScrollOffset(CVrPoint(0, -100));
    Paint();
    EXPECT_EQ(Pixel(100, 120), kBlue);
    EXPECT_EQ(Pixel(100, 99), kUnpainted);
    area.SetScrollOffset(CVrPoint(0, -1000));
    Paint();
    EXPECT_EQ(Pixel(100, 180), kRed);
}

TEST_F(ElementDrawTest, StoreThatIsNoLongerWantedIsFreedByTheNextWalk) {
    Probe& area = AddScrolled(root, CVrRect(0, 0, 100, 100), 200);
    Add(area, CVrRect(0, 0, 10, 10), kRed);
    Paint();
    EXPECT_TRUE(area.HasStore());
    area.flags &= ~uint32_t{CVrGuiElement::FlagOwnStore};
    Paint();
    EXPECT_FALSE(area.HasStore());
    EXPECT_EQ(Pixel(5, 5), kRed);
}

// ---- Kept content ----

TEST_F(ElementDrawTest, ContentIsPaintedAgainOnlyWhenSomethingInItChanged) {
    Probe& area = AddScrolled(root, CVrRect(0, 0, 200, 100), 300);
    Probe& box = Add(area, CVrRect(0, 0, 50, 50), kRed);
    Probe& inner = Add(box, CVrRect(0, 0, 10, 10), kBlue);
    Paint();
    const auto paintsAfter = [&](const char* what, bool expected, const std::function<void()>& change) {
        area.paintings = 0;
        change();
        Paint();
        EXPECT_EQ(area.paintings, expected ? 1 : 0) << what;
    };
    paintsAfter("nothing", false, [] {});
    paintsAfter("scroll", false, [&] { area.SetScrollOffset(CVrPoint(0, -20)); });
    paintsAfter("area moved", false, [&] { area.SetY(5); });
    paintsAfter("root flagged", false, [&] { root.needsUpdate = true; });
    paintsAfter("invalidated", true, [&] { inner.Invalidate(); });
    paintsAfter("moved", true, [&] { inner.SetX(3); });
    paintsAfter("state", true, [&] { box.state = CVrGuiElement::StateSelected; });
    paintsAfter("hidden", true, [&] { box.SetHidden(true); });
    paintsAfter("changed while hidden", false, [&] { inner.Invalidate(); });
    paintsAfter("shown", true, [&] { box.SetHidden(false); });
    paintsAfter("new child", true, [&] { Add(box, CVrRect(0, 0, 5, 5), kGray); });
    paintsAfter("deleted child", true, [&] { delete box.Child(1); });
    paintsAfter("store freed", true, [&] { area.FreeMem(); });
    paintsAfter("flag cleared unpainted", true, [&] {
        inner.Invalidate();
        root.ClearUpdateTree();
    });
    paintsAfter("own state", true, [&] { area.state = CVrGuiElement::StateSelected; });
    area.paintings = 0;
    root.Draw(true, true);
    EXPECT_EQ(area.paintings, 1) << "forced";
}

// The same scene twice: one is painted as the main loop does, the other one wholly at each pass. Pixel by
// pixel they must stay the same, whatever changes.
class TwinScene {
public:
    explicit TwinScene(bool force) : m_force(force) {
        root.type = ElementType::MainWin;
        root.flags |= CVrGuiElement::FlagOwnStore;
        root.SetRect(0, 0, 300, 300);
        Colour(root, 0xFF202020);
        page = &Add(root, CVrRect(10, 10, 280, 280), 0xFFE0E0D0);
        page->cornerMask = CornerAll;
        outer = AddArea(*page, CVrRect(5, 15, 200, 180), CVrSize(200, 400));
        inner = AddArea(*outer, CVrRect(20, 60, 120, 60), CVrSize(300, 60));
        for (int i = 0; i < 6; i++)
            AddBox(*outer, CVrRect(i * 30, i * 61, 60, 50), 0xFF000000 + static_cast<uint32_t>(i) * 0x283542);
        for (int i = 0; i < 4; i++)
            AddBox(*inner, CVrRect(i * 70, 5, 50, 40), 0xA0F00000 + static_cast<uint32_t>(i) * 0x3510);
    }

    void Change(uint32_t kind, std::mt19937 random) {
        Probe& area = random() % 2 ? *outer : *inner;
        Probe* box =
            area.ChildCount() > 0
                ? static_cast<Probe*>(area.Child(static_cast<uint32_t>(random()) % area.ChildCount()))
                : nullptr;
        if (!box || box == inner)
            kind %= 2;
        switch (kind % 9) {
        case 0:
            area.SetScrollOffset(
                CVrPoint(-static_cast<int>(random() % 200), -static_cast<int>(random() % 250)));
            break;
        case 1:
            AddBox(area, CVrRect(static_cast<int>(random() % 250), static_cast<int>(random() % 20), 40, 30),
                   0xFF000000 | static_cast<uint32_t>(random()));
            break;
        case 2:
            box->SetPos(static_cast<int>(random() % 150), static_cast<int>(random() % 30));
            break;
        case 3:
            box->SetHidden(!box->IsHidden());
            break;
        case 4:
            box->state = static_cast<uint32_t>(random() % 3);
            break;
        case 5:
            Colour(*box, 0xFF000000 | static_cast<uint32_t>(random()));
            box->Invalidate();
            break;
        case 6:
            delete box;
            break;
        case 7:
            box->SetParent(&area == outer ? inner : outer);
            break;
        case 8:
            area.SetHidden(!area.IsHidden());
            break;
        }
    }

    void Paint() {
        root.Draw(m_force, true);
        root.ClearUpdateTree();
    }

    Probe root;
    Probe* page = nullptr;
    Probe* outer = nullptr;
    Probe* inner = nullptr;

private:
    static void Colour(Probe& element, uint32_t color) {
        for (uint32_t slot = 0; slot < CVrGuiElement::ColorSlotCount; slot++) {
            element.colorIndex[slot] = 1;
            element.colors[slot] = color + slot * 0x101010;
        }
    }
    static Probe* AddArea(Probe& parent, const CVrRect& rect, const CVrSize& content) {
        Probe& area = Add(parent, rect, 0xFFB0B0A0);
        area.flags |= CVrGuiElement::FlagOwnStore | CVrGuiElement::FlagScrolls;
        area.keepsContent = true;
        area.InitMem(CVrRect(CVrPoint(), content));
        return &area;
    }
    static void AddBox(Probe& area, const CVrRect& rect, uint32_t color) {
        Probe& box = Add(area, rect);
        Colour(box, color);
        box.cornerMask = color >> 8 & 15;
    }

    bool m_force;
};

TEST_F(ElementDrawTest, KeptContentEqualsAFullRepaintOverRandomChanges) {
    std::mt19937 random(20240607);
    TwinScene kept(false), whole(true);
    int keptPaintings = 0, wholePaintings = 0;
    for (int pass = 0; pass < 3000; pass++) {
        for (auto changes = random() % 3; changes-- > 0;) {
            const auto kind = static_cast<uint32_t>(random());
            const std::mt19937 choices(static_cast<uint32_t>(random()));
            kept.Change(kind, choices);
            whole.Change(kind, choices);
        }
        kept.Paint();
        whole.Paint();
        keptPaintings += std::exchange(kept.outer->paintings, 0);
        wholePaintings += std::exchange(whole.outer->paintings, 0);
        ASSERT_EQ(memcmp(kept.root.pixels, whole.root.pixels, 300 * 300 * 4), 0) << "pass " << pass;
    }
    EXPECT_LT(keptPaintings, wholePaintings * 3 / 4);
}

// ---- Darkening ----

TEST_F(ElementDrawTest, PopupStandsOverTheDarkenedAreaOfItsPage) {
    Probe& page = Add(root, CVrRect(0, 100, 400, 400), kGray);
    page.type = ElementType::Frame;
    Probe& area = Add(page, CVrRect(50, 50, 200, 200), kRed);
    area.type = ElementType::FrameArea;
    Probe& popup = Add(page, CVrRect(100, 100, 50, 50), kBlue);
    popup.type = ElementType::PopupFrame;
    Paint();
    EXPECT_EQ(Pixel(150, 170), kRed);
    app.popupIsUp = true;
    Paint();
    const uint32_t dimmed = plain::Blend(kRed, 0, 128);
    EXPECT_EQ(dimmed, 0xFF5F0F07U); // 127/255 of each channel, rounded down
    EXPECT_EQ(Pixel(150, 170), dimmed);
    EXPECT_EQ(Pixel(120, 220), kBlue);
    EXPECT_EQ(Pixel(40, 170), kGray); // outside the area
    EXPECT_EQ(Pixel(50, 150), kRed);  // the outermost corner pixel keeps its colour
    EXPECT_EQ(Pixel(249, 349), kRed);
    EXPECT_EQ(Pixel(66, 150), dimmed);
}

TEST_F(ElementDrawTest, PageWithoutAreaIsDarkenedAboveItsActionbar) {
    Probe& page = Add(root, CVrRect(0, 0, 400, 400), kGray);
    Probe& bar = Add(page, CVrRect(0, 300, 400, 100), kRed);
    bar.type = ElementType::Actionbar;
    Paint();
    page.DrawDimmed();
    EXPECT_NE(Pixel(200, 299), kGray);
    EXPECT_EQ(Pixel(200, 300), kRed);
    page.rect.x = -1; // leaves the store: nothing
    const uint32_t before = Pixel(200, 200);
    page.DrawDimmed();
    EXPECT_EQ(Pixel(200, 200), before);
}

TEST_F(ElementDrawTest, AnAreaThatSticksOutOfItsPageDarkensThePageAlone) {
    Probe& page = Add(root, CVrRect(0, 0, 200, 200), kGray);
    Add(page, CVrRect(20, 20, 300, 300)).type = ElementType::FrameArea;
    std::fill_n(root.pixels, 720 * 720, kBlue);
    Paint();
    const uint32_t beside = Pixel(200, 100), below = Pixel(100, 200);
    page.DrawDimmed();
    EXPECT_NE(Pixel(100, 100), kGray);
    EXPECT_NE(Pixel(199, 100), kGray);
    EXPECT_EQ(Pixel(19, 100), kGray);
    EXPECT_EQ(Pixel(200, 100), beside);
    EXPECT_EQ(Pixel(100, 200), below);
}

TEST_F(ElementDrawTest, DarkeningLeavesAShadowOnUnpaintedCornersAndStopsAtTheClip) {
    Probe& page = Add(root, CVrRect(0, 0, 100, 100));
    std::fill_n(root.pixels, 720 * 720, kUnpainted);
    root.clip = CVrRect(0, 0, 0, 50);
    page.DrawDimmed();
    const uint8_t* table = CVrGuiFrameBuffer::GetCornerTable(15);
    EXPECT_EQ(Pixel(4, 5), uint32_t{table[5 * 16 + 4]} << 24);
    EXPECT_EQ(Pixel(99 - 4, 5), uint32_t{table[5 * 16 + 4]} << 24);
    EXPECT_EQ(Pixel(50, 49), 0x007F7F7FU);
    EXPECT_EQ(Pixel(50, 50), kUnpainted);
}

} // namespace
