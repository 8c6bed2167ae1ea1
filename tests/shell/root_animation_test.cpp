// The root's slots through the whole display: one pass is one step and one frame, the rest of the picture stands still.

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

#include "shell/test_page.h"
#include "support/golden.h"

namespace {

using Picture = std::vector<uint32_t>;

bool g_hasRoom = true;

// Notes the end of its fade, and of a move that it listens to; may arm the next one then.
class Tile : public CVrGuiFrameBtn {
public:
    void OnFadeEnd() override { fadesOver++; }
    void OnPopupResult(bool accepted) override {
        results.push_back(accepted);
        if (onResult)
            onResult();
    }
    int fadesOver = 0;
    std::vector<bool> results;
    std::function<void()> onResult;
};

class RootAnimation : public testing::Test {
protected:
    RootAnimation() {
        on.display.App().readySlot = [] { return g_hasRoom; };
        g_hasRoom = true;
        CVrGuiFrameArea& area = *on.page->frameArea;
        tile = new Tile;
        tile->SetParent(&area);
        tile->text = "Tile";
        tile->layout = CVrGuiButton::LayoutTextCenter;
        area.buttonCount = 2;
        on.page->ReloadColors();
        on.page->ApplyLayout();
        on.Repaint();
    }
    ~RootAnimation() override { g_hasRoom = true; }

    CVrGuiMainWin& Root() { return on.Root(); }
    Picture Screen() { return Picture(on.display.Screen(), on.display.Screen() + kScreenSide * kScreenSide); }
    Picture Repainted() {
        on.Repaint();
        return Screen();
    }
    // The popup as it will stand, at first hidden, so that it slides in from the bottom by 40 pixels a pass.
    CVrGuiElement& ArmPopup() {
        on.ShowVolumes(4);
        CVrGuiElement& popup = on.Popup();
        shown = Screen();
        popup.SetHidden(true);
        on.Repaint();
        target = popup.rect.y;
        EXPECT_TRUE(Root().ArmMove(popup, target + 400, target, 40));
        Root().moveAnimation.listener = tile;
        Root().moveAnimation.listenerArgument = true;
        return popup;
    }
    uint32_t FramesOf(uint32_t passes) {
        const uint32_t before = on.display.FrameCount();
        for (uint32_t i = 0; i < passes; i++)
            on.display.Pass();
        return on.display.FrameCount() - before;
    }
    void ExpectNothingLeft() {
        EXPECT_FALSE(Root().moveAnimation.element || Root().buttonAnimation.element ||
                     Root().scrollAnimation.element);
        EXPECT_FALSE(Root().moveAnimation.listener);
        EXPECT_EQ(Root().savedPixels, nullptr);
        EXPECT_EQ(Root().clip.height, 0);
        EXPECT_TRUE(Screen() == Repainted()) << "the last frame is the tree as it is";
    }

    PageOnDisplay on;
    Tile* tile = nullptr;
    Picture shown; // the popup at its place
    int32_t target = 0;
};

using GoldenRootAnimation = RootAnimation;

} // namespace

TEST_F(GoldenRootAnimation, AMoveCarriesItsElementOverTheSavedPicture) {
    CVrGuiElement& popup = ArmPopup();
    for (int pass = 1; pass <= 10; pass++) {
        EXPECT_EQ(FramesOf(1), 1u);
        EXPECT_EQ(popup.rect.y, target + 400 - 40 * pass);
        EXPECT_TRUE(tile->results.empty());
        if (pass == 6) {
            EXPECT_TRUE(golden::Matches("root-move-middle", on.display.Screen(), kScreenSide, kScreenSide));
        }
    }
    EXPECT_EQ(FramesOf(1), 1u) << "the tree, painted whole";
    EXPECT_EQ(tile->results, std::vector<bool>{true});
    EXPECT_TRUE(Screen() == shown);
    EXPECT_EQ(FramesOf(5), 0u);
    ExpectNothingLeft();
}

TEST_F(GoldenRootAnimation, AFadeLetsTheSavedPictureThrough) {
    const Picture before = Screen();
    const CVrPoint at = PageOnDisplay::Middle(*tile);
    const auto pixel = [&at](const Picture& picture) {
        return static_cast<int>(picture[static_cast<size_t>((at.y + 40) * kScreenSide + at.x)] & 255);
    };
    ASSERT_TRUE(Root().ArmFade(*tile, 8));
    int last = -1;
    for (int pass = 1; pass <= 8; pass++) {
        EXPECT_EQ(FramesOf(1), 1u);
        EXPECT_EQ(tile->fadeCounter, static_cast<uint32_t>(pass));
        const int distance = std::abs(pixel(Screen()) - pixel(before));
        EXPECT_TRUE(last < 0 || distance < last) << "nearer to the tile at each pass";
        last = distance;
        if (pass == 4) {
            EXPECT_TRUE(golden::Matches("root-fade-middle", on.display.Screen(), kScreenSide, kScreenSide));
        }
    }
    EXPECT_EQ(last, 0);
    EXPECT_EQ(tile->fadesOver, 0);
    FramesOf(1);
    EXPECT_EQ(tile->fadesOver, 1);
    EXPECT_TRUE(Screen() == before);
    ExpectNothingLeft();
}

TEST_F(RootAnimation, AChangeMeanwhileShowsWhenItIsOver) {
    const CVrPoint at = PageOnDisplay::Middle(*tile).Moved(40, -100); // above the popup
    const uint32_t unselected = on.display.PixelAt(at.x, at.y);
    ArmPopup();
    FramesOf(2);
    const uint32_t before = on.display.PixelAt(at.x, at.y);
    EXPECT_NE(before, unselected) << "what lies behind a popup on its way is dimmed";
    tile->state = CVrGuiElement::StateSelected;
    tile->Invalidate();
    on.display.App().WakeForRepaint();
    EXPECT_EQ(FramesOf(3), 3u) << "a frame for each step, none for the request";
    EXPECT_EQ(on.display.PixelAt(at.x, at.y), before);
    FramesOf(20);
    Root().popupFrame->SetHidden(true);
    EXPECT_NE(Repainted()[static_cast<size_t>(at.y * kScreenSide + at.x)], unselected);

    // New colours are another matter: the picture of the rest is saved anew.
    ArmPopup();
    FramesOf(2);
    on.display.App().ApplyColors();
    EXPECT_EQ(Root().savedPixels, nullptr);
    EXPECT_EQ(FramesOf(1), 1u);
    EXPECT_NE(Root().savedPixels, nullptr);
    FramesOf(20);
    ExpectNothingLeft();
}

TEST_F(RootAnimation, WhatWouldNotBeTakenIsNotPaintedButTheEndIs) {
    ArmPopup();
    FramesOf(3);
    g_hasRoom = false;
    EXPECT_EQ(FramesOf(30), 0u);
    EXPECT_EQ(on.Popup().rect.y, target) << "the steps go on";
    EXPECT_EQ(tile->results.size(), 1u);
    EXPECT_FALSE(Screen() == shown);
    g_hasRoom = true;
    EXPECT_EQ(FramesOf(3), 1u);
    EXPECT_TRUE(Screen() == shown);
    ExpectNothingLeft();
}

TEST_F(RootAnimation, AnElementMayVanishOnItsWay) {
    ASSERT_TRUE(Root().ArmFade(*tile, 100));
    FramesOf(5);
    on.page->frameArea->DeleteChildren();
    FramesOf(5);
    ExpectNothingLeft();
    EXPECT_EQ(FramesOf(5), 0u);
}

TEST_F(RootAnimation, AListenerMayArmTheNextMove) {
    CVrGuiElement& popup = ArmPopup();
    tile->onResult = [&] {
        tile->onResult = nullptr;
        EXPECT_TRUE(Root().ArmMove(popup, target, target + 100, 33)); // the last step is shorter
        Root().moveAnimation.listener = tile;
    };
    FramesOf(11);
    EXPECT_EQ(FramesOf(4), 4u);
    EXPECT_EQ(popup.rect.y, target + 100);
    FramesOf(5);
    EXPECT_EQ(tile->results, (std::vector<bool>{true, false}));
    ExpectNothingLeft();
}

TEST_F(RootAnimation, SlotsAreTakenOnceAndJoinEachOther) {
    EXPECT_FALSE(Root().ArmMove(*tile, 5, 5, 10)) << "no way to go";
    EXPECT_FALSE(Root().ArmMove(*tile, 5, 50, 0));
    EXPECT_FALSE(Root().ArmFade(*tile, 0));
    CVrGuiElement& popup = ArmPopup();
    EXPECT_FALSE(Root().ArmMove(*tile, 0, 50, 10));
    FramesOf(2);
    ASSERT_TRUE(Root().ArmFade(*tile, 4));
    EXPECT_FALSE(Root().ArmFade(*tile, 4));
    FramesOf(2);
    EXPECT_EQ(tile->fadeCounter, 2u);
    Root().buttonAnimation.paused = true;
    FramesOf(2);
    EXPECT_EQ(tile->fadeCounter, 2u);
    EXPECT_EQ(popup.rect.y, target + 400 - 6 * 40);
    Root().moveAnimation.step = 0; // holds it where it is
    EXPECT_EQ(FramesOf(5), 0u);
    Root().RemoveAnimations();
    FramesOf(2);
    EXPECT_EQ(tile->fadesOver, 1);
    ExpectNothingLeft();
}

TEST_F(RootAnimation, AScrollingElementHasTheTreePaintedAtEachPass) {
    ASSERT_TRUE(Root().ArmScroll(*on.page->frameArea));
    EXPECT_EQ(FramesOf(5), 5u);
    on.display.App().WakeForRepaint();
    EXPECT_EQ(FramesOf(1), 1u);
    Root().RemoveAnimations();
    EXPECT_EQ(FramesOf(3), 0u);
    ExpectNothingLeft();
}
