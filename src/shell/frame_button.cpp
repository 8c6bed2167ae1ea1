#include "shell/frame_button.h"

#include "foundation/class_factory.h"
#include "shell/frame_area.h"

VR_REGISTER_ELEMENT(CVrGuiFrameBtn)

namespace {

// The corner zone is the extra symbol's square with this much room around it.
constexpr int32_t kCornerZoneMargin = 20;

} // namespace

CVrGuiFrameBtn::CVrGuiFrameBtn() {
    type = ElementType::FrameBtn;
    className = "CVrGuiFrameBtn";
}

void CVrGuiFrameBtn::OnStart() {
    CVrGuiButton::OnStart();
    eventMask = EventUp;
}

bool CVrGuiFrameBtn::ContainsWithEdges(const CVrPoint& point) const {
    return point.x >= rect.x && point.x <= rect.x + rect.width && point.y >= rect.y &&
           point.y <= rect.y + rect.height;
}

void CVrGuiFrameBtn::OnTouchUp(const CVrPoint& point) {
    if (pressed && ContainsWithEdges(point))
        OnClick(point);
}

bool CVrGuiFrameBtn::IsCornerHit(const CVrPoint& point) const {
    const auto zone = static_cast<int32_t>(addIconSize) + kCornerZoneMargin;
    return point.x > rect.x + rect.width - zone && point.y < rect.y + zone;
}

void CVrGuiFrameBtn::OnClick(const CVrPoint& point) {
    cornerHit = IsCornerHit(point);
    auto* area = static_cast<CVrGuiFrameArea*>(parent);
    if (!area)
        return;
    // A plain tap on an unselected button deselects its neighbours; a corner tap selects several together.
    if (!cornerHit && state == StateNormal)
        area->ClearSelection();
    area->OnChildSelected(this, state == StateNormal ? StateSelected : StateNormal);
}
