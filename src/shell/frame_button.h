// The buttons that live in a frame area: the grid button that most controls use, the picture of a music page, and the
// base of the list tiles. They look as CVrGuiButton paints them; what stands here is how a tap is reported, the hit
// zones inside a button, and the swipe on a cover.
#pragma once

#include "gui/button.h"
#include "gui/vector/vector_animation.h"

// The grid button. It toggles on a tap and tells its area.
class CVrGuiFrameBtn : public CVrGuiButton {
public:
    CVrGuiFrameBtn();

    // A picture brings its own rounded shape; everything else is a rounded panel.
    uint32_t GetCornerMask() const override { return image ? CornerNone : CornerAll; }
    void OnStart() override;
    void OnTouchUp(const CVrPoint& point) override;
    void OnClick(const CVrPoint& point) override;
    // Whether a point (in the parent's coordinates) lies in the zone of the extra symbol, top right.
    virtual bool IsCornerHit(const CVrPoint& point) const;

    bool cornerHit = false; // the last tap fell in the corner zone

protected:
    // A point in the parent's coordinates, edges of the button included.
    bool ContainsWithEdges(const CVrPoint& point) const;
};

// What a cover asks of the page that listens to it.
class IVrCoverListener {
public:
    virtual void SkipCover(bool next) = 0;
    // False: there was nothing to close.
    virtual bool CloseCover() = 0;

protected:
    ~IVrCoverListener() = default;
};

// A picture that is tapped and swiped. Its `listener` may be an IVrCoverListener as well.
//
//     down, 18 pixels sideways, up     the next (to the left) or previous title
//     down, 18 pixels downwards, up    closes the cover
//     down, 18 pixels upwards, up      nothing
//     down, up                         an arrow's title, or else a click
class CVrGuiFrameCoverBtn : public CVrGuiFrameBtn {
public:
    enum class Swipe : int32_t { None = 0, Left = 1, Right = 2, Down = 3 }; // None: also upwards

    CVrGuiFrameCoverBtn();

    void OnTouchDown(const CVrPoint& point) override;
    void OnTouchMove(const CVrPoint& point) override;
    void OnTouchUp(const CVrPoint& point) override;
    void OnClick(const CVrPoint& point) override;
    void DoEvent(uint32_t eventType, const CVrPoint& point) override;
    bool IsCornerHit(const CVrPoint& point) const override;
    virtual void CopyCoverBtn(const CVrGuiFrameCoverBtn& source);

    // Loads the arrows (static symbols) and shows them if both could be loaded; an empty name drops both.
    void SetArrows(const CVrxStringU& leftName, const CVrxStringU& rightName);
    void ShowArrows(bool on);
    // What the picture stands for plays: bars that rise and fall, in place of a symbol and of its size. Without memory
    // for them a still symbol stands there. When it ends there is no symbol.
    void ShowPlaying(bool on);
    bool IsPlaying() const { return m_isPlaying; }

    CVrGuiIcon leftArrowIcon, rightArrowIcon; // previous, next
    bool cornerAtBottom = false;              // the extra symbol stands at the bottom right
    bool arrowsShown = false;                 // the arrows are painted and take taps
    bool swipeArmed = false;                  // from touch-down until a direction is known
    bool swipeDone = false;                   // the finger has travelled far enough
    bool pressedAtUp = false;                 // `pressed` as it stood when the up event came in
    Swipe swipeDirection = Swipe::None;
    int32_t swipeStartX = 0, swipeStartY = 0;

protected:
    void DrawUnderlay(CVrGuiElement& target, Placement& place, const CVrPoint& origin) override;
    uint32_t SecondLineColor() const override;
    void DrawAddIcon(CVrGuiElement& target, const CVrPoint& origin) override;

private:
    enum class Side { Left, Right };

    int32_t PictureRadius() const;
    bool HasBothArrows() const { return leftArrowIcon.HasBitmap() && rightArrowIcon.HasBitmap(); }
    // All three relative to the button.
    CVrRect ArrowSquare(Side side) const;
    CVrRect CornerSquare() const;
    CVrRect PictureArea() const;
    bool IsArrowHit(Side side, const CVrPoint& point) const;
    void DrawPicture(CVrGuiElement& target, const CVrPoint& origin);
    void DrawTextBand(CVrGuiElement& target, const Placement& place, const CVrRect& picture);
    void DrawCoverOverlay(CVrGuiElement& target, const CVrPoint& origin);
    void Darken(CVrGuiElement& target, const CVrRect& area) const;
    bool FollowSwipe(Swipe swipe);

    CVrVectorAnimation m_bars;
    bool m_isPlaying = false;
};

// The base of the list tiles.
class CVrGuiFrameListBtn : public CVrGuiButton {
public:
    CVrGuiFrameListBtn();

    uint32_t GetCornerMask() const override { return image ? CornerNone : CornerAll; }
    void OnStart() override;
    void CreateContent(CVrStructureItem* newItem) override;
};
