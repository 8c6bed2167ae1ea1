#include "shell/menu.h"

#include "foundation/class_factory.h"
#include "gui/application.h"
#include "shell/main_window.h"
#include "structure/style_sheet.h"

#include <algorithm>

VR_REGISTER_ELEMENT(CVrGuiMenu)

namespace {

constexpr int32_t kLeftArrowSymbol = 11005;
constexpr int32_t kRightArrowSymbol = 11006;
constexpr int32_t kArrowSize = 32; // pixels
constexpr int32_t kArrowZone =
    64; // width of the touch zone under an arrow; narrower than the fade on purpose
constexpr int32_t kFadeWidth = 96; // pixels over which the row dissolves under an arrow
constexpr int32_t kPageStep = 5;   // buttons that one tap on an arrow moves
constexpr uint32_t kRgbMask = 0x00FFFFFF;
constexpr uint32_t kOpaque = 0xFF000000;

// The colour `solid` with alpha 0, which must not be mistaken for the mark of an unpainted pixel.
uint32_t Transparent(uint32_t solid) {
    const uint32_t rgb = solid & kRgbMask;
    return rgb == kRgbMask ? 0x00FEFEFE : rgb;
}

bool HasSolidColor(const CVrGuiElement& element) {
    return element.colorIndex[0] != 0 && element.colors[0] != kUnpainted;
}

} // namespace

CVrGuiMenu::CVrGuiMenu() : CVrGuiScrollArea(ScrollAxis::Horizontal) {
    type = ElementType::Menu;
    className = "CVrGuiMenu";
}

void CVrGuiMenu::OnChildSelected(CVrGuiElement* selected, uint32_t) {
    ForEachChild([selected](CVrGuiElement& child) {
        const uint32_t wanted = &child == selected ? StateSelected : StateNormal;
        if (child.state != wanted)
            child.Invalidate();
        child.state = wanted;
        child.OnStateChanged();
    });
}

// ---------------------------------------------------------------------------------------------- layout

bool CVrGuiMenu::ApplyLayout() {
    CVrGuiScrollArea::ApplyLayout();
    maxVisible = GetStyleValue(StyleValue::MenuMaxVisible);
    PlaceButtons();
    if (!leftArrow.HasBitmap())
        leftArrow.SetStaticIconFromFile(StaticSymbolName(kLeftArrowSymbol), kArrowSize, true);
    if (!rightArrow.HasBitmap())
        rightArrow.SetStaticIconFromFile(StaticSymbolName(kRightArrowSymbol), kArrowSize, true);
    if (storeSize.width <= rect.width)
        SetFixed();
    else
        SetScrolling();
    return false;
}

void CVrGuiMenu::PlaceButtons() {
    const auto count = static_cast<int32_t>(children.GetSize());
    if (count == 0 || rect.width < 1)
        return;
    const int32_t shown = maxVisible < 1 ? count : std::min(count, maxVisible);
    const int32_t width = rect.width / shown;
    int32_t x = 0;
    ForEachChild([&](CVrGuiElement& child) {
        child.SetRect(CVrRect(x, 0, width, rect.height));
        x += width;
    });
    if (flags & FlagOwnStore)
        SizeStore(CVrSize(std::max(rect.width, count * width), rect.height));
}

// ---------------------------------------------------------------------------------------------- snapping

int32_t CVrGuiMenu::ButtonWidth() const {
    const int32_t first = children.GetSize() > 0 ? Child(0)->rect.width : 0;
    if (first > 0)
        return first;
    return maxVisible > 0 ? rect.width / maxVisible : 0;
}

int32_t CVrGuiMenu::SnapPosition(int32_t pos, int32_t min, int32_t max) {
    const int32_t width = ButtonWidth();
    if (width < 1 || maxVisible < 1)
        return pos;
    const int32_t half = width / 2;
    const int32_t border = (half - pos) % width + (pos - half);
    return std::clamp(border, min, max);
}

// ---------------------------------------------------------------------------------------------- arrow zones

bool CVrGuiMenu::LeftArrowShown() const {
    return leftArrow.HasBitmap() && offsetX < 0;
}

bool CVrGuiMenu::RightArrowShown() const {
    return rightArrow.HasBitmap() && storeSize.width + offsetX > rect.width;
}

// -1 over the left arrow, 1 over the right one, 0 elsewhere.
int32_t CVrGuiMenu::ZoneAt(const CVrPoint& point) const {
    if (point.y < 0 || point.y >= rect.height)
        return 0;
    int32_t zone = std::min(rect.width, kArrowZone);
    if (LeftArrowShown() && RightArrowShown())
        zone = std::min(zone, rect.width / 2);
    if (zone <= 0)
        return 0;
    if (RightArrowShown() && point.x >= rect.width - zone && point.x < rect.width)
        return 1;
    return LeftArrowShown() && point.x >= 0 && point.x < zone ? -1 : 0;
}

// A finger on an arrow takes the whole touch: whatever was pressed or coasting ends here.
void CVrGuiMenu::BeginPaging(int32_t zone) {
    if (hitElement && hitElement != this) {
        hitElement->OnPressCancelled();
        hitElement->pressed = false;
        hitElement->moved = false;
    }
    pressed = false;
    Cancel();
    TheApplication()->Animations().Remove(this);
    pagingZone = zone;
    TheApplication()->SetCapture(this);
}

void CVrGuiMenu::DoEvent(uint32_t eventType, const CVrPoint& point) {
    const int32_t zone = ZoneAt(point);
    if (eventType == EventDown && zone != 0) {
        BeginPaging(zone);
        return;
    }
    if (pagingZone == 0) {
        CVrGuiScrollArea::DoEvent(eventType, point);
        return;
    }
    if (eventType != EventUp)
        return;
    if (zone == pagingZone)
        PageBy(pagingZone);
    pagingZone = 0;
    pressed = false;
    TheApplication()->SetCapture(nullptr);
}

void CVrGuiMenu::PageBy(int32_t direction) {
    const int32_t width = ButtonWidth();
    if (width < 1)
        return;
    const int32_t min = std::min(rect.width - storeSize.width, 0);
    const int32_t current = SnapPosition(offsetX, min, 0);
    const int32_t wanted = current - (direction > 0 ? kPageStep : -kPageStep) * width;
    const int32_t target = SnapPosition(std::clamp(wanted, min, 0), min, 0);
    if (target == offsetX)
        return;
    offsetX = target;
    Invalidate();
}

// ---------------------------------------------------------------------------------------------- overlay

// The row's own background, else the parent's, else black.
uint32_t CVrGuiMenu::FadeColor() const {
    if (HasSolidColor(*this))
        return colors[0];
    if (parent && HasSolidColor(*parent))
        return parent->colors[0];
    return kOpaque;
}

void CVrGuiMenu::DrawAfterChildren() {
    CVrPoint origin(0, 0);
    CVrGuiElement* target = GetRenderTarget(origin, true);
    if (!target)
        return;
    const uint32_t solid = FadeColor();
    const uint32_t clear = Transparent(solid);
    const int32_t fade = std::min(rect.width, kFadeWidth);
    const int32_t arrowY = origin.y + (rect.height - kArrowSize) / 2;
    const uint32_t arrowColor =
        ClassColor(ElementType::MenuBtn, ColorSymbolSelected, colors[ColorSymbolSelected]);
    if (RightArrowShown()) {
        target->FillRoundRect(CVrRect(origin.x + rect.width - fade, origin.y, fade, rect.height), 0,
                              CornerNone, clear, CornerAlpha::Blend, solid, Gradient::Horizontal);
        target->DrawSvg(rightArrow.image, CVrPoint(origin.x + rect.width - kArrowSize, arrowY), arrowColor);
    }
    if (LeftArrowShown()) {
        target->FillRoundRect(CVrRect(origin.x, origin.y, fade, rect.height), 0, CornerNone, solid,
                              CornerAlpha::Blend, clear, Gradient::Horizontal);
        target->DrawSvg(leftArrow.image, CVrPoint(origin.x, arrowY), arrowColor);
    }
}
