#include "controls/push_button.h"

#include "controls/output_buttons.h"
#include "controls/push_button_item.h"
#include "controls/text_command.h"

VR_REGISTER_ELEMENT(CVrGuiPushButton)
VR_REGISTER_ELEMENT(CVrGuiPushButtonBtn)

namespace {

constexpr int32_t kPushButtonEventPress = 0;

} // namespace

CVrGuiPushButton::CVrGuiPushButton() {
    className = "CVrGuiPushButton";
}

void CVrGuiPushButton::CreateContent(CVrStructureItem* newItem) {
    BindOutputPage(*this, newItem, ObjectType::PushButton);
}

void CVrGuiPushButton::FillArea(CVrStructureItem* newItem) {
    FillOutputPage<CVrStructureItemPushButton>(*this, newItem, ObjectType::PushButton, "CVrGuiPushButtonBtn",
                                               EventAll);
}

void CVrGuiPushButton::RefreshView() {
    ShowOutputStates<CVrStructureItemPushButton>(*this);
}

void CVrGuiPushButton::OnChildEvent(CVrGuiElement* child, int32_t childId, uint32_t childPressed) {
    const CVrStructureItem* output = FindServedItem(static_cast<uint32_t>(childId));
    if (!output)
        return;
    if (child) {
        child->state = childPressed == 1 ? StateNormal : StateSelected;
        child->OnStateChanged();
        child->Invalidate();
    }
    if (childPressed == 0)
        SendTextCommand(*output, kPushButtonEventPress);
}

CVrGuiPushButtonBtn::CVrGuiPushButtonBtn() {
    className = "CVrGuiPushButtonBtn";
}

void CVrGuiPushButtonBtn::OnStart() {
    CVrGuiFrameBtn::OnStart();
    eventMask = EventAll;
}

void CVrGuiPushButtonBtn::ShowAndReport(uint32_t newState, uint32_t reported) {
    state = newState;
    OnStateChanged();
    Invalidate();
    if (listener)
        listener->OnChildEvent(this, id, reported);
}

void CVrGuiPushButtonBtn::OnTouchDown(const CVrPoint&) {
    ShowAndReport(StateSelected, 0);
}

void CVrGuiPushButtonBtn::OnTouchUp(const CVrPoint& point) {
    CVrGuiElement::OnTouchUp(point);
    ShowAndReport(StateNormal, 1);
}

void CVrGuiPushButtonBtn::ReleasePress() {
    if (state == StateSelected)
        ShowAndReport(StateNormal, 1);
}

bool CVrGuiPushButtonBtn::OnPressCancelled() {
    ReleasePress();
    return true;
}
