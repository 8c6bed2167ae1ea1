// The push button: a momentary output. The command goes out when the finger touches; the button stays dark for as
// long as the finger lies on it.
#pragma once

#include "shell/frame.h"
#include "shell/frame_button.h"

class CVrGuiPushButton : public CVrGuiFrame {
public:
    CVrGuiPushButton();

    void CreateContent(CVrStructureItem* newItem) override;
    void OnChildEvent(CVrGuiElement* child, int32_t childId, uint32_t childPressed) override;
    void FillArea(CVrStructureItem* newItem) override;
    // Brings every button to its item's state.
    virtual void RefreshView();
};

// Gesture: down -> selected, the page is told (0); up, wherever the finger is, or a press that the scroll area takes
// away -> normal, the page is told (1).
class CVrGuiPushButtonBtn : public CVrGuiFrameBtn {
public:
    CVrGuiPushButtonBtn();

    void OnStart() override;
    void OnTouchDown(const CVrPoint& point) override;
    void OnTouchUp(const CVrPoint& point) override;
    bool OnPressCancelled() override;
    virtual void ReleasePress();

private:
    void ShowAndReport(uint32_t newState, uint32_t reported);
};
