// The row of page buttons at the top of the screen: layout, snapping to button borders, and the two arrow
// zones that page through more buttons than fit.
#pragma once

#include "gui/icon.h"
#include "shell/scroll_area.h"

class CVrGuiMenu : public CVrGuiScrollArea {
public:
    CVrGuiMenu();

    bool ApplyLayout() override;
    void DrawAfterChildren() override;
    // Makes `child` the one selected button of the row.
    void OnChildSelected(CVrGuiElement* child, uint32_t state) override;
    void DoEvent(uint32_t eventType, const CVrPoint& point) override;
    bool SnapsToItems() override { return true; }
    // The button border nearest to `pos`, within `min` to `max`; half-way goes to the border further from 0.
    int32_t SnapPosition(int32_t pos, int32_t min, int32_t max) override;

    int32_t maxVisible = 0; // buttons visible at a time
    int32_t pagingZone = 0; // -1 or 1 while a finger that went down on an arrow zone is held
    CVrGuiIcon leftArrow, rightArrow;

private:
    int32_t ButtonWidth() const;
    bool LeftArrowShown() const;
    bool RightArrowShown() const;
    int32_t ZoneAt(const CVrPoint& point) const;
    void BeginPaging(int32_t zone);
    void PageBy(int32_t direction);
    void PlaceButtons();
    uint32_t FadeColor() const;
};
