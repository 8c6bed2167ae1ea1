// A page that shows what the toolkit can move: a scrolling grid of fourteen covers, of which a tapped one fades in and
// plays; the page itself slides up when it is opened.
#pragma once

#include "shell/frame.h"

class CVrGuiFrameCoverBtn;

class CVrGuiMotionPage : public CVrGuiFrame {
public:
    static constexpr int32_t kTiles = 14;
    static constexpr uint32_t kNumber = 900; // in the commands that it sends, beside the tile's index

    bool IsScrollable() override { return true; }
    void FillArea(CVrStructureItem* newItem) override;
    void OnVisibilityChanged(bool hidden) override;
    void OnChildEvent(CVrGuiElement* child, int32_t childId, uint32_t reported) override;
    void OnPopupResult(bool) override; // it has arrived

private:
    void AddTile(int32_t index);
    void SlideUp();

    CVrElementRef<CVrGuiFrameCoverBtn> m_playing;
};
