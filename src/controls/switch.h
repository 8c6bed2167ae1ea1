// The switch: an on/off output. Its page is one large button for each served item, selected while the output is
// on. With push_button.h the model for all other controls.
#pragma once

#include "shell/frame.h"
#include "shell/frame_button.h"

class CVrGuiSwitch : public CVrGuiFrame {
public:
    CVrGuiSwitch();

    CVrxStringU GetClassName() const override { return "Switch"; }
    void CreateContent(CVrStructureItem* newItem) override;
    void UpdateFromItem(CVrStructureItem* changed) override;
    void OnChildEvent(CVrGuiElement* child, int32_t childId, uint32_t childPressed) override;
    bool IsScrollable() override;
    void FillArea(CVrStructureItem* newItem) override;
};

class CVrGuiSwitchBtn : public CVrGuiFrameBtn {
public:
    CVrGuiSwitchBtn();

    void OnStart() override;
    // Toggles without touching the neighbours: every switch stands for itself.
    void OnClick(const CVrPoint& point) override;
};
