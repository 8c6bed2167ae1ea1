#include "gui/button.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

#include "foundation/translator.h"
#include "gui/font.h"
#include "gui/image.h"
#include "gui/plain_text.h"
#include "gui/test_tree.h"
#include "gui/vector_player.h"
#include "structure/style_sheet.h"
#include "support/golden.h"
#include "support/log_capture.h"
#include "support/plain_pixels.h"

using namespace test_tree;

namespace {

constexpr uint32_t kPaper = 0xFFD9D4CC;
constexpr uint32_t kInk = 0xFF102030;
constexpr uint32_t kSymbol = 0xFFC02010;

// Fills a picture of 40 frames a second.
class FakeVector : public CVrVectorPlayer {
public:
    bool HasContent() const override { return hasContent; }
    int32_t FirstFrame() const override { return first; }
    int32_t LastFrame() const override { return last; }
    float FrameRate() const override { return rate; }
    void RenderFrame() override {}
    CVrSize GetSurfaceSize() const override { return CVrSize(20, 20); }
    const uint32_t* GetSurfacePixels() const override { return m_pixels.data(); }

    bool hasContent = true;
    int32_t first = 0, last = 10;
    float rate = 40;

private:
    std::vector<uint32_t> m_pixels = std::vector<uint32_t>(400, 0xFF000000);
};

class ButtonTest : public testing::Test {
protected:
    ButtonTest() { app.LoadStyles(); }

    CVrGuiButton& AddButton(const CVrRect& rect, uint32_t layout, const char* text = "") {
        CVrGuiButton& button = Add<CVrGuiButton>(root, rect, kPaper);
        button.layout = layout;
        button.text = text;
        button.style = app.structure.styles.Row(ElementType::PopupMenuBtn); // gaps: symbol 25, text 20
        for (uint32_t state = 0; state < CVrGuiElement::StateCount; state++) {
            button.colors[CVrGuiElement::ColorText + state] = kInk;
            button.colors[CVrGuiElement::ColorSymbol + state] = kSymbol;
        }
        return button;
    }
    // A symbol that fills its square.
    static void GiveSymbol(CVrGuiIcon& icon, uint32_t size) {
        icon.image.FreeBitmap();
        icon.image.bitmap = static_cast<uint8_t*>(malloc(size * size));
        memset(icon.image.bitmap, 255, size * size);
        icon.image.bitmapSize[0] = icon.image.bitmapSize[1] = size;
        icon.image.bitmapBytes = size * size;
        icon.requestedSize = size;
    }
    void GiveSymbol(CVrGuiButton& button, uint32_t size) {
        button.iconSize = size;
        GiveSymbol(button.icon, size);
    }
    void Paint() { root.Draw(true, true); }
    // The box around all pixels that `isInk` takes.
    template <typename Test>
    CVrRect BoxOf(Test isInk) const {
        CVrRect box;
        for (int y = 0; y < 720; y++)
            for (int x = 0; x < 720; x++)
                if (isInk(root.Row(y)[x]))
                    box = box.United(CVrRect(x, y, 1, 1));
        return box;
    }
    CVrRect SymbolBox() const {
        return BoxOf([](uint32_t pixel) { return pixel == kSymbol; });
    }
    CVrRect TextBox() const {
        return BoxOf(
            [](uint32_t pixel) { return pixel != kPaper && pixel != kUnpainted && pixel != kSymbol; });
    }
    int TextWidth(uint32_t font, const char* text) const {
        CVrSize size;
        GetFont(font)->MeasureText(size, text);
        return size.width;
    }

    CVrTestClock clock;
    Application app;
    Probe& root = *app.root;
};

// ---- Text ----

TEST_F(ButtonTest, WithoutLayoutOnlyTheBackgroundShows) {
    CVrGuiButton& button = AddButton(CVrRect(10, 10, 300, 100), 0, "Kitchen");
    GiveSymbol(button, 40);
    Paint();
    EXPECT_TRUE(TextBox().IsEmpty());
    EXPECT_TRUE(SymbolBox().IsEmpty());
    button.layout = CVrGuiButton::LayoutStacked;
    button.SetSize(300, 0);
    Paint();
    EXPECT_TRUE(SymbolBox().IsEmpty());
}

TEST_F(ButtonTest, TextStandsLeftCenteredOrRight) {
    CVrGuiButton& button = AddButton(CVrRect(50, 50, 400, 100), CVrGuiButton::LayoutTextLeft, "HH");
    const int width = TextWidth(FontIndex::NormalBold, "HH");
    const auto expectX = [&](int wanted) {
        Paint();
        EXPECT_NEAR(TextBox().x, 50 + wanted, 4); // the letter's own bearing
    };
    expectX(20);
    button.layout = CVrGuiButton::LayoutTextRight;
    expectX(400 - width - 20);
    button.layout = CVrGuiButton::LayoutTextCenter;
    expectX((400 - width) / 2);
    button.textOffsetX = 31;
    expectX((400 - width) / 2 + 31);
}

TEST_F(ButtonTest, LineFeedMakesTwoLinesInTwoFontsAtTheBottom) {
    CVrGuiButton& button = AddButton(CVrRect(50, 50, 400, 200), CVrGuiButton::LayoutTextBottom, "H\nH");
    button.font2Index = FontIndex::VeryBig;
    Paint();
    const CVrRect both = TextBox();
    button.text = "H\n";
    Paint();
    const CVrRect first = TextBox();
    EXPECT_GT(both.height, first.height * 3);
    EXPECT_EQ(both.y, first.y);
    EXPECT_LE(both.Bottom(), 250);
    EXPECT_GT(both.Bottom(), 250 - 40); // the second line's box ends with the button
    EXPECT_LT(first.Bottom(), 250 - 100);
}

TEST_F(ButtonTest, WrappedLinesStandFivePixelsCloser) {
    CVrGuiButton& button =
        AddButton(CVrRect(50, 50, 400, 300), CVrGuiButton::LayoutTextCenter | CVrGuiButton::LayoutWrap, "H");
    Paint();
    const CVrRect one = TextBox();
    button.text = "H\nH\nH";
    Paint();
    const CVrRect three = TextBox();
    EXPECT_EQ(three.y, one.y);
    EXPECT_EQ(three.height, one.height + 2 * (35 - 5));
    button.text = "H HHH"; // every line is centred on the first one
    button.SetWidth(TextWidth(FontIndex::NormalBold, "HHH") + 20 + 10 + 2);
    Paint();
    const CVrRect centered = TextBox();
    EXPECT_NEAR(centered.width, TextWidth(FontIndex::NormalBold, "HHH"), 8);
    button.text = "H H H H H H H H H H H H"; // what has no room stays away
    button.SetHeight(100);
    button.SetWidth(60);
    Paint();
    EXPECT_LE(TextBox().Bottom(), button.rect.Bottom());
}

TEST_F(ButtonTest, ShortenedLineKeepsThirtyPixelsFree) {
    CVrGuiButton& button =
        AddButton(CVrRect(50, 50, 200, 100), CVrGuiButton::LayoutTextLeft | CVrGuiButton::LayoutShorten,
                  "A name that is much too long for its place");
    Paint();
    EXPECT_LE(TextBox().Right(), 50 + 20 + 170);
    EXPECT_GT(TextBox().Right(), 50 + 20 + 120);
    button.SetWidth(30);
    Paint();
    EXPECT_TRUE(TextBox().IsEmpty());
}

TEST_F(ButtonTest, NameBesideASymbolIsShortenedToTheRoomOfItsOwnButton) {
    // Far from the left edge of the store, where the name must not vanish.
    CVrGuiButton& button = AddButton(CVrRect(380, 50, 320, 100), CVrGuiButton::LayoutIconBesideText,
                                     "A name that is much too long for its place");
    GiveSymbol(button, 60);
    Paint();
    EXPECT_EQ(SymbolBox(), CVrRect(380 + 25, 50 + 20, 60, 60));
    EXPECT_NEAR(TextBox().x, 380 + 25 + 20 + 60, 4);
    EXPECT_LE(TextBox().Right(), 380 + 320 - 30);
    EXPECT_GT(TextBox().width, 100);
}

TEST_F(ButtonTest, UnknownFontShowsNoText) {
    CVrGuiButton& button = AddButton(CVrRect(50, 50, 200, 100), CVrGuiButton::LayoutTextCenter, "Kitchen");
    button.fontIndex = 400;
    Paint();
    EXPECT_TRUE(TextBox().IsEmpty());
}

// ---- Symbols ----

TEST_F(ButtonTest, SymbolStandsLeftRightOrCentered) {
    CVrGuiButton& button = AddButton(CVrRect(50, 50, 300, 100), CVrGuiButton::LayoutIcon);
    GiveSymbol(button, 40);
    const auto expectAt = [&](int x, int y) {
        Paint();
        EXPECT_EQ(SymbolBox(), CVrRect(50 + x, 50 + y, 40, 40));
    };
    expectAt(130, 30);
    button.layout = CVrGuiButton::LayoutIconLeft;
    expectAt(25, 30);
    button.layout = CVrGuiButton::LayoutIconRight;
    expectAt(300 - 25 - 40, 30);
    button.iconOffsetX = -7;
    button.iconOffsetY = 9;
    expectAt(300 - 25 - 40 - 7, 39);
}

TEST_F(ButtonTest, StackedSymbolAndTextShareTheMiddle) {
    CVrGuiButton& button = AddButton(CVrRect(50, 50, 300, 200), CVrGuiButton::LayoutStackedWrapped, "H");
    GiveSymbol(button, 40);
    button.stackGap = 30;
    Paint();
    const int symbolY = 50 + (200 - 40) / 2 - 35 / 2 - 15;
    EXPECT_EQ(SymbolBox(), CVrRect(50 + 130, symbolY, 40, 40));
    EXPECT_GE(TextBox().y, symbolY + 40 + 30);
    EXPECT_LT(TextBox().y, symbolY + 40 + 30 + 20);
}

TEST_F(ButtonTest, ExtraSymbolStandsInTheTopRightCorner) {
    CVrGuiButton& button = AddButton(CVrRect(50, 50, 300, 200), CVrGuiButton::LayoutIcon);
    GiveSymbol(button.addIcon, 24);
    Paint();
    EXPECT_EQ(SymbolBox(), CVrRect(50 + 300 - 24 - 10, 60, 24, 24));
}

TEST_F(ButtonTest, OwnSizeNeverTouchesTheAlternativeSymbol) {
    CVrGuiButton& button = AddButton(CVrRect(0, 0, 100, 100), CVrGuiButton::LayoutIcon);
    button.iconName = "missing.svg";
    GiveSymbol(button, 40);
    EXPECT_EQ(button.GetIconForSize(40), &button.icon);
    EXPECT_EQ(button.altIcon.requestedSize, 0U);
    LogCapture log;
    EXPECT_EQ(button.GetIconForSize(30), nullptr);
    EXPECT_TRUE(log.Has("missing.svg"));
    log.Clear();
    EXPECT_EQ(button.GetIconForSize(30), nullptr); // not tried again at every painting
    EXPECT_FALSE(log.Has("missing.svg"));
}

TEST_F(ButtonTest, FailedParseIsNotTriedAgain) {
    CVrGuiButton& button = AddButton(CVrRect(0, 0, 100, 100), CVrGuiButton::LayoutIcon);
    LogCapture log;
    button.LoadIcons();
    EXPECT_TRUE(log.All().empty()); // no name
    button.iconName = "missing.svg";
    button.iconSize = 40;
    button.LoadIcons();
    EXPECT_TRUE(log.Has("CVrGuiButton::LoadIcons: Reload missing.svg"));
    EXPECT_TRUE(log.Has("CVrGuiButton::LoadIcons: Error loading missing.svg 40"));
    button.icon.image.parseFailed = 1;
    log.Clear();
    button.LoadIcons();
    EXPECT_TRUE(log.Has("Reload missing.svg"));
    EXPECT_FALSE(log.Has("Error loading"));
}

// ---- Pictures ----

TEST_F(ButtonTest, PictureUnderASymbolIsTinted) {
    CVrGuiButton& button = AddButton(CVrRect(100, 100, 200, 200), CVrGuiButton::LayoutIcon);
    auto* picture = new CVrGuiImage;
    picture->Allocate(200, 200, CVrGuiImage::kRgbaBits);
    constexpr uint32_t kPicture = 0xFF4080C0;
    for (uint32_t i = 0; i < 200 * 200; i++)
        memcpy(picture->pixels + i * 4, &kPicture, 4);
    button.SetImage(picture, true);
    Paint();
    EXPECT_EQ(root.Row(200)[200], kPicture);
    GiveSymbol(button, 40);
    Paint();
    EXPECT_EQ(root.Row(150)[120], plain::Blend(kPicture, 0x7F7C77, 102));
    EXPECT_EQ(SymbolBox(), CVrRect(180, 180, 40, 40));
}

TEST_F(ButtonTest, TextBelowAPictureStartsWhereItEnds) {
    CVrGuiButton& button = AddButton(CVrRect(100, 100, 200, 300), CVrGuiButton::LayoutTextBelow, "H");
    auto* picture = new CVrGuiImage;
    picture->Allocate(200, 200, CVrGuiImage::kRgbaBits); // transparent black: nothing of it counts as text
    for (uint32_t i = 0; i < 200 * 200; i++)
        memcpy(picture->pixels + i * 4, &kPaper, 4);
    button.SetImage(picture, true);
    Paint();
    EXPECT_GE(TextBox().y, 300);
    EXPECT_LT(TextBox().Bottom(), 300 + 40);
}

// ---- Ramp and vectors ----

TEST_F(ButtonTest, RampFadesTheOwnStoreToOneSide) {
    CVrGuiButton& button = AddButton(CVrRect(100, 100, 100, 40), CVrGuiButton::LayoutIcon);
    button.flags |= CVrGuiElement::FlagOwnStore;
    button.alphaRamp = CVrGuiButton::RampFadesLeft;
    Paint();
    EXPECT_EQ(button.Row(20)[0], kPaper & 0xFFFFFF);
    EXPECT_EQ(button.Row(20)[50] >> 24, 128U);
    button.alphaRamp = CVrGuiButton::RampFadesRight;
    Paint();
    EXPECT_EQ(button.Row(20)[75] >> 24, 64U);
}

TEST_F(ButtonTest, VectorRunsWithTheTimeAndWrapsAround) {
    CVrGuiButton& button = AddButton(CVrRect(100, 100, 100, 100), CVrGuiButton::LayoutIcon);
    FakeVector vector;
    button.vector = &vector;
    button.iconSize = 20;
    button.RestartVector();
    EXPECT_EQ(button.timerPeriod, 50U);
    Paint();
    EXPECT_EQ(SymbolBox(), CVrRect(140, 140, 20, 20));
    // 11 frames in 250 ms: 22 ms each
    root.ClearUpdateTree();
    EXPECT_TRUE(root.UpdateTimers(clock.Now() + 50));
    EXPECT_EQ(vector.currentFrame, 2U);
    EXPECT_TRUE(button.needsUpdate);
    root.UpdateTimers(clock.Now() + 50 + 22 * 10);
    EXPECT_EQ(vector.currentFrame, 1U);
    vector.hasContent = false;
    button.RestartVector();
    EXPECT_FALSE(button.IsTimerActive());
}

TEST(VectorPlayerTest, FramesLongerThanTheTimerAndOddModels) {
    FakeVector vector;
    vector.rate = 1; // 909 ms a frame
    vector.Start(1000);
    for (uint64_t now = 1000; now <= 2000; now += 50)
        vector.Advance(now);
    EXPECT_EQ(vector.currentFrame, 1U);
    vector.last = -1; // no frames
    vector.Advance(9000);
    EXPECT_EQ(vector.currentFrame, 1U);
    for (float rate : {0.0F, -5.0F, 1e-30F, 1e30F}) {
        vector.last = 10;
        vector.rate = rate;
        vector.Advance(1'000'000);
        EXPECT_LE(vector.currentFrame, 10U);
    }
}

// ---- Text elements ----

TEST_F(ButtonTest, LabelsTakeNoEventsAndHaveTheirFonts) {
    auto* label = root.CreateChild<CVrGuiPlainText>("CVrGuiPlainText", true);
    auto* small = root.CreateChild<CVrGuiPlainTextSmall>("CVrGuiPlainTextSmall", true);
    auto* panel = root.CreateChild<CVrGuiBackgroundPanel>("CVrGuiBackgroundPanel", true);
    root.StartTree();
    for (CVrGuiButton* element : {static_cast<CVrGuiButton*>(label), static_cast<CVrGuiButton*>(small),
                                  static_cast<CVrGuiButton*>(panel)}) {
        EXPECT_EQ(element->eventMask, 0U);
        EXPECT_EQ(element->actionMode, 0U);
        EXPECT_EQ(element->font2Index, FontIndex::Normal);
    }
    EXPECT_EQ(label->fontIndex, FontIndex::NormalBold);
    EXPECT_EQ(small->fontIndex, FontIndex::Normal);
    EXPECT_EQ(panel->styleName, "CVrGuiActionbarBtn");
    EXPECT_EQ(panel->GetCornerMask(), CornerNone);
}

TEST_F(ButtonTest, NoticeHasItsSymbolInTheColourOfItsText) {
    auto* notice = root.CreateChild<CVrGuiComingSoonText>("CVrGuiComingSoonText", true);
    notice->ReloadColors();
    EXPECT_EQ(notice->colors[CVrGuiElement::ColorSymbol], notice->colors[CVrGuiElement::ColorText]);
    EXPECT_NE(notice->colors[CVrGuiElement::ColorSymbol], 0U);
    root.NotifyLanguage();
    EXPECT_EQ(notice->text, CVrTranslator::Instance().GetText("frame.coming_soon"));
}

// ---- All of it ----

TEST_F(ButtonTest, LayoutsLookAsTheyShould) {
    for (uint32_t slot = 0; slot < 3; slot++) {
        root.colorIndex[slot] = 1;
        root.colors[slot] = 0xFFFDF4EB;
    }
    struct Sample {
        uint32_t layout;
        const char* text;
    };
    const Sample samples[] = {
        {CVrGuiButton::LayoutStackedWrapped, "Living room\nceiling"},
        {CVrGuiButton::LayoutStacked, "Kitchen"},
        {CVrGuiButton::LayoutIconBesideText, "Garden door and terrace"},
        {CVrGuiButton::LayoutIconOverBottomText, "First line\nsecond line"},
        {CVrGuiButton::LayoutIconRight | CVrGuiButton::LayoutTextLeft, "Спальня"},
        {CVrGuiButton::LayoutTextRight | CVrGuiButton::LayoutIconLeft, "21.5°"},
        {CVrGuiButton::LayoutTextCenter, "A text that is far too long for its button"},
        {CVrGuiButton::LayoutTextLeft | CVrGuiButton::LayoutWrap,
         "This one goes over as many lines as it likes"},
        {CVrGuiButton::LayoutTextCenter | CVrGuiButton::LayoutWrap, "Centred on the width of the first line"},
    };
    for (int i = 0; i < 9; i++) {
        CVrGuiButton& button = AddButton(CVrRect(10 + i % 3 * 235, 10 + i / 3 * 235, 225, 225),
                                         samples[i].layout, samples[i].text);
        button.style = app.structure.styles.Row(ElementType::PopupMenuBtn);
        if (i < 6)
            GiveSymbol(button, 50);
        button.state = i == 4 ? CVrGuiElement::StateSelected : CVrGuiElement::StateNormal;
    }
    Paint(); // a glyph's first use has no kerning
    Paint();
    EXPECT_TRUE(golden::Matches("button-layouts", root.pixels, 720, 720));
}

} // namespace
