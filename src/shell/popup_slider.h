// Sliders for a value from 0 to 100: the wide one of the popup slider frame and the rows of the volume list. Both show
// the value as a bar with a thumb, a symbol and a title over it, and take it from a horizontal drag. The drag is
// relative: where the finger comes down does not matter, how far it goes does.
//
//   finger              popup slider                          row of a list
//   down                remembers point and value             likewise
//   first move          drags as soon as x changes            drags beyond 15 pixels (the list may scroll until then)
//   further moves       value follows; each change refreshes the listener
//   up                  refreshes the listener                mutes or unmutes if it was a tap; refreshes the listener
//
// A slider that a finger drags keeps the touch wherever the finger goes, and nobody else moves it: SetValue does
// nothing meanwhile.
#pragma once

#include "gui/button.h"

// What both sliders share.
class CVrGuiSliderButton : public CVrGuiButton {
public:
    static constexpr int32_t kMaxValue = 100;

    uint32_t GetCornerMask() const override { return CornerAll; }
    void OnTouchDown(const CVrPoint& point) override;
    void OnTouchMove(const CVrPoint& point) override;
    void OnTouchUp(const CVrPoint& point) override;
    void DrawContent() override;

    // Shows a value, cut to 0..100. True if that changed it; false while a finger drags the slider.
    bool SetValue(int32_t newValue);
    bool IsDragged() const { return pressed && dragging != 0; }
    // Loads the left symbols (numbers of static symbols) at `iconSize`, which is taken from the style first.
    void LoadSliderIcons(int32_t off, int32_t low, int32_t high);

    CVrGuiIcon iconOff, iconLow, iconHigh; // left symbol at 0, 1 to 50, above
    int32_t value = 0;                     // 0..100
    int32_t pressX = 0, pressY = 0;        // where the finger came down
    int32_t dragging = 0;                  // not 0 once the finger moves the value
    int32_t startValue = 0;                // `value` at touch-down

protected:
    // How far in x (without sign) a drag has not begun yet.
    virtual int32_t DragTolerance() const = 0;
    // The finger was lifted; `wasDragging`: it had moved the value.
    virtual void FinishTouch(bool) {}
    virtual void OnValueStored() {}
    virtual const CVrGuiIcon* RightIcon() const { return nullptr; }
    void StopDragging();

private:
    struct Paint;

    bool StoreValue(int32_t newValue);
    void DrawBar(const Paint& paint) const;
    void DrawThumb(const Paint& paint) const;
    void DrawTitle(const Paint& paint) const;
    void DrawIcons(const Paint& paint) const;
    const CVrGuiIcon& LeftIcon() const;
    int32_t BarWidth() const { return static_cast<int32_t>(int64_t{rect.width} * value / kMaxValue); }
    uint32_t Dimmed(uint32_t color) const;
    int32_t IconRoom(const CVrGuiIcon* shown) const;
};

// A row of the volume list. A tap on one that can mute switches between 0 and the value before.
class CVrGuiPopupMenuSlider : public CVrGuiSliderButton {
public:
    CVrGuiPopupMenuSlider();

    // False once the slider follows the finger: then the list may not take it over.
    bool OnPressCancelled() override;
    // Loads the right symbols and lets a tap mute.
    void AllowMute();

    bool canMute = false;
    bool hasLastValue = false;             // `lastValue` holds something
    int32_t lastValue = 0;                 // the last `value` above 0
    CVrGuiIcon iconUnchecked, iconChecked; // right symbol at 0, and above

protected:
    int32_t DragTolerance() const override;
    void FinishTouch(bool wasDragging) override;
    void OnValueStored() override;
    const CVrGuiIcon* RightIcon() const override;
};

class CVrGuiPopupSlider : public CVrGuiSliderButton {
public:
    CVrGuiPopupSlider();

    void OnStart() override;
    void OnTouchMove(const CVrPoint& point) override;
    bool OnPressCancelled() override;
    // Its frame was hidden or shown: what ran before is over.
    void OnVisibilityChanged(bool hidden) override;
    // The hiding falls due: closes the frame, unless a finger rests on the slider.
    bool OnTimer(uint64_t now) override;
    // Closes the frame when the slider has been left alone for so long; 0: it stays up.
    void HideAfter(uint32_t ms);

    uint32_t autoHide = 0; // ms; 0: off

protected:
    int32_t DragTolerance() const override { return 0; }
};
