#include "shell/popup_menu_button.h"

#include "foundation/clock.h"
#include "shell/popup_menu.h"

#include <algorithm>
#include <utility>

VR_REGISTER_ELEMENT(CVrGuiPopupMenuBtn)
VR_REGISTER_ELEMENT(CVrGuiPopupMenuTextBtn)

namespace {

constexpr int32_t kFullProgress = 100;
constexpr uint32_t kEveryPass = 1; // ms: the timer fires on each pass of the main loop

CVrGuiPopupMenu* MenuOf(const CVrGuiElement& row) {
    return row.parent && row.parent->type == ElementType::PopupMenu
               ? static_cast<CVrGuiPopupMenu*>(row.parent)
               : nullptr;
}

} // namespace

// ---- One of several ----

CVrGuiPopupMenuBtn::CVrGuiPopupMenuBtn() {
    type = ElementType::PopupMenuBtn;
}

void CVrGuiPopupMenuBtn::OnStart() {
    CVrGuiButton::OnStart();
    eventMask = EventAll;
}

void CVrGuiPopupMenuBtn::OnTouchUp(const CVrPoint& point) {
    if (pressed)
        OnClick(point);
}

void CVrGuiPopupMenuBtn::OnClick(const CVrPoint&) {
    if (parent)
        parent->ForEachChild([this](CVrGuiElement& row) {
            if (row.type != ElementType::PopupMenuBtn)
                return;
            row.state = &row == this ? StateSelected : StateNormal;
            row.OnStateChanged();
            row.Invalidate();
        });
    if (listener)
        listener->OnChildEvent(this, id, 1);
}

// ---- Hold to confirm ----

CVrGuiPopupMenuTextBtn::CVrGuiPopupMenuTextBtn() = default;

void CVrGuiPopupMenuTextBtn::Highlight(bool on) {
    if (CVrGuiPopupMenu* menu = MenuOf(*this))
        menu->SetHighlightedRow(on ? this : nullptr);
}

void CVrGuiPopupMenuTextBtn::OnTouchDown(const CVrPoint&) {
    holdStart = TickMs();
    holdProgress = 0;
    holding = true;
    holdDone = false;
    Highlight(true);
    SetTimer(kEveryPass, true);
}

bool CVrGuiPopupMenuTextBtn::OnTimer(uint64_t now) {
    if (!holding)
        return false;
    if (!IsVisibleInTree()) {
        OnPressCancelled();
        return false;
    }
    const uint64_t elapsed = now > holdStart ? now - holdStart : 0;
    const auto progress =
        static_cast<int32_t>(std::min<uint64_t>(elapsed * kFullProgress / kHoldMs, kFullProgress));
    if (std::exchange(holdProgress, progress) != progress)
        Invalidate();
    if (elapsed >= kHoldMs)
        FinishHold();
    return true;
}

void CVrGuiPopupMenuTextBtn::FinishHold() {
    StopTimer();
    holding = false;
    holdDone = true;
    holdProgress = kFullProgress;
    Highlight(false);
    Invalidate();
    OnClick(CVrPoint(0, 0));
}

void CVrGuiPopupMenuTextBtn::OnTouchUp(const CVrPoint&) {
    if (!holdDone)
        OnPressCancelled();
}

bool CVrGuiPopupMenuTextBtn::OnPressCancelled() {
    StopTimer();
    if (!holding && !holdDone && holdProgress == 0)
        return true;
    holdProgress = 0;
    holding = holdDone = false;
    Highlight(false);
    Invalidate();
    return true;
}

void CVrGuiPopupMenuTextBtn::OnClick(const CVrPoint&) {
    if (listener)
        listener->OnChildEvent(this, id, 1);
}

void CVrGuiPopupMenuTextBtn::DrawProgress() {
    CVrPoint origin;
    CVrGuiElement* target = holdProgress > 0 && IsDrawable() ? GetRenderTarget(origin, false) : nullptr;
    if (!target)
        return;
    const CVrSize bar(static_cast<int32_t>(int64_t{rect.width} * holdProgress / kFullProgress), rect.height);
    target->FillRoundRect(CVrRect(origin, bar), CornerRadius(), CornerAll, colors[ColorBackgroundDisabled]);
}

// While another row is held, this one stands back.
void CVrGuiPopupMenuTextBtn::DrawContent() {
    DrawProgress();
    const CVrGuiPopupMenu* menu = MenuOf(*this);
    const bool standsBack = menu && menu->highlightedRow && menu->highlightedRow != this;
    uint32_t& shownColor = colors[ColorText + StateIndex()];
    const uint32_t usualColor = shownColor;
    if (standsBack)
        shownColor = colors[ColorTextDisabled];
    CVrGuiPopupMenuBtn::DrawContent();
    shownColor = usualColor;
}
