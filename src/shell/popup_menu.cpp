#include "shell/popup_menu.h"

#include "shell/actionbar.h"
#include "shell/main_window.h"
#include "shell/popup_slider.h"
#include "shell/tree_list_button.h"
#include "structure/style_sheet.h"

#include <algorithm>
#include <cstdlib>

VR_REGISTER_ELEMENT(CVrGuiPopupMenu)

namespace {

constexpr int32_t kTableWidth = 478, kTableHeight = 370; // of the frame around the table of values
constexpr uint32_t kClimateRows = 3;
constexpr int32_t kVolumeOff = 10011, kVolumeLow = 10012, kVolumeHigh = 10013; // static symbols

int32_t NotNegative(int32_t value) {
    return std::max(value, 0);
}

CVrxStringU TemperatureText(int32_t tenths) {
    const int64_t size = std::abs(int64_t{tenths});
    return CVrxStringU::Formatted("%s%d.%d°", tenths < 0 ? "-" : "", static_cast<int32_t>(size / 10),
                                  static_cast<int32_t>(size % 10));
}

} // namespace

CVrGuiPopupMenu::CVrGuiPopupMenu() : CVrGuiScrollArea(ScrollAxis::Vertical) {
    type = ElementType::PopupMenu;
}

void CVrGuiPopupMenu::OnStart() {
    CVrGuiScrollArea::OnStart();
    CVrGuiElement::ApplyLayout();
}

// ---------------------------------------------------------------------------------------------- layout

CVrGuiPopupMenu::Margins CVrGuiPopupMenu::MarginsOf(const CVrGuiElement& element) {
    Margins margins;
    if (!element.style)
        return margins;
    const CStyle& layout = element.style->element;
    return {layout.x, layout.y, layout.RightDistance(), layout.BottomDistance()};
}

// Where the frame stands in its parent. Beside the action bar the wide modes keep to the bar's edges.
CVrGuiPopupMenu::Span CVrGuiPopupMenu::FrameSpan() const {
    const CVrRect styled = parent->EvaluateStyle(StylePart::Element);
    if (popupMode == PopupMode::List || !parent->parent)
        return {styled.x, styled.width};
    const CVrGuiMainWin* root = MainWindow();
    const CVrGuiElement* bar = root ? root->actionbar : nullptr;
    const Margins margins = MarginsOf(*parent);
    const int32_t room = parent->parent->rect.width;
    Span limits{margins.left, NotNegative(room - margins.left - margins.right)};
    if (bar && bar->parent == parent->parent && bar->rect.width > 0)
        limits = {bar->rect.x, bar->rect.width};
    else if (popupMode == PopupMode::Values)
        limits.width = room - margins.right - margins.left;
    if (popupMode == PopupMode::Volumes)
        return limits;
    return {std::max(limits.x + limits.width - kTableWidth, limits.x), kTableWidth};
}

void CVrGuiPopupMenu::PlaceFrame() {
    const Span span = FrameSpan();
    if (parent->rect.x != span.x || parent->rect.width != span.width)
        parent->SetRect(span.x, parent->rect.y, span.width, parent->rect.height);
}

void CVrGuiPopupMenu::SizeFrame(int32_t width, int32_t height, int32_t bottom) {
    parent->SetRect(parent->rect.x, bottom - height, width, height);
    parent->canvasSize = CVrSize(width, height);
    parent->InitMem(parent->rect);
}

bool CVrGuiPopupMenu::ApplyLayout() {
    if (!parent)
        return false;
    PlaceFrame();
    const int32_t bottom = parent->rect.y + parent->rect.height;
    CVrGuiScrollArea::ApplyLayout();
    if (ChildCount() == 0)
        return false;
    if (popupMode == PopupMode::Values)
        LayOutTable(bottom);
    else
        LayOutRows(bottom);
    return false;
}

// The rows share the height; the last one gets what the division leaves.
void CVrGuiPopupMenu::LayOutTable(int32_t bottom) {
    const Margins margins = MarginsOf(*this);
    SetSize(NotNegative(kTableWidth - margins.left - margins.right),
            NotNegative(kTableHeight - margins.top - margins.bottom));
    canvasSize = rect.Size();
    const auto count = static_cast<int32_t>(ChildCount());
    const int32_t share = rect.height / count;
    int32_t y = 0;
    for (int32_t i = 0; i < count; i++, y += share)
        if (CVrGuiElement* row = Child(static_cast<uint32_t>(i)))
            row->SetRect(CVrRect(0, y, rect.width, i == count - 1 ? rect.height - y : share));
    SizeFrame(kTableWidth, kTableHeight, bottom);
    SetFixed();
}

// Returns where the rows end; `cut` becomes the middle of the first row that does not show whole.
int32_t CVrGuiPopupMenu::PlaceRows(int32_t& cut) {
    int32_t y = Child(0)->EvaluateStyle(StylePart::Element).y;
    int32_t index = 0;
    ForEachChild([&](CVrGuiElement& row) {
        if (index == visibleRows)
            cut = y + rowHeight / 2;
        if (index > 0)
            y += rowGap;
        if (index == 1 && popupMode == PopupMode::Volumes)
            y += rowGap; // the master row stands apart
        row.SetRect(
            row.EvaluateStyle(StylePart::Element).MovedTo(row.EvaluateStyle(StylePart::Element).x, y));
        y += rowHeight;
        index++;
    });
    return y;
}

void CVrGuiPopupMenu::LayOutRows(int32_t bottom) {
    const CVrGuiElement& first = *Child(0);
    visibleRows =
        std::min(static_cast<int32_t>(ChildCount()), GetStyleValue(StyleValue::PopupMenuMaxVisible));
    rowHeight = first.EvaluateStyle(StylePart::Element).height;
    rowGap = first.style ? first.style->element.gap : 0;
    int32_t view = -1;
    const int32_t end = PlaceRows(view);
    if (view < 0)
        view = end;
    SetHeight(view);
    canvasSize = rect.Size();
    const Margins margins = MarginsOf(*this);
    SizeFrame(parent->rect.width, view + margins.top + margins.bottom, bottom);
    if (end <= view) {
        SetFixed();
        return;
    }
    SetScrolling();
    SizeStore(CVrSize(rect.width, end));
    SetScrollOffset(CVrPoint(offsetX, offsetY));
}

// ---------------------------------------------------------------------------------------------- painting

// Below the master row, in the middle of the double gap.
void CVrGuiPopupMenu::DrawContent() {
    if (popupMode != PopupMode::Volumes || visibleRows < 2 || ChildCount() < 2)
        return;
    CVrPoint origin;
    CVrGuiElement* target = GetRenderTarget(origin, false);
    if (!target)
        return;
    const CVrRect& master = Child(0)->rect;
    const int32_t middle = (master.Bottom() + Child(1)->rect.y) / 2;
    target->FillRect(CVrRect(master.x, middle - 1, master.width, 2).Moved(origin),
                     parent->colors[ColorFrameLine]);
}

// ---------------------------------------------------------------------------------------------- rows

bool CVrGuiPopupMenu::OnPressCancelled() {
    CVrElementRef<> self(this);
    if (heldRow)
        heldRow->OnPressCancelled();
    if (self)
        heldRow = nullptr;
    return true;
}

void CVrGuiPopupMenu::SetHighlightedRow(CVrGuiElement* row) {
    if (highlightedRow == row)
        return;
    highlightedRow = row;
    ForEachChild([](CVrGuiElement& child) { child.Invalidate(); });
    Invalidate();
    if (parent)
        parent->Invalidate();
}

void CVrGuiPopupMenu::BeginRows(PopupMode mode) {
    highlightedRow = nullptr;
    heldRow = nullptr;
    popupMode = mode;
    eventMask = EventAll;
}

void CVrGuiPopupMenu::FinishRows() {
    ApplyLayout();
    if (!parent)
        return;
    parent->SetUpdate(true, true);
    parent->ReloadColors();
}

CVrGuiPopupMenuSlider* CVrGuiPopupMenu::AddSliderRow(int32_t rowId, const CVrxStringU& title) {
    auto* row = CreateChild<CVrGuiPopupMenuSlider>("CVrGuiPopupMenuSlider", false);
    if (!row)
        return nullptr;
    row->id = rowId;
    row->text = title;
    row->layout = CVrGuiButton::LayoutIconLeft | CVrGuiButton::LayoutTextLeft;
    row->LoadSliderIcons(kVolumeOff, kVolumeLow, kVolumeHigh);
    if (rowId != kMasterRowId)
        row->AllowMute();
    return row;
}

CVrGuiPopupMenuSlider* CVrGuiPopupMenu::FindSliderRow(int32_t rowId) const {
    for (uint32_t i = 0; i < ChildCount(); i++)
        if (CVrGuiElement* row = Child(i);
            row && row->type == ElementType::PopupMenuSlider && row->id == rowId)
            return static_cast<CVrGuiPopupMenuSlider*>(row);
    return nullptr;
}

bool CVrGuiPopupMenu::HasVolumeRows(const CVrVolumeRow* rows, uint32_t count) const {
    if (popupMode != PopupMode::Volumes || ChildCount() != count + 1)
        return false;
    for (uint32_t i = 0; i < count; i++)
        if (Child(i + 1)->id != rows[i].id)
            return false;
    return Child(0)->id == kMasterRowId;
}

void CVrGuiPopupMenu::ShowVolumeRows(CVrGuiElement* control, const CVrVolumeRow* rows, uint32_t count) {
    const bool isKept = HasVolumeRows(rows, count);
    BeginRows(PopupMode::Volumes);
    if (!isKept) {
        DeleteChildren();
        AddSliderRow(kMasterRowId, "Master");
        for (uint32_t i = 0; i < count; i++)
            AddSliderRow(rows[i].id, rows[i].name);
    }
    ForEachChild([control](CVrGuiElement& row) {
        row.eventMask = EventAll;
        row.listener = control;
    });
    FinishRows();
}

// ---------------------------------------------------------------------------------------------- the table

CVrGuiTreeListBtn* CVrGuiPopupMenu::AddValueRow(const CVrxStringU& title, const CVrxStringU& value) {
    if (!CreateGuiChild("CVrGuiTreeListBtn", false))
        return nullptr;
    return SetValueRow(ChildCount() - 1, title, value);
}

CVrGuiTreeListBtn* CVrGuiPopupMenu::SetValueRow(uint32_t index, const CVrxStringU& title,
                                                const CVrxStringU& value) {
    CVrGuiElement* child = Child(index);
    if (!child || child->type != ElementType::TreeListBtn)
        return nullptr;
    auto* row = static_cast<CVrGuiTreeListBtn*>(child);
    row->text = title;
    row->id = 0;
    row->fontIndex = FontIndex::Smaller;
    row->valueFont = FontIndex::SmallerBold;
    row->SetStatusRow();
    row->SetValueText(value);
    return row;
}

bool CVrGuiPopupMenu::HasValueRows() const {
    if (ChildCount() != kClimateRows)
        return false;
    for (uint32_t i = 0; i < kClimateRows; i++)
        if (Child(i)->type != ElementType::TreeListBtn)
            return false;
    return true;
}

void CVrGuiPopupMenu::ShowValueRow(uint32_t index, const CVrxStringU& title, const CVrxStringU& value) {
    if (index < ChildCount())
        SetValueRow(index, title, value);
    else
        AddValueRow(title, value);
}

void CVrGuiPopupMenu::ShowValueRows(uint32_t co2, uint32_t humidity, int32_t temperature) {
    BeginRows(PopupMode::Values);
    if (!HasValueRows())
        DeleteChildren();
    ShowValueRow(0, "Current Temperature", TemperatureText(temperature));
    ShowValueRow(1, "Humidity", CVrxStringU::Formatted("%u%%", humidity));
    ShowValueRow(2, "Co2", CVrxStringU::Formatted("%uppm", co2));
    FinishRows();
}
