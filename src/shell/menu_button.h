// A button of the menu row: shows the symbol of its page and brings the page up.
#pragma once

#include "gui/button.h"

class CVrGuiMenuBtn : public CVrGuiButton {
public:
    CVrGuiMenuBtn();

    void OnStart() override;
    void CreateContent(CVrStructureItem* item) override;
    void OnTouchUp(const CVrPoint& point) override;
    void OnClick(const CVrPoint& point) override;
    // While selected, the symbol in its filled rendering.
    CVrGuiIcon* GetIconForSize(uint32_t size) override;

    CVrGuiIcon selectedIcon;      // filled rendering at iconSize
    CVrGuiIcon selectedIconOther; // the same at any other requested size
};
