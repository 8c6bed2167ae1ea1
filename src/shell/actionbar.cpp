#include "shell/actionbar.h"

#include "gui/application.h"
#include "structure/style_sheet.h"

VR_REGISTER_ELEMENT(CVrGuiActionbar)
VR_REGISTER_ELEMENT(CVrGuiActionbarBtn)

namespace {

constexpr uint32_t kDefaultIconSize = 64; // pixels, where the style gives none
constexpr uint32_t kPressBegan = 0, kPressEnded = 1;

bool ReportsTouchDown(int32_t id) {
    return id == 1 || id == 2;
}

bool TakesRoom(const CVrGuiElement& button) {
    return button.IsDrawable();
}

} // namespace

// ---------------------------------------------------------------------------------------------- the button

CVrGuiActionbarBtn::CVrGuiActionbarBtn() {
    type = ElementType::ActionbarBtn;
    className = "CVrGuiActionbarBtn";
}

void CVrGuiActionbarBtn::OnStart() {
    CVrGuiButton::OnStart();
    eventMask = EventAll;
}

void CVrGuiActionbarBtn::ShowState(uint32_t newState) {
    state = newState;
    OnStateChanged();
    Invalidate();
}

void CVrGuiActionbarBtn::SetRestState(uint32_t newState) {
    restState = newState;
    ShowState(newState);
}

void CVrGuiActionbarBtn::OnTouchDown(const CVrPoint&) {
    TheApplication()->SetCapture(this);
    if (IsLatching())
        return;
    ShowState(StateSelected);
    if (IsHeldKind() && owner && ReportsTouchDown(id))
        owner->OnChildEvent(this, id, kPressBegan);
}

void CVrGuiActionbarBtn::OnTouchUp(const CVrPoint&) {
    if (pressed)
        Release();
}

bool CVrGuiActionbarBtn::OnPressCancelled() {
    if (state == StateSelected && !IsLatching())
        Release();
    else
        LetGo();
    return true;
}

void CVrGuiActionbarBtn::LetGo() {
    if (TheApplication()->Capture() == this)
        TheApplication()->SetCapture(nullptr);
}

void CVrGuiActionbarBtn::Release() {
    LetGo();
    CVrElementRef<> self(this);
    if (owner)
        owner->OnChildEvent(this, id, kPressEnded);
    if (self && !IsLatching())
        ShowState(StateNormal);
}

// ---------------------------------------------------------------------------------------------- the bar

CVrGuiActionbar::CVrGuiActionbar() {
    type = ElementType::Actionbar;
    className = "CVrGuiActionbar";
}

CVrGuiActionbarBtn* CVrGuiActionbar::Button(uint32_t index) const {
    return static_cast<CVrGuiActionbarBtn*>(Child(index));
}

void CVrGuiActionbar::CreateContent(CVrStructureItem* newItem) {
    CVrGuiElement::CreateContent(newItem);
    const int32_t count = GetStyleValue(StyleValue::ActionbarMaxButtons);
    for (int32_t i = 0; i < count; i++) {
        auto* button = CreateChild<CVrGuiActionbarBtn>("CVrGuiActionbarBtn", false);
        if (!button)
            return;
        button->layout = CVrGuiButton::LayoutIcon;
        const int32_t width = button->EvaluateStyle(StylePart::Symbol).width;
        button->iconSize = width > 0 ? static_cast<uint32_t>(width) : kDefaultIconSize;
    }
}

bool CVrGuiActionbar::ApplyLayout() {
    const int32_t y = rect.y;
    CVrGuiElement::ApplyLayout();
    SetY(y);
    if (ChildCount() == 0 || rect.width < 1)
        return true;
    int32_t shown = 0;
    ForEachChild([&shown](const CVrGuiElement& button) { shown += TakesRoom(button); });
    if (shown == 0)
        return false;
    const int32_t gap = Child(0)->style ? Child(0)->style->element.gap : 0;
    const int32_t width = (rect.width - (shown - 1) * gap) / shown;
    const CVrGuiElement* last = Child(ChildCount() - 1);
    int32_t x = 0;
    ForEachChild([&](CVrGuiElement& button) {
        if (!TakesRoom(button))
            return;
        button.SetX(&button == last ? rect.width - width : x);
        button.SetWidth(width);
        button.canvasSize = CVrSize(width, button.rect.height);
        x += width + gap;
        if (button.HasOwnStore())
            button.InitMem(button.rect);
        else
            button.FreeMem();
    });
    return false;
}

void CVrGuiActionbar::OnChildSelected(CVrGuiElement* child, uint32_t) {
    ForEachChild([child](CVrGuiElement& button) {
        button.state = &button == child ? StateSelected : StateNormal;
        button.OnStateChanged();
    });
}

void CVrGuiActionbar::SetButton(uint32_t index, CVrGuiElement* buttonOwner, int32_t buttonId,
                                const CVrxStringU& symbolName, ActionKind kind) {
    CVrGuiActionbarBtn* button = Button(index);
    if (!button)
        return;
    button->LoadColors();
    button->iconName = symbolName;
    button->iconStatic = true;
    button->ReloadIcon();
    button->text.Clear();
    button->layout = CVrGuiButton::LayoutIcon;
    button->owner = buttonOwner;
    button->id = buttonId;
    button->actionMode = static_cast<uint32_t>(kind);
    button->OnActionModeChanged();
    if (button->IsHeldKind()) {
        button->flags |= FlagOwnStore;
    } else {
        button->flags &= ~FlagOwnStore;
        button->FreeMem();
    }
    button->SetHidden(false);
    button->SetRestState(StateNormal);
}

void CVrGuiActionbar::ResetButtons() {
    for (uint32_t i = 0; i < ChildCount(); i++)
        if (CVrGuiActionbarBtn* button = Button(i); button && button->IsLatching())
            button->ShowState(button->restState);
}
