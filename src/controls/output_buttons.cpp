#include "controls/output_buttons.h"

#include "gui/application.h"
#include "shell/frame_area.h"
#include "shell/frame_button.h"
#include "structure/item.h"
#include "structure/structure.h"

namespace {

constexpr uint32_t kDefaultIconSize = 64; // pixels, where the style gives none

} // namespace

void BindOutputPage(CVrGuiFrame& page, CVrStructureItem* item, int32_t wantedType) {
    CVrStructureItem* bound = item && item->type == wantedType ? item : nullptr;
    if (item && !bound)
        for (CVrStructureItem* child : item->children)
            if (!bound && child && child->type == wantedType)
                bound = child;
    page.item = bound;
    if (bound)
        bound->element = &page;
    page.flags |= CVrGuiElement::FlagPage;
}

CVrxStringU CategorySymbolName(const CVrStructureItem& item) {
    const CVrStructure& structure = *TheApplication()->Structure();
    CVrxStringU name;
    if (const CRoomCat* category = structure.categories.Lookup(item.category))
        structure.GetSymbolName(name, category->icon);
    return name;
}

CVrxStringU OutputSymbolName(const CVrStructureItem& item) {
    CVrxStringU name;
    if (item.icon != 0)
        TheApplication()->Structure()->GetSymbolName(name, item.icon);
    return name.IsEmpty() ? CategorySymbolName(item) : name;
}

void ShowOutputState(CVrGuiElement& button, bool active) {
    button.state = active ? CVrGuiElement::StateSelected : CVrGuiElement::StateNormal;
    button.OnStateChanged();
    button.Invalidate();
}

void AddOutputButton(CVrGuiFrame& page, CVrStructureItem& item, const char* buttonClass, uint32_t eventMask,
                     bool active) {
    auto* button = page.frameArea ? page.frameArea->CreateChild<CVrGuiFrameBtn>(buttonClass, false) : nullptr;
    if (!button)
        return;
    page.frameArea->buttonCount++;
    button->id = static_cast<int32_t>(item.uuid);
    button->text = item.name;
    button->listener = &page;
    button->layout = CVrGuiButton::LayoutStackedWrapped;
    button->eventMask = eventMask;
    const int32_t width = button->EvaluateStyle(StylePart::Symbol).width;
    button->iconSize = width > 0 ? static_cast<uint32_t>(width) : kDefaultIconSize;
    if (const CVrxStringU name = OutputSymbolName(item); !name.IsEmpty())
        button->icon.SetIconFromFile(name, button->iconSize);
    ShowOutputState(*button, active);
}
