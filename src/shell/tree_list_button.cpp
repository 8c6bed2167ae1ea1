#include "shell/tree_list_button.h"

#include "foundation/clock.h"
#include "foundation/translator.h"
#include "gui/application.h"
#include "gui/font.h"
#include "gui/font_table.h"
#include "gui/text_layout.h"
#include "structure/structure.h"

#include <algorithm>

VR_REGISTER_ELEMENT(CVrGuiTreeListBtn)

namespace {

constexpr int32_t kArrowSymbol = 11100;
constexpr int32_t kGroupSymbol = 11101, kControlSymbol = 11003; // where an item's own symbol is lost
constexpr int32_t kPushOnSymbol = 20002, kPushOffSymbol = 20003;
constexpr uint32_t kArrowSize = 48, kFallbackArrowSize = 32, kItemIconSize = 64; // pixels
constexpr uint32_t kNoAction = 0, kMomentary = 1;                                // `actionMode`
constexpr uint32_t kPressBegan = 0, kPressEnded = 1;
constexpr uint32_t kFadePeriodMs = 16, kReleaseDelayMs = 100;
constexpr uint32_t kFadeFull = 255;
constexpr uint32_t kDarkPercent = 85;
constexpr int32_t kDividerRows = 3, kDividerMargin = 10; // pixels

// Distances in a row, in pixels: from the left, from the right, between its parts.
struct RowMargins {
    int32_t left, right, gap;
};
constexpr RowMargins kPlainMargins{30, 30, 30};
constexpr int32_t kTileLeft = 18, kTileGap = 16;

int32_t HeightOf(CVrGuiFont* font, const CVrxStringU& line) {
    CVrSize size;
    if (font)
        font->MeasureText(size, line);
    return size.height;
}

bool IsPlainTile(const CVrGuiElement& child) {
    return child.type == ElementType::TreeListBtn && static_cast<const CVrGuiTreeListBtn&>(child).IsPlain();
}

} // namespace

// Where a tile is painted.
struct CVrGuiTreeListBtn::Paint {
    CVrGuiElement& target;
    CVrRect area; // of the tile, in the target
    RowMargins margins;
};

CVrGuiTreeListBtn::CVrGuiTreeListBtn() {
    type = ElementType::TreeListBtn;
    fontIndex = FontIndex::NormalBold;
}

bool CVrGuiTreeListBtn::IsPlain() const {
    return statusRow || (item && item->IsReadOnlyValue());
}

// ---------------------------------------------------------------------------------------------- building

void CVrGuiTreeListBtn::CreateContent(CVrStructureItem* newItem) {
    item = newItem;
    actionMode = kMomentary;
    OnActionModeChanged();
    eventMask = 0;
    arrowName = StaticSymbolName(kArrowSymbol);
    arrowSize = kArrowSize;
    LoadArrow();
    if (item) {
        text = item->name;
        iconName = StaticSymbolName(item->IsGroup() ? kGroupSymbol : kControlSymbol);
    }
    LoadItemSymbol();
    Invalidate();
}

// The item's own symbol, else that of its category, else the default. `iconName` stays: a symbol that is lost later
// comes back as the default of its kind.
void CVrGuiTreeListBtn::LoadItemSymbol() {
    const CVrStructure* structure = TheApplication() ? TheApplication()->Structure() : nullptr;
    if (!structure)
        return;
    int32_t number = item ? item->icon : 0;
    if (number == 0 && item && item->category != 0)
        if (const CRoomCat* category = structure->categories.Lookup(item->category))
            number = category->icon;
    CVrxStringU file;
    if (number != 0)
        structure->GetSymbolName(file, number);
    iconStatic = file.IsEmpty();
    if (iconStatic)
        structure->GetStaticSymbolName(file, CVrStructure::kDefaultSymbol);
    if (iconSize < 1)
        iconSize = kItemIconSize;
    if (iconStatic)
        icon.SetStaticIconFromFile(file, iconSize, true);
    else
        icon.SetIconFromFile(file, iconSize);
    MarkContentChanged();
}

void CVrGuiTreeListBtn::LoadArrow() {
    arrowLoaded = false;
    MarkContentChanged();
    if (arrowName.IsEmpty())
        return;
    if (arrowSize < 1)
        arrowSize = kFallbackArrowSize;
    arrowLoaded = arrowIcon.SetStaticIconFromFile(arrowName, arrowSize, true);
}

void CVrGuiTreeListBtn::SetStatusRow() {
    statusRow = true;
    pushMode = pushShown = fading = false;
    fade = 0;
    StopTimer();
    actionMode = kNoAction;
    OnActionModeChanged();
    eventMask = 0;
    arrowName.Clear();
    arrowLoaded = false;
    Invalidate();
}

void CVrGuiTreeListBtn::SetValueText(const CVrxStringU& newText) {
    valueText = newText;
    if (item && item->IsReadOnlyValue() && item->IsOnOffValue() && (newText == "0" || newText == "1"))
        valueText = CVrTranslator::Instance().Translate(newText == "1" ? "common.on" : "common.off");
    arrowLoaded = false;
    arrowName.Clear();
    Invalidate();
}

void CVrGuiTreeListBtn::SetPushMode() {
    statusRow = false;
    pushMode = true;
    actionMode = kMomentary;
    OnActionModeChanged();
    eventMask = EventDown | EventUp;
    SetPushShown(false);
    state = StateNormal;
}

void CVrGuiTreeListBtn::SetPushShown(bool shown) {
    pushShown = shown;
    arrowName = StaticSymbolName(shown ? kPushOnSymbol : kPushOffSymbol);
    arrowSize = kArrowSize;
    LoadArrow();
    Invalidate();
}

bool CVrGuiTreeListBtn::ApplyLayout() {
    if (layoutLocked)
        return true;
    const int32_t height = EvaluateStyle(StylePart::Element).height;
    if (height > 0)
        SetHeight(height);
    return true;
}

// ---------------------------------------------------------------------------------------------- touch

void CVrGuiTreeListBtn::StartFade(bool in, uint32_t delay) {
    fading = true;
    fadeIn = in;
    fadeStart = TickMs();
    fadeDelay = delay;
    SetTimer(kFadePeriodMs, true);
    timerDue += delay;
}

void CVrGuiTreeListBtn::ReportPush(bool shown, uint32_t delay, uint32_t reported) {
    state = StateNormal;
    OnStateChanged();
    SetPushShown(shown);
    StartFade(shown, delay);
    if (listener)
        listener->OnChildEvent(this, id, reported);
}

void CVrGuiTreeListBtn::OnTouchDown(const CVrPoint&) {
    if (!IsPlain() && pushMode)
        ReportPush(true, 0, kPressBegan);
}

void CVrGuiTreeListBtn::OnTouchUp(const CVrPoint& point) {
    if (IsPlain())
        return;
    if (pushMode)
        ReportPush(false, kReleaseDelayMs, kPressEnded);
    else if (pressed)
        OnClick(point);
}

void CVrGuiTreeListBtn::OnClick(const CVrPoint&) {
    if (IsPlain())
        return;
    if (pushMode)
        ReportPush(false, kReleaseDelayMs, kPressEnded);
    else if (listener)
        listener->OnChildEvent(this, id, 1);
}

void CVrGuiTreeListBtn::ReleasePush() {
    if (!IsPlain())
        ReportPush(false, 0, kPressEnded);
}

bool CVrGuiTreeListBtn::OnPressCancelled() {
    if (!IsPlain() && pushMode && (pushShown || fading))
        ReleasePush();
    return true;
}

bool CVrGuiTreeListBtn::OnTimer(uint64_t now) {
    const uint64_t begin = fadeStart + fadeDelay;
    if (!fading || now < begin)
        return false;
    const uint64_t elapsed = now - begin;
    if (elapsed < fadeDuration) {
        const auto progress = static_cast<uint8_t>(elapsed * kFadeFull / fadeDuration);
        fade = fadeIn ? progress : static_cast<uint8_t>(kFadeFull - progress);
    } else {
        fading = false;
        fade = fadeIn ? kFadeFull : 0;
        StopTimer();
    }
    Invalidate();
    return true;
}

// ---------------------------------------------------------------------------------------------- painting

uint32_t CVrGuiTreeListBtn::FadedBackground() const {
    const uint32_t color = colors[ColorBackground];
    uint32_t mixed = color & 0xFF000000;
    for (uint32_t shift = 0; shift < 24; shift += 8) {
        const auto c = static_cast<int32_t>(color >> shift & 0xFF);
        const int32_t dark = c * static_cast<int32_t>(kDarkPercent) / 100;
        mixed |= static_cast<uint32_t>(c + (dark - c) * fade / static_cast<int32_t>(kFadeFull)) << shift;
    }
    return mixed;
}

void CVrGuiTreeListBtn::DrawBackground() {
    if (IsPlain())
        return;
    if (pushMode && IsDrawable() && HasBackground())
        FillBackground(FadedBackground());
    else
        CVrGuiFrameListBtn::DrawBackground();
}

void CVrGuiTreeListBtn::DrawContent() {
    if (!IsDrawable() || rect.width == 0 || rect.height == 0)
        return;
    CVrPoint origin;
    CVrGuiElement* target = GetRenderTarget(origin, false);
    if (!target)
        return;
    const RowMargins margins =
        IsPlain() ? kPlainMargins : RowMargins{kTileLeft, static_cast<int32_t>(rightMargin), kTileGap};
    const Paint paint{*target, CVrRect(origin, HasOwnStore() ? storeSize : rect.Size()), margins};
    DrawTexts(paint);
    if (IsPlain())
        DrawDivider(paint);
}

// Symbol, title and second line; what is left of them the right end leaves free.
void CVrGuiTreeListBtn::DrawTexts(const Paint& paint) {
    const CVrRect& area = paint.area;
    const int32_t reserve = DrawRightEnd(paint);
    const auto symbolSize = static_cast<int32_t>(iconSize);
    int32_t x = area.x + paint.margins.left;
    if (icon.HasBitmap() && iconSize > 0) {
        paint.target.DrawSvg(icon.image, CVrPoint(x, area.y + (area.height - symbolSize) / 2), SymbolColor());
        x += symbolSize + paint.margins.gap;
    }
    const int32_t room = std::max(area.width - (x - area.x) - reserve - paint.margins.gap, 0);
    CVrGuiFont* titleFont = GetFont(fontIndex);
    CVrGuiFont* lineFont = GetFont(secondFont);
    CVrxStringU title, second;
    ShortenText(title, titleFont, text, room);
    ShortenText(second, lineFont, secondLine, room);
    const int32_t titleHeight = HeightOf(titleFont, title);
    const int32_t height = titleHeight + (second.IsEmpty() ? 0 : HeightOf(lineFont, second));
    const int32_t y = area.y + (area.height - height) / 2 + textOffsetY;
    if (titleFont)
        paint.target.DrawText(CVrPoint(x, y), *titleFont, title.CStr(), TextColor(), BackgroundColor(),
                              area.width);
    if (lineFont && !second.IsEmpty())
        paint.target.DrawText(CVrPoint(x, y + titleHeight), *lineFont, second.CStr(), TextColor(),
                              BackgroundColor(), area.width);
}

// The value, or else the arrow. Returns the width that it takes from the title's room.
int32_t CVrGuiTreeListBtn::DrawRightEnd(const Paint& paint) {
    const CVrRect& area = paint.area;
    CVrGuiFont* font = GetFont(valueFont < 0 ? fontIndex : static_cast<uint32_t>(valueFont));
    if (!valueText.IsEmpty() && font) {
        CVrSize size;
        font->MeasureText(size, valueText);
        const CVrPoint at(area.Right() - paint.margins.right - size.width,
                          area.y + (area.height - size.height) / 2 + textOffsetY);
        paint.target.DrawText(at, *font, valueText.CStr(), TextColor(), BackgroundColor(), area.width);
        return size.width + paint.margins.right;
    }
    if (!arrowLoaded)
        return 0;
    const auto column = static_cast<int32_t>(arrowWidth);
    const auto side = static_cast<int32_t>(arrowSize);
    const CVrRect box(area.Right() - paint.margins.right - column, area.y, column, area.height);
    paint.target.DrawSvg(arrowIcon.image, CVrRect(0, 0, side, side).CenteredWithin(box).Origin(),
                         SymbolColor());
    return column + paint.margins.right;
}

bool CVrGuiTreeListBtn::IsLastPlainRow() const {
    if (!parent)
        return true;
    for (uint32_t i = parent->ChildCount(); i-- > 0;)
        if (const CVrGuiElement* child = parent->Child(i); child && IsPlainTile(*child))
            return child == this;
    return true;
}

void CVrGuiTreeListBtn::DrawDivider(const Paint& paint) {
    const CVrRect line(paint.area.x + kDividerMargin, paint.area.Bottom() - kDividerRows,
                       paint.area.width - 2 * kDividerMargin, kDividerRows);
    if (line.width < 1 || colors[ColorBackground] == kUnpainted || IsLastPlainRow())
        return;
    // Row by row: of a tile that leaves the store the rows inside still show.
    for (int32_t row = 0; row < kDividerRows; row++)
        paint.target.FillRect(CVrRect(line.x, line.y + row, line.width, 1), colors[ColorBackground]);
}
