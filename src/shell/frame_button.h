// CVrGuiFrameBtn: the grid button that most controls use. It toggles on a tap and tells its area.
#pragma once

#include "gui/button.h"

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
