#include "shell/frame_area.h"

#include "foundation/class_factory.h"
#include "shell/actionbar.h"
#include "shell/frame.h"
#include "shell/main_window.h"
#include "shell/popup_frame.h"
#include "shell/tree_list_button.h"
#include "structure/object_types.h"
#include "structure/style_sheet.h"

#include <algorithm>

VR_REGISTER_ELEMENT(CVrGuiFrameArea)

namespace {

// From ten buttons on, this many columns stand in each further row.
constexpr int32_t kLaterRowColumns = 4;
// From this many children on the list is taken to be longer than the area: two and a half rows show, and the
// half row tells that the list goes on.
constexpr int32_t kOverflowChildren = 9;

struct RowTable {
    int32_t columns[3];
    int32_t rows;
};

// Columns of the first rows and rows that share the height, by the number of buttons 0 to 9.
constexpr RowTable kRowTables[] = {
    {{0, 0, 0}, 0}, {{1, 0, 0}, 1}, {{2, 0, 0}, 1}, {{3, 0, 0}, 1}, {{2, 2, 0}, 2},
    {{2, 3, 0}, 2}, {{3, 3, 0}, 2}, {{3, 4, 0}, 2}, {{4, 4, 0}, 2}, {{3, 3, 3}, 3},
};
constexpr int32_t kLargestTable = 9;

// Shade elements: pixels between them and around, heights of a row of a short and of a long list, and how many stand
// side by side where they are no list.
constexpr int32_t kShadeGap = 10;
constexpr int32_t kShadeRow = 155, kLongListRow = 140;
constexpr int32_t kLongList = 4;
constexpr int32_t kShadeColumns = 2;

int32_t NotNegative(int32_t value) {
    return std::max(value, 0);
}

} // namespace

CVrGuiFrameArea::CVrGuiFrameArea() : CVrGuiScrollArea(ScrollAxis::Vertical) {
    type = ElementType::FrameArea;
    className = "CVrGuiFrameArea";
}

CVrGuiFrameArea::~CVrGuiFrameArea() {
    tween.Stop();
}

CVrGuiFrame* CVrGuiFrameArea::Frame() const {
    return parent && parent->type == ElementType::Frame ? static_cast<CVrGuiFrame*>(parent) : nullptr;
}

void CVrGuiFrameArea::DetachChildren() {
    CVrGuiScrollArea::DetachChildren();
    buttonCount = 0;
}

void CVrGuiFrameArea::DeleteChildren() {
    pressedChild = nullptr;
    CVrGuiScrollArea::DeleteChildren();
    buttonCount = 0;
}

void CVrGuiFrameArea::OnChildSelected(CVrGuiElement* child, uint32_t newState) {
    child->state = newState;
    child->OnStateChanged();
    if (child->listener)
        child->listener->OnChildEvent(child, child->id, 1);
}

void CVrGuiFrameArea::ClearSelection() {
    ForEachChild([](CVrGuiElement& child) {
        child.state = StateNormal;
        child.OnStateChanged();
        child.Invalidate();
    });
}

void CVrGuiFrameArea::OnDragBegin() {
    constexpr uint32_t kMenuButton = 3; // the one that opens the popup frame
    CVrGuiMainWin* root = MainWindow();
    if (!root)
        return;
    if (root->popupSliderFrame)
        root->popupSliderFrame->SetHidden(true);
    if (!root->popupFrame || root->popupFrame->IsHidden())
        return;
    root->popupFrame->SetHidden(true);
    if (CVrGuiActionbarBtn* button = root->actionbar ? root->actionbar->Button(kMenuButton) : nullptr)
        button->ShowState(StateNormal);
}

// ---------------------------------------------------------------------------------------------- the grid

CVrGuiFrameArea::Margins CVrGuiFrameArea::ButtonMargins(const CVrGuiElement& button) {
    Margins margins;
    if (!button.style)
        return margins;
    const CStyle& layout = button.style->element;
    margins.left = layout.x;
    margins.top = layout.y;
    if (layout.mask & CStyle::Right)
        margins.right = layout.w;
    if (layout.mask & CStyle::Bottom)
        margins.bottom = layout.h;
    return margins;
}

// From ten buttons on the first two rows are those of a count between 6 and 9 and every later row has four:
// ten buttons are 3, 3, 4 and fourteen 3, 3, 4, 4.
void CVrGuiFrameArea::BuildRowTable() {
    int32_t count = buttonCount;
    if (count > kLargestTable)
        count = count - kLaterRowColumns - ((count - (kLargestTable + 1)) & ~(kLaterRowColumns - 1));
    const RowTable& table = kRowTables[std::clamp(count, 0, kLargestTable)];
    std::copy(std::begin(table.columns), std::end(table.columns), rowCols);
    rowCount = table.rows;
    if (buttonCount > kLargestTable) {
        rowCols[2] = kLaterRowColumns;
        rowCount = 3;
    }
    totalRows = rowCount;
    if (rowCols[2] > 0)
        totalRows = (buttonCount - rowCols[1] - rowCols[2] + 3) / 4 + (rowCols[1] > 0 ? 2 : 1);
}

CVrRect CVrGuiFrameArea::FixedGridRect(const Margins& margins, int32_t index) const {
    const int32_t insetGap = topInset > 0 ? gap : 0;
    return CVrRect((cellW + gap) * (index % fixedCols) + margins.left,
                   insetGap + (cellH + gap) * (index / fixedCols) + topInset + margins.top, cellW, cellH);
}

CVrRect CVrGuiFrameArea::GridRect(CVrGuiElement& button, int32_t index) {
    button.ApplyLayout();
    const Margins margins = ButtonMargins(button);
    gap = button.style ? button.style->element.gap : 0;
    if (fixedCols != 0) {
        gap = fixedCols >= 2 ? (rect.width - fixedCols * cellW) / (fixedCols - 1) : 0;
        return FixedGridRect(margins, index);
    }
    if (laidOutCount != buttonCount || totalRows == 0)
        BuildRowTable();
    laidOutCount = buttonCount;
    if (rowCount == 0 || index < 0)
        return CVrRect();

    int32_t row = 0;
    int32_t column = index;
    while (rowCols[std::min(row, 2)] > 0 && column >= rowCols[std::min(row, 2)])
        column -= rowCols[std::min(row++, 2)];
    const int32_t columns = rowCols[std::min(row, 2)];
    if (columns <= 0)
        return CVrRect();

    const int32_t inset = InsetWithGap();
    const int32_t free = NotNegative(rect.height - inset);
    const bool overflows = static_cast<int32_t>(children.GetSize()) >= kOverflowChildren;
    const int32_t rowHeight = overflows ? NotNegative(free - 2 * gap) * 2 / 5
                                        : NotNegative((free - (rowCount - 1) * gap) / rowCount);
    column = std::clamp(column, 0, columns - 1);
    const int32_t span = NotNegative(rect.width - gap * (columns - 1));
    const int32_t left = span * column / columns + gap * column;
    const int32_t width = span * (column + 1) / columns + gap * column - left;
    return CVrRect(left + margins.left, inset + (gap + rowHeight) * row + margins.top,
                   width - margins.left - margins.right, rowHeight - margins.top - margins.bottom);
}

void CVrGuiFrameArea::PlaceSwitchButton(CVrGuiElement& button, int32_t index) {
    if (buttonCount < 1 || buttonCount > 3) {
        button.SetRect(GridRect(button, index));
        return;
    }
    button.ApplyLayout();
    const Margins margins = ButtonMargins(button);
    gap = button.style ? button.style->element.gap : 0;
    const int32_t top = InsetWithGap();
    const int32_t free = NotNegative(rect.height - top);
    const int32_t half = (free - gap) / 2;
    CVrRect cell(0, top, rect.width, free);
    if (buttonCount == 2) {
        cell = CVrRect(0, top + (index > 0 ? half + gap : 0), rect.width, half);
    } else if (buttonCount == 3) {
        const int32_t column = (rect.width - gap) / 2;
        cell = index < 2 ? CVrRect(index > 0 ? column + gap : 0, top, column, half)
                         : CVrRect(0, top + half + gap, rect.width, half);
    }
    button.SetRect(CVrRect(cell.x + margins.left, cell.y + margins.top,
                           cell.width - margins.left - margins.right,
                           cell.height - margins.top - margins.bottom));
}

// ---------------------------------------------------------------------------------------------- layout

int32_t CVrGuiFrameArea::AvailableHeight(CVrGuiFrame* frame) const {
    int32_t height = (frame ? frame->GetContentRect().height : rect.height) - rect.y;
    // `h=` and `b=` share a place in the record: only a real bottom distance counts.
    if (style && (style->element.mask & CStyle::Bottom) && style->element.h > 0)
        height -= style->element.h;
    return height;
}

bool CVrGuiFrameArea::ApplyLayout() {
    CVrGuiFrame* frame = Frame();
    if (!layoutFixed)
        CVrGuiScrollArea::ApplyLayout();
    if (!frame)
        return false;
    if (frame->HasActionbar())
        frame->ReserveActionbarSpace();
    const int32_t height = AvailableHeight(frame);
    if (buttonCount != laidOutCount) {
        std::fill(std::begin(rowCols), std::end(rowCols), 0);
        totalRows = 0;
    }
    if (animateLayout) {
        FinishRunningTween();
        fromRects.SetSize(0);
        toRects.SetSize(0);
        ForEachChild([this](CVrGuiElement& child) { fromRects.Add(child.rect); });
    }
    TileColumn tiles = MeasureTiles(height);
    PlaceShades(height);
    PlaceChildren(frame, tiles, height);
    if (fixedCols != 0)
        rowCount = (buttonCount - 1 + fixedCols) / fixedCols;
    if (frame->IsScrollable())
        EnterScrollMode(frame, tiles);
    else
        SetFixed();
    SetTileEvents();
    if (animateLayout)
        StartGlide();
    return false;
}

// Which touches the tiles take: a list that scrolls leaves the down event to itself, unless a push button wants it.
void CVrGuiFrameArea::SetTileEvents() {
    ForEachChild([this](CVrGuiElement& child) {
        if (child.type != ElementType::TreeListBtn)
            return;
        const auto& tile = static_cast<const CVrGuiTreeListBtn&>(child);
        const bool takesDown = scrollState == ScrollState::Fixed || tile.pushMode;
        child.eventMask = tile.statusRow ? 0 : takesDown ? EventDown | EventUp : EventUp;
    });
}

// What a tile asks for: its style's height, or the whole area's where the style gives none.
int32_t CVrGuiFrameArea::WantedHeight(CVrGuiElement& child, int32_t areaHeight) {
    const int32_t wanted = child.EvaluateStyle(StylePart::Element).height;
    return wanted > 0 ? wanted : areaHeight;
}

CVrGuiFrameArea::TileColumn CVrGuiFrameArea::MeasureTiles(int32_t height) {
    TileColumn tiles;
    ForEachChild([&](CVrGuiElement& child) {
        if (child.type != ElementType::TreeListBtn)
            return;
        if (tiles.count++ == 0) {
            const Margins margins = ButtonMargins(child);
            tiles.left = margins.left;
            tiles.gap = margins.top + margins.bottom;
        }
        tiles.heightSum += WantedHeight(child, height);
    });
    tiles.shared = tiles.count >= 1 && (tiles.count <= 3 || tiles.heightSum <= height);
    if (tiles.count > 0) {
        const int32_t free = height - tiles.left - (tiles.left + 1) - (tiles.count - 1) * tiles.gap;
        tiles.share = NotNegative(free / tiles.count);
        tiles.rest = NotNegative(free - tiles.share * tiles.count);
    }
    return tiles;
}

void CVrGuiFrameArea::PlaceTile(CVrGuiElement& tile, TileColumn& tiles, int32_t placed, int32_t height) {
    const Margins margins = ButtonMargins(tile);
    const int32_t top = placed == 0 ? tiles.left : tiles.bottom + tiles.gap;
    const bool last = placed == tiles.count - 1;
    const int32_t tileHeight = tiles.shared
                                   ? tiles.share + (last ? tiles.rest : 0)
                                   : NotNegative(WantedHeight(tile, height) - margins.top - margins.bottom);
    tile.SetRect(CVrRect(margins.left, top, rect.width - margins.left - margins.right, tileHeight));
    tiles.bottom = top + tileHeight;
}

// Returns where the next list button begins.
int32_t CVrGuiFrameArea::PlaceListButton(CVrGuiElement& child, int32_t y) const {
    child.ApplyLayout();
    const Margins margins = ButtonMargins(child);
    const int32_t height = child.rect.height;
    child.SetRect(CVrRect(margins.left, margins.top + y, rect.width - margins.left - margins.right,
                          height - margins.top - margins.bottom));
    return y + height;
}

// One row in list mode makes all of them rows. Side by side only as many are placed as there are columns.
void CVrGuiFrameArea::PlaceShades(int32_t height) {
    int32_t count = 0;
    bool isList = false;
    ForEachChild([&](const CVrGuiElement& child) {
        count += child.type == ElementType::ShadeElement;
        isList |= child.type == ElementType::ShadeElement && child.IsListRow();
    });
    const int32_t columns = std::min(count, kShadeColumns);
    int32_t index = 0;
    ForEachChild([&](CVrGuiElement& child) {
        if (child.type != ElementType::ShadeElement || (!isList && index >= columns))
            return;
        child.SetRect(isList ? ShadeRow(index, count, height) : ShadeColumn(index, columns, height));
        child.canvasSize = child.rect.Size();
        child.ApplyLayout();
        index++;
    });
}

CVrRect CVrGuiFrameArea::ShadeRow(int32_t index, int32_t count, int32_t height) const {
    int32_t rowHeight = count < kLongList ? kShadeRow : kLongListRow;
    if (count == 2)
        rowHeight = NotNegative((height - kShadeGap) / 2);
    const int32_t top = rect.y - kShadeGap + index * (rowHeight + kShadeGap);
    const int32_t bottom = height - kShadeGap + rect.y;
    return CVrRect(0, top, rect.width, count == 2 && index == 1 ? NotNegative(bottom - top) : rowHeight);
}

CVrRect CVrGuiFrameArea::ShadeColumn(int32_t index, int32_t columns, int32_t height) const {
    const int32_t between = columns == kShadeColumns && rect.width > kShadeGap ? kShadeGap : 0;
    const int32_t width = (rect.width - between) / std::max(columns, 1);
    const int32_t left = index * (width + between);
    const bool isLast = index == columns - 1;
    return CVrRect(left, kShadeGap, isLast ? rect.width - left : width, NotNegative(height - kShadeGap));
}

void CVrGuiFrameArea::PlaceChildren(CVrGuiFrame* frame, TileColumn& tiles, int32_t height) {
    const bool switches =
        frame->frameType == ObjectType::Switch || frame->frameType == ObjectType::PushButton;
    int32_t listY = 0;
    int32_t gridIndex = 0;
    int32_t tileIndex = 0;
    ForEachChild([&](CVrGuiElement& child) {
        switch (child.type) {
        case ElementType::FrameListBtn:
            listY = PlaceListButton(child, listY);
            break;
        case ElementType::TreeListBtn:
            PlaceTile(child, tiles, tileIndex++, height);
            break;
        case ElementType::FrameBtn:
        case ElementType::FrameCoverBtn:
            if (switches)
                PlaceSwitchButton(child, gridIndex++);
            else
                child.SetRect(GridRect(child, gridIndex++));
            break;
        default:
            break;
        }
        if (animateLayout)
            toRects.Add(child.rect);
    });
}

void CVrGuiFrameArea::EnterScrollMode(CVrGuiFrame* frame, const TileColumn& tiles) {
    SetScrolling();
    if (children.GetSize() == 0)
        return;
    int32_t contentHeight = 0;
    if (tiles.count > 0) {
        contentHeight = tiles.bottom + tiles.left + 1;
    } else {
        const CVrGuiElement& last = *Child(children.GetSize() - 1);
        contentHeight = last.rect.y + last.rect.height;
        for (const CVrClassStyle* row : {frame->style, last.style})
            if (row && (row->element.mask & CStyle::Bottom))
                contentHeight += row->element.h;
    }
    SizeStore(CVrSize(rect.width, contentHeight));
    SetScrollOffset(CVrPoint(offsetX, offsetY));
    canvasSize = CVrSize(rect.width, rect.height);
    ForEachChild([](CVrGuiElement& child) { child.SetUpdate(1, true); });
    frame->ForEachChild([](CVrGuiElement& child) { child.SetUpdate(1, true); });
}

// ---------------------------------------------------------------------------------------------- gliding

void CVrGuiFrameArea::FinishRunningTween() {
    if (!tween.IsRunning())
        return;
    OnAnimValue(tween.to);
    tween.Stop();
}

void CVrGuiFrameArea::StartGlide() {
    tween.Start(fromRects, toRects, this, duration, curve);
}

void CVrGuiFrameArea::OnAnimValue(CVrAnimArray<CVrRect>& rects) {
    if (rects.GetSize() != children.GetSize())
        return;
    uint32_t index = 0;
    ForEachChild([&](CVrGuiElement& child) {
        child.SetRect(rects[index++]);
        child.SetUpdate(1, true);
    });
    needsUpdate = 1;
    if (parent)
        parent->ForEachChild([](CVrGuiElement& child) { child.SetUpdate(1, true); });
}
