#include "shell/menu_button.h"

#include "foundation/class_factory.h"
#include "foundation/log.h"
#include "gui/application.h"
#include "shell/frame.h"
#include "shell/main_window.h"
#include "shell/menu.h"

VR_REGISTER_ELEMENT(CVrGuiMenuBtn)

namespace {

constexpr uint32_t kDefaultIconSize = 64; // pixels, where the style gives none

} // namespace

CVrGuiMenuBtn::CVrGuiMenuBtn() {
    type = ElementType::MenuBtn;
    className = "CVrGuiMenuBtn";
}

void CVrGuiMenuBtn::OnStart() {
    CVrGuiButton::OnStart();
    eventMask = EventUp;
}

void CVrGuiMenuBtn::CreateContent(CVrStructureItem* newItem) {
    CVrGuiButton::CreateContent(newItem);
    layout = LayoutIcon;
    GetItemIcon(iconName, newItem);
    const int32_t width = EvaluateStyle(StylePart::Symbol).width;
    iconSize = width > 0 ? static_cast<uint32_t>(width) : kDefaultIconSize;
    ReloadIcon();
}

void CVrGuiMenuBtn::OnTouchUp(const CVrPoint& point) {
    if (pressed)
        OnClick(point);
}

CVrGuiIcon* CVrGuiMenuBtn::GetIconForSize(uint32_t size) {
    if (state == StateSelected)
        if (CVrGuiIcon* filled =
                CVrGuiIcon::SetMenuButtonSelectedIconFromFile(*this, selectedIcon, selectedIconOther, size))
            return filled;
    return CVrGuiButton::GetIconForSize(size);
}

void CVrGuiMenuBtn::OnClick(const CVrPoint&) {
    CVrGuiMainWin* root = MainWindow();
    if (!linkedElement || !root)
        return;
    if (state == StateSelected) {
        linkedElement.As<CVrGuiFrame>()->OnMenuReselect();
        return;
    }
    root->ResetActionbarButtons();
    root->ShowPage(linkedElement);
    if (parent)
        parent->OnChildSelected(this, StateSelected);
}
