// What an element takes from the style sheet (its row, its place, its colours) and from the loaded house
// (symbols).

#include "gui/element.h"

#include "gui/application.h"
#include "structure/structure.h"

namespace {

const CVrStructure* TheStructure() {
    const CVrGuiApplication* application = TheApplication();
    return application ? application->Structure() : nullptr;
}

constexpr int32_t kNoSymbol = -1;

// The static symbol of a shading type by its kind; kNoSymbol for a kind without one.
int32_t ShadingSymbol(int32_t kind) {
    switch (kind) {
    case 2:
        return 11009; // a curtain of two halves
    case 4:
        return 11015; // a curtain that opens to the left
    case 5:
        return 11012; // a curtain that opens to the right
    case 6:
        return 11018; // an awning
    default:
        return kNoSymbol;
    }
}

} // namespace

// ---- Free operations ----

int32_t GetStyleValue(uint32_t index) {
    const CVrStructure* structure = TheStructure();
    return structure ? structure->styles.Value(index) : 0;
}

uint32_t ClassColor(int32_t type, uint32_t slot, uint32_t fallback) {
    const CVrStructure* structure = TheStructure();
    const CVrClassStyle* row = structure ? structure->styles.Row(type) : nullptr;
    return row && slot < CVrClassStyle::kColors ? structure->styles.Color(row->colorIndex[slot]) : fallback;
}

CVrxStringU StaticSymbolName(int32_t number) {
    CVrxStringU name;
    if (const CVrStructure* structure = TheStructure())
        structure->GetStaticSymbolName(name, number);
    return name;
}

// ---- Binding ----

CVrRect CVrGuiElement::EvaluateStyle(StylePart part) const {
    if (!style)
        return {};
    const CVrSize reference = part == StylePart::Element && parent ? parent->rect.Size() : rect.Size();
    const CVrSize* known = parent ? &reference : nullptr;
    switch (part) {
    case StylePart::Symbol:
        return style->symbol.Evaluate(known);
    case StylePart::Text:
        return style->text.Evaluate(known);
    default:
        return style->element.Evaluate(known);
    }
}

// Row and start flags, and the place in the parent.
void CVrGuiElement::BindStyle() {
    const CVrStructure* structure = TheStructure();
    style = structure ? structure->styles.Row(type) : nullptr;
    if (!style)
        return;
    styleName = style->className;
    flags = style->startFlags;
    rect = EvaluateStyle(StylePart::Element);
    canvasSize = rect.Size();
}

bool CVrGuiElement::ApplyLayout() {
    if (!style || layoutLocked)
        return true;
    SetRect(EvaluateStyle(StylePart::Element));
    canvasSize = rect.Size();
    return true;
}

void CVrGuiElement::ApplyLayoutTree() {
    if (ApplyLayout())
        ForEachChild([](CVrGuiElement& child) { child.ApplyLayout(); });
}

// ---- Colours ----

void CVrGuiElement::LoadColors() {
    const CVrStructure* structure = TheStructure();
    const CVrClassStyle* row = style ? style : structure ? structure->styles.Row(type) : nullptr;
    if (!row)
        return;
    static_assert(ColorSlotCount == CVrClassStyle::kColors);
    for (uint32_t slot = 0; slot < ColorSlotCount; slot++) {
        const uint32_t color = structure ? structure->styles.Color(row->colorIndex[slot]) : 0;
        if (color != colors[slot] || row->colorIndex[slot] != colorIndex[slot])
            MarkContentChanged();
        colorIndex[slot] = row->colorIndex[slot];
        colors[slot] = color;
    }
}

void CVrGuiElement::ReloadColors() {
    LoadColors();
    ForEachChild([](CVrGuiElement& child) { child.ReloadColors(); });
    OnColorsChanged();
}

// ---- Symbols ----

// Order of choice: the item's own symbol, the one of its kind of shading, that of its category, the default.
void CVrGuiElement::GetItemIcon(CVrxStringU& out, const CVrStructureItem* ofItem) {
    const CVrStructure* structure = TheStructure();
    iconStatic = true;
    out.Clear();
    if (!structure)
        return;
    if (ofItem && ofItem->icon != 0) {
        iconStatic = false;
        structure->GetSymbolName(out, ofItem->icon);
        return;
    }
    const int32_t shading =
        ofItem && ObjectType::IsShading(ofItem->type) ? ShadingSymbol(ofItem->kind) : kNoSymbol;
    const CRoomCat* category =
        ofItem && ofItem->category != 0 ? structure->categories.Lookup(ofItem->category) : nullptr;
    if (shading != kNoSymbol) {
        structure->GetStaticSymbolName(out, shading);
    } else if (category && category->icon != 0) {
        iconStatic = false;
        structure->GetSymbolName(out, category->icon);
    } else {
        structure->GetStaticSymbolName(out, CVrStructure::kDefaultSymbol);
    }
}
