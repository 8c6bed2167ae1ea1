#include "shell/popup_slider.h"

#include "gui/application.h"
#include "gui/font.h"
#include "gui/font_table.h"
#include "gui/pixel_ops.h"
#include "gui/text_layout.h"
#include "shell/main_window.h"
#include "structure/style_sheet.h"

#include <algorithm>
#include <cstdlib>

VR_REGISTER_ELEMENT(CVrGuiPopupMenuSlider)
VR_REGISTER_ELEMENT(CVrGuiPopupSlider)

namespace {

constexpr int32_t kHalfValue = 50;        // up to here the symbol for low values shows
constexpr uint32_t kDefaultIconSize = 35; // pixels, where the style gives none
constexpr uint32_t kNightBar = 0xFF181818;
constexpr int32_t kThumbWidth = 4;
constexpr int32_t kThumbInset = 14;     // its left edge from the bar's right one
constexpr int32_t kThumbMinMargin = 4;  // above and below
constexpr int32_t kThumbMarginPart = 8; // of the height
constexpr int32_t kThumbRadius = 2;
constexpr uint32_t kOpaque = 0xFF000000;
constexpr int32_t kUncheckedSymbol = 10016, kCheckedSymbol = 10015;

CVrSize SizeOf(const CVrGuiIcon& icon) {
    const auto side = static_cast<int32_t>(icon.requestedSize);
    return {side, side};
}

} // namespace

// ---------------------------------------------------------------------------------------------- value

bool CVrGuiSliderButton::StoreValue(int32_t newValue) {
    newValue = std::clamp(newValue, 0, kMaxValue);
    const bool isChanged = newValue != value;
    value = newValue;
    OnValueStored();
    if (!isChanged)
        return false;
    Invalidate();
    if (parent)
        parent->Invalidate();
    return true;
}

bool CVrGuiSliderButton::SetValue(int32_t newValue) {
    return !IsDragged() && StoreValue(newValue);
}

void CVrGuiSliderButton::LoadSliderIcons(int32_t off, int32_t low, int32_t high) {
    const int32_t width = EvaluateStyle(StylePart::Symbol).width;
    iconSize = width > 0 ? static_cast<uint32_t>(width) : kDefaultIconSize;
    iconOff.SetStaticIconFromFile(StaticSymbolName(off), iconSize, true);
    iconLow.SetStaticIconFromFile(StaticSymbolName(low), iconSize, true);
    iconHigh.SetStaticIconFromFile(StaticSymbolName(high), iconSize, true);
    MarkContentChanged();
}

// ---------------------------------------------------------------------------------------------- touch

void CVrGuiSliderButton::OnTouchDown(const CVrPoint& point) {
    pressX = point.x;
    pressY = point.y;
    startValue = value;
    dragging = 0;
}

void CVrGuiSliderButton::OnTouchMove(const CVrPoint& point) {
    if (!pressed || rect.width <= 0)
        return;
    const int64_t dx = int64_t{point.x} - pressX;
    if (dragging == 0) {
        if (std::abs(dx) <= DragTolerance())
            return;
        dragging = 1;
        // In a list the area holds the touch already.
        if (CVrGuiApplication* application = TheApplication(); application && !application->Capture())
            application->SetCapture(this);
    }
    const float travel = 100.0F / static_cast<float>(rect.width) * static_cast<float>(dx);
    const auto steps = static_cast<int32_t>(std::clamp(travel, -100.0F, 100.0F));
    if (StoreValue(startValue + steps) && listener)
        listener->OnControlRefresh(true);
}

void CVrGuiSliderButton::OnTouchUp(const CVrPoint&) {
    if (!pressed)
        return; // a finger that came down elsewhere
    const bool wasDragging = dragging != 0;
    StopDragging();
    FinishTouch(wasDragging);
    if (listener)
        listener->OnControlRefresh(true);
}

void CVrGuiSliderButton::StopDragging() {
    dragging = 0;
    if (CVrGuiApplication* application = TheApplication(); application && application->Capture() == this)
        application->SetCapture(nullptr);
}

// ---------------------------------------------------------------------------------------------- painting

struct CVrGuiSliderButton::Paint {
    CVrGuiElement& target;
    CVrRect area; // of the slider, in the target
};

void CVrGuiSliderButton::DrawContent() {
    if (!IsDrawable() || rect.IsEmpty())
        return;
    CVrPoint origin;
    CVrGuiElement* target = GetRenderTarget(origin, false);
    if (!target)
        return;
    const Paint paint{*target, CVrRect(origin, rect.Size())};
    DrawBar(paint);
    DrawThumb(paint);
    DrawTitle(paint);
    DrawIcons(paint);
}

void CVrGuiSliderButton::DrawBar(const Paint& paint) const {
    const CVrGuiMainWin* root = MainWindow();
    const uint32_t color = root && root->night ? kNightBar : colors[ColorBackgroundDisabled];
    paint.target.FillRoundRect(CVrRect(paint.area.Origin(), CVrSize(BarWidth(), rect.height)), CornerRadius(),
                               CornerAll, color);
}

void CVrGuiSliderButton::DrawThumb(const Paint& paint) const {
    if (rect.width < kThumbWidth)
        return;
    const int32_t margin = std::max(kThumbMinMargin, rect.height / kThumbMarginPart);
    const CVrRect thumb(std::clamp(BarWidth() - kThumbInset, 0, rect.width - kThumbWidth), margin,
                        kThumbWidth, rect.height - 2 * margin);
    paint.target.FillRoundRect(thumb.Moved(paint.area.Origin()), kThumbRadius, CornerAll,
                               colors[ColorBackground] | kOpaque);
}

// At 0 text and symbols stand back: half their strength, mixed with the slider's own ground.
uint32_t CVrGuiSliderButton::Dimmed(uint32_t color) const {
    return value > 0 ? color
                     : pixelops::BlendPixel(colors[ColorBackground], color, (color >> 24) / 2) | kOpaque;
}

// Width that a symbol takes at its edge, its distance from the edge included.
int32_t CVrGuiSliderButton::IconRoom(const CVrGuiIcon* shown) const {
    return shown && shown->HasBitmap() ? (style ? style->symbol.gap : 0) + SizeOf(*shown).width : 0;
}

void CVrGuiSliderButton::DrawTitle(const Paint& paint) const {
    CVrGuiFont* font = GetFont(fontIndex);
    if (!font || text.IsEmpty())
        return;
    const int32_t gap = style ? style->text.gap : 0;
    const int32_t left = (layout & LayoutIconLeft ? IconRoom(&LeftIcon()) : 0) + gap;
    const int32_t right = IconRoom(RightIcon()) + gap;
    CVrxStringU line;
    ShortenText(line, font, text, rect.width - left - right);
    CVrSize size;
    font->MeasureText(size, line);
    int32_t x = (rect.width - size.width) / 2;
    if (layout & LayoutTextLeft)
        x = left;
    else if (layout & LayoutTextRight)
        x = rect.width - right - size.width;
    paint.target.DrawText(paint.area.Origin().Moved(x, (rect.height - size.height) / 2), *font, line.CStr(),
                          Dimmed(TextColor()), colors[ColorBackground], rect.width);
}

const CVrGuiIcon& CVrGuiSliderButton::LeftIcon() const {
    if (value == 0)
        return iconOff;
    return value <= kHalfValue ? iconLow : iconHigh;
}

void CVrGuiSliderButton::DrawIcons(const Paint& paint) const {
    const int32_t gap = style ? style->symbol.gap : 0;
    const CVrGuiIcon& left = LeftIcon();
    if (left.HasBitmap()) {
        const CVrSize size = SizeOf(left);
        paint.target.DrawSvg(left.image, paint.area.Origin().Moved(gap, (rect.height - size.height) / 2),
                             Dimmed(SymbolColor()));
    }
    const CVrGuiIcon* right = RightIcon();
    if (right && right->HasBitmap()) {
        const CVrSize size = SizeOf(*right);
        paint.target.DrawSvg(
            right->image,
            paint.area.Origin().Moved(rect.width - gap - size.width, (rect.height - size.height) / 2),
            Dimmed(SymbolColor()));
    }
}

// ---------------------------------------------------------------------------------------------- the row of a list

CVrGuiPopupMenuSlider::CVrGuiPopupMenuSlider() {
    type = ElementType::PopupMenuSlider;
}

void CVrGuiPopupMenuSlider::AllowMute() {
    canMute = true;
    iconUnchecked.SetStaticIconFromFile(StaticSymbolName(kUncheckedSymbol), iconSize, true);
    iconChecked.SetStaticIconFromFile(StaticSymbolName(kCheckedSymbol), iconSize, true);
    MarkContentChanged();
}

bool CVrGuiPopupMenuSlider::OnPressCancelled() {
    const CVrGuiApplication* application = TheApplication();
    if (application && application->Capture() == this)
        StopDragging(); // the touch itself is over
    return dragging == 0;
}

int32_t CVrGuiPopupMenuSlider::DragTolerance() const {
    return GetStyleValue(StyleValue::MoveTolerance);
}

void CVrGuiPopupMenuSlider::OnValueStored() {
    if (value == 0)
        return;
    lastValue = value;
    hasLastValue = true;
}

void CVrGuiPopupMenuSlider::FinishTouch(bool wasDragging) {
    if (wasDragging || !canMute)
        return;
    if (value > 0) {
        lastValue = value;
        hasLastValue = true;
        SetValue(0);
    } else if (hasLastValue && lastValue > 0) {
        SetValue(lastValue);
    }
}

const CVrGuiIcon* CVrGuiPopupMenuSlider::RightIcon() const {
    return value == 0 ? &iconUnchecked : &iconChecked;
}

// ---------------------------------------------------------------------------------------------- the popup's slider

CVrGuiPopupSlider::CVrGuiPopupSlider() {
    type = ElementType::PopupSlider;
}

void CVrGuiPopupSlider::OnStart() {
    CVrGuiSliderButton::OnStart();
    eventMask = EventAll;
}

void CVrGuiPopupSlider::OnTouchMove(const CVrPoint& point) {
    CVrElementRef<> self(this);
    CVrGuiSliderButton::OnTouchMove(point);
    if (self && autoHide != 0)
        RestartTimer();
}

bool CVrGuiPopupSlider::OnPressCancelled() {
    StopDragging();
    return true;
}

void CVrGuiPopupSlider::OnVisibilityChanged(bool) {
    HideAfter(0);
    StopDragging();
}

void CVrGuiPopupSlider::HideAfter(uint32_t ms) {
    autoHide = ms;
    if (ms != 0)
        SetTimer(ms, true);
    else
        StopTimer();
}

bool CVrGuiPopupSlider::OnTimer(uint64_t) {
    if (pressed)
        return false; // the periodic timer asks again
    HideAfter(0);
    if (parent)
        parent->SetHidden(true);
    return true;
}
