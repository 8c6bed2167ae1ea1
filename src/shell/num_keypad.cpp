#include "shell/num_keypad.h"

#include "foundation/clock.h"
#include "shell/frame_button.h"
#include "structure/style_sheet.h"

#include <algorithm>

VR_REGISTER_ELEMENT(CVrGuiNumKeypad)

namespace {

constexpr uint32_t kMarginValue =
    16; // position of the margin in the list of values; the list may end before it
constexpr int32_t kColumns = 3, kRows = 4;
constexpr int32_t kZeroKeyId = 10;
constexpr uint32_t kBlack = 0xFF000000, kRed = 0xFFFF0000;
constexpr uint32_t kAlpha = 0xFF000000;

} // namespace

CVrGuiNumKeypad::CVrGuiNumKeypad() {
    eventMask = EventDown | EventUp;
}

void CVrGuiNumKeypad::CreateContent(CVrStructureItem* newItem) {
    CVrGuiFrameArea::CreateContent(newItem);
    eventMask = EventAll;
}

void CVrGuiNumKeypad::SetDotColor(int32_t index, uint32_t color) {
    if (index < 0)
        std::fill(std::begin(dotColors), std::end(dotColors), color);
    else if (index < static_cast<int32_t>(kMaxDots))
        dotColors[index] = color;
}

// ---------------------------------------------------------------------------------------------- layout

void CVrGuiNumKeypad::ResetEntry() {
    StopTimer();
    dotsLeft = static_cast<int32_t>(ShownDots());
    entered = 0;
    entryState = EntryEmpty;
    ColorDots();
}

// The class row gives the dots that are out no colour that shows, so they take the keys'.
void CVrGuiNumKeypad::ColorDots() {
    if (entered > 0 && dotsLeft <= 0) {
        SetDotColor(-1, kRed);
        return;
    }
    const uint32_t own = colors[ColorSymbolDisabled];
    SetDotColor(-1, own & kAlpha ? own : ClassColor(ElementType::FrameBtn, ColorSymbolDisabled, own));
    const uint32_t lit = ClassColor(ElementType::FrameBtn, ColorText, kBlack);
    for (int32_t dot = 0; entered > 0 && dot < dotsLeft; dot++)
        SetDotColor(dot, lit);
}

CVrGuiButton* CVrGuiNumKeypad::CreateSymbolButton(const CVrxStringU& symbol) {
    auto* button = CreateChild<CVrGuiButton>("CVrGuiButton", false);
    if (!button)
        return nullptr;
    button->flags &= ~static_cast<uint32_t>(FlagOwnStore);
    button->text.Clear();
    button->iconName = symbol;
    button->iconStatic = true;
    button->LoadColors();
    button->colors[ColorBackground] = kUnpainted;
    return button;
}

void CVrGuiNumKeypad::CreateSymbolButtons() {
    if (headIconName.IsEmpty() || headButton)
        return;
    headButton = CreateSymbolButton(headIconName);
    if (!cornerIconName.IsEmpty() && !cornerButton)
        cornerButton = CreateSymbolButton(cornerIconName);
}

void CVrGuiNumKeypad::PlaceSymbolButton(CVrGuiButton& button, int32_t x, int32_t y, int32_t size) {
    button.layout = CVrGuiButton::LayoutIcon;
    button.SetRect(CVrRect(x, y, size, size));
    button.iconSize = static_cast<uint32_t>(size);
    button.ReloadIcon();
}

bool CVrGuiNumKeypad::ApplyLayout() {
    const int32_t margin = GetStyleValue(kMarginValue);
    gap = style ? style->element.gap : 0;
    const int32_t large = GetStyleValue(StyleValue::NormalSymbol);
    const int32_t small = GetStyleValue(StyleValue::SmallSymbol);
    ResetEntry();
    CreateSymbolButtons();
    int32_t free = rect.height - 2 * margin;
    int32_t top = margin;
    if (headButton) {
        PlaceSymbolButton(*headButton, (rect.width - large - 2 * margin) / 2 + margin, margin, large);
        free -= large;
        top += large;
    }
    if (cornerButton) {
        PlaceSymbolButton(*cornerButton, rect.width - small - margin, margin, small);
        cornerButton->id = kCornerButtonId;
        cornerButton->listener = this;
    }
    dotPitch = dotCount > 0 ? static_cast<uint32_t>(large / 2) : 0;
    dotSize = dotPitch / 2;
    const int32_t dotRow = dotCount > 0 ? static_cast<int32_t>(dotPitch) : gap;
    free -= dotRow;
    const CVrRect firstKey(margin, top + dotRow, (rect.width - 2 * (margin + gap)) / kColumns,
                           (free - (kRows - 1) * gap) / kRows);
    PlaceKeys(firstKey);
    return true;
}

// The 0 stands in the right column of the last row.
void CVrGuiNumKeypad::PlaceKeys(const CVrRect& first) {
    for (uint32_t i = 0; i < kKeys; i++) {
        const bool isZero = i == kKeys - 1;
        const auto column = static_cast<int32_t>(isZero ? kColumns - 1 : i % kColumns);
        const auto row = static_cast<int32_t>(i / kColumns);
        PlaceKey(i, first.Moved(column * (first.width + gap), row * (first.height + gap)));
    }
}

void CVrGuiNumKeypad::PlaceKey(uint32_t index, const CVrRect& place) {
    if (!keys[index]) {
        keys[index] = CreateChild<CVrGuiFrameBtn>("CVrGuiFrameBtn", false);
        if (!keys[index])
            return;
        keys[index]->LoadColors();
    }
    CVrGuiFrameBtn& key = *keys[index];
    key.SetRect(place);
    key.layout = CVrGuiButton::LayoutTextCenter;
    key.fontIndex = FontIndex::BigBold;
    key.id = static_cast<int32_t>(index + 1);
    key.text.Format("%d", key.id % kZeroKeyId);
    key.listener = this;
    if (keyColor == 0)
        keyColor = key.colors[ColorBackground];
    ColorKey(key);
}

// A key is transparent until it is pressed.
void CVrGuiNumKeypad::ColorKey(CVrGuiElement& key) const {
    key.colors[ColorBackground] = kUnpainted;
    key.colors[ColorBackgroundSelected] = keyColor;
    key.colors[ColorTextSelected] = key.colors[ColorText];
}

void CVrGuiNumKeypad::OnColorsChanged() {
    CVrGuiFrameArea::OnColorsChanged();
    for (CVrGuiFrameBtn* key : keys) {
        if (!key)
            continue;
        key->LoadColors();
        keyColor = key->colors[ColorBackground];
        ColorKey(*key);
    }
    for (CVrGuiButton* button : {headButton, cornerButton})
        if (button)
            button->colors[ColorBackground] = kUnpainted;
    ColorDots();
}

// ---------------------------------------------------------------------------------------------- entry

void CVrGuiNumKeypad::ShowKey(uint32_t newState) {
    if (!pressedKey)
        return;
    pressedKey->state = newState;
    pressedKey->OnStateChanged();
    pressedKey->Invalidate();
    Invalidate();
}

void CVrGuiNumKeypad::OnTouchDown(const CVrPoint&) {
    if (!hitElement || hitElement->id == 0 || hitElement->id == kCornerButtonId)
        return;
    pressedKey = hitElement;
    lastDigit = static_cast<uint32_t>(pressedKey->id % kZeroKeyId);
    value = value * 10 + lastDigit;
    pressTick = TickMs();
    dotsLeft = static_cast<int32_t>(ShownDots());
    SetTimer(dotDelay, true);
    entryState = EntryUnderWay;
    if (++entered >= maxDigits) {
        entryState = EntryComplete;
        StopTimer();
    }
    ColorDots();
    ShowKey(StateSelected);
}

void CVrGuiNumKeypad::OnTouchUp(const CVrPoint&) {
    ShowKey(StateNormal);
}

bool CVrGuiNumKeypad::OnTimer(uint64_t now) {
    if (entered == 0)
        return false;
    if (now <= pressTick + dotDelay)
        return true;
    if (--dotsLeft <= 0)
        StopTimer();
    ColorDots();
    Invalidate();
    return true;
}

// ---------------------------------------------------------------------------------------------- painting

void CVrGuiNumKeypad::DrawContent() {
    if (!IsDrawable() || dotPitch == 0)
        return;
    CVrPoint origin;
    CVrGuiElement* target = GetRenderTarget(origin, false);
    if (!target || !dotIcon.HasBitmap())
        return;
    const auto pitch = static_cast<int32_t>(dotPitch);
    const auto dots = static_cast<int32_t>(ShownDots());
    const int32_t aside = (pitch - static_cast<int32_t>(dotSize)) / 2;
    const CVrPoint first = origin.Moved((rect.width - dots * pitch) / 2 + pitch / 4,
                                        2 * aside + (headButton ? headButton->rect.height : 0));
    for (int32_t dot = 0; dot < dots; dot++)
        if (dotColors[dot] & kAlpha)
            target->DrawSvg(dotIcon.image, first.Moved(dot * pitch, 0), dotColors[dot]);
}
