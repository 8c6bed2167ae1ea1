#include "shell/popup_frame.h"

#include "shell/main_window.h"
#include "shell/popup_menu.h"
#include "shell/popup_slider.h"

#include <algorithm>

VR_REGISTER_ELEMENT(CVrGuiPopupFrame)
VR_REGISTER_ELEMENT(CVrGuiPopupSliderFrame)

namespace {

constexpr int32_t kRim = 3;          // pixels
constexpr int32_t kSliderInset = 10; // of the slider in its frame, rim included

// Paints the panel: the rim's colour over the whole of it, the panel's own within the rim.
void DrawPanel(CVrGuiElement& panel, uint32_t rimColor) {
    CVrPoint origin;
    CVrGuiElement* target = panel.GetRenderTarget(origin, false);
    if (!target)
        return;
    const CVrRect outer(origin, panel.rect.Size());
    const int32_t radius = panel.CornerRadius();
    target->FillRoundRect(outer, radius, CornerAll, rimColor,
                          panel.HasOwnStore() ? CornerAlpha::Write : CornerAlpha::Blend);
    target->FillRoundRect(outer.Shrunken(kRim), std::max(radius - 1, 0), CornerAll, panel.colors[0]);
}

// What lay under the panel, darkened or not, has to be painted again.
void RepaintBehind() {
    if (CVrGuiMainWin* root = MainWindow())
        root->RepaintAll();
}

uint32_t ColorOrNone(const CVrGuiElement& element, uint32_t slot) {
    return element.colorIndex[slot] != 0 ? element.colors[slot] : kUnpainted;
}

} // namespace

// ---- The list's panel ----

CVrGuiPopupFrame::CVrGuiPopupFrame() {
    type = ElementType::PopupFrame;
}

void CVrGuiPopupFrame::CreateContent(CVrStructureItem* newItem) {
    CVrGuiElement::CreateContent(newItem);
    popupMenu = CreateChild<CVrGuiPopupMenu>("CVrGuiPopupMenu", true);
}

void CVrGuiPopupFrame::DrawContent() {
    DrawPanel(*this, ColorOrNone(*this, ColorFrameLine));
}

void CVrGuiPopupFrame::OnVisibilityChanged(bool) {
    RepaintBehind();
}

void CVrGuiPopupFrame::OnPopupResult(bool accepted) {
    CVrElementRef<> page(parent);
    if (!accepted) {
        SetHidden(true);
        Invalidate();
    }
    if (page)
        page->OnPopupResult(accepted);
}

// ---- The slider's panel ----

CVrGuiPopupSliderFrame::CVrGuiPopupSliderFrame() {
    type = ElementType::PopupSliderFrame;
}

void CVrGuiPopupSliderFrame::CreateContent(CVrStructureItem* newItem) {
    CVrGuiElement::CreateContent(newItem);
    eventMask = 0;
    popupSlider = CreateChild<CVrGuiPopupSlider>("CVrGuiPopupSlider", true);
    if (!popupSlider)
        return;
    popupSlider->layout = CVrGuiButton::LayoutTextLeft;
    popupSlider->layoutLocked = true; // this frame places it
}

bool CVrGuiPopupSliderFrame::ApplyLayout() {
    const int32_t y = rect.y;
    CVrGuiElement::ApplyLayout();
    SetY(y);
    if (popupSlider) {
        popupSlider->SetRect(CVrRect(kSliderInset, kSliderInset, rect.width - 2 * kSliderInset,
                                     rect.height - 2 * kSliderInset));
        popupSlider->InitMem(popupSlider->rect);
        popupSlider->ApplyLayout();
    }
    return false;
}

void CVrGuiPopupSliderFrame::DrawContent() {
    DrawPanel(*this, popupSlider ? ColorOrNone(*popupSlider, ColorBackground) : kUnpainted);
}

void CVrGuiPopupSliderFrame::OnVisibilityChanged(bool hidden) {
    if (popupSlider)
        popupSlider->OnVisibilityChanged(hidden);
    if (!hidden) {
        ApplyLayout();
        Invalidate();
    }
    RepaintBehind();
}
