#include "controls/switch.h"

#include "controls/output_buttons.h"
#include "controls/switch_item.h"
#include "controls/text_command.h"
#include "shell/frame_area.h"

VR_REGISTER_ELEMENT(CVrGuiSwitch)
VR_REGISTER_ELEMENT(CVrGuiSwitchBtn)

namespace {

constexpr int32_t kSwitchEventOn = 0;
constexpr int32_t kSwitchEventOff = 1;
constexpr uint32_t kScrollingChildren = 9; // so many buttons do not fit any more

} // namespace

CVrGuiSwitch::CVrGuiSwitch() {
    className = "CVrGuiSwitch";
}

void CVrGuiSwitch::CreateContent(CVrStructureItem* newItem) {
    BindOutputPage(*this, newItem, ObjectType::Switch);
}

bool CVrGuiSwitch::IsScrollable() {
    return frameArea && frameArea->ChildCount() >= kScrollingChildren;
}

void CVrGuiSwitch::FillArea(CVrStructureItem* newItem) {
    FillOutputPage<CVrStructureItemSwitch>(*this, newItem, ObjectType::Switch, "CVrGuiSwitchBtn", EventUp);
}

void CVrGuiSwitch::UpdateFromItem(CVrStructureItem*) {
    ShowOutputStates<CVrStructureItemSwitch>(*this);
}

void CVrGuiSwitch::OnChildEvent(CVrGuiElement* child, int32_t childId, uint32_t childPressed) {
    auto* output = static_cast<CVrStructureItemSwitch*>(FindServedItem(static_cast<uint32_t>(childId)));
    if (childPressed == 0 || !output || !child)
        return;
    output->active = child->state == StateSelected;
    child->OnStateChanged();
    child->Invalidate();
    SendTextCommand(*output, output->active ? kSwitchEventOn : kSwitchEventOff);
}

CVrGuiSwitchBtn::CVrGuiSwitchBtn() {
    className = "CVrGuiSwitchBtn";
}

void CVrGuiSwitchBtn::OnStart() {
    CVrGuiFrameBtn::OnStart();
    eventMask = EventUp;
}

void CVrGuiSwitchBtn::OnClick(const CVrPoint&) {
    cornerHit = false;
    if (parent)
        parent->OnChildSelected(this, state == StateSelected ? StateNormal : StateSelected);
}
