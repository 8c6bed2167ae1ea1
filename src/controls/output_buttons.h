// What the pages of switches and push buttons share: both show one large button for each output that they serve, and
// the button's state is the output's `active`.
#pragma once

#include "shell/frame.h"
#include "shell/frame_area.h"
#include "shell/frame_button.h"
#include "structure/item.h"

// Binds the page to `item`, or to the first child of `item` that has the wanted type; without one the page has no item.
void BindOutputPage(CVrGuiFrame& page, CVrStructureItem* item, int32_t wantedType);

// File name of the symbol of an output: its own, else that of its category. Empty if it has neither.
CVrxStringU OutputSymbolName(const CVrStructureItem& item);

// File name of the symbol of an item's category; empty if it has none.
CVrxStringU CategorySymbolName(const CVrStructureItem& item);

// Adds a button of `buttonClass` for `item` to the page's area: titled, with symbol and state.
void AddOutputButton(CVrGuiFrame& page, CVrStructureItem& item, const char* buttonClass, uint32_t eventMask,
                     bool active);

// Shows an output's state on its button.
void ShowOutputState(CVrGuiElement& button, bool active);

// Builds the page: one button for each served item of the wanted type.
template <typename Item>
void FillOutputPage(CVrGuiFrame& page, CVrStructureItem* newItem, int32_t wantedType, const char* buttonClass,
                    uint32_t eventMask) {
    if (!newItem && !page.item)
        return;
    page.CVrGuiFrame::FillArea(newItem);
    for (int32_t i = 0; i < page.ServedCount(); i++) {
        CVrStructureItem* served = page.ServedItem(i);
        if (served && served->type == wantedType)
            AddOutputButton(page, *served, buttonClass, eventMask, static_cast<Item*>(served)->active);
    }
    page.ApplyLayout();
    page.ReloadAreaColors();
}

// Brings every button to the state of its item.
template <typename Item>
void ShowOutputStates(CVrGuiFrame& page) {
    if (!page.frameArea)
        return;
    page.frameArea->ForEachChild([&page](CVrGuiElement& button) {
        if (const CVrStructureItem* served = page.FindServedItem(static_cast<uint32_t>(button.id)))
            ShowOutputState(button, static_cast<const Item*>(served)->active);
    });
}
