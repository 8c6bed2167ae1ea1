// Rows of a plain popup list: one of several that can be chosen, and one that has to be held for a second before it
// acts.
#pragma once

#include "gui/button.h"

class CVrGuiPopupMenuBtn : public CVrGuiButton {
public:
    CVrGuiPopupMenuBtn();

    uint32_t GetCornerMask() const override { return CornerAll; }
    void OnStart() override;
    void OnTouchUp(const CVrPoint& point) override;
    // Marks this row alone and tells the listener.
    void OnClick(const CVrPoint& point) override;
};

// Hold to confirm:
//     down  the hold begins, a bar fills the row        a second later  the action runs, once
//     up, or a cancelled press before that              the bar goes, nothing happens
class CVrGuiPopupMenuTextBtn : public CVrGuiPopupMenuBtn {
public:
    static constexpr uint32_t kHoldMs = 1000;

    CVrGuiPopupMenuTextBtn();

    void OnTouchDown(const CVrPoint& point) override;
    void OnTouchUp(const CVrPoint& point) override;
    bool OnTimer(uint64_t now) override;
    bool OnPressCancelled() override;
    void OnClick(const CVrPoint& point) override;
    void DrawContent() override;

    uint64_t holdStart = 0;   // tick of touch-down
    int32_t holdProgress = 0; // 0..100
    bool holding = false;
    bool holdDone = false; // the hold reached its end

private:
    void Highlight(bool on);
    void FinishHold();
    void DrawProgress();
};
