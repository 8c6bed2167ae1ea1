#include "controls/temperature_widget.h"

#include "gui/font.h"
#include "gui/font_table.h"
#include "gui/text_layout.h"
#include "structure/style_sheet.h"

#include <algorithm>
#include <cstdlib>

VR_REGISTER_ELEMENT(CVrGuiTemperatureWidget)

namespace {

constexpr int32_t kBoxHeight = 170;                              // pixels; the whole part is centred in it
constexpr int32_t kUnitGap = 18, kPointGap = 10, kDigitGap = 10; // pixels between ink and ink
constexpr uint32_t kHalfAlpha = 0x80000000, kRgbMask = 0x00FFFFFF;
constexpr const char* kDegree = "°";
constexpr int32_t kMaxDigit = 9;

} // namespace

// One of the texts, measured; `at` is the corner of its line box.
struct CVrGuiTemperatureWidget::Piece {
    Piece(uint32_t fontIndex, const CVrxStringU& line) : font(GetFont(fontIndex)), text(line) {
        if (!font)
            return;
        font->MeasureText(size, text); // the second look at a pair of glyphs knows its kerning
        MeasureInk(ink, *font, text);
    }

    int32_t Right() const { return at.x + ink.width; }
    // Puts the left edge of the ink at `x`.
    void BeginInkAt(int32_t x) { at.x = x - ink.left; }

    CVrGuiFont* font;
    CVrxStringU text;
    CVrSize size;
    TextInk ink;
    CVrPoint at;
};

// The number with its unit, placed on a line that begins at x 0.
struct CVrGuiTemperatureWidget::Pieces {
    explicit Pieces(const CVrGuiTemperatureWidget& widget)
        : whole(FontIndex::Huge, widget.WholeText()),
          unit(widget.unit == kDegree ? FontIndex::Huge : FontIndex::VeryBig, widget.unit),
          point(FontIndex::VeryBig, "."),
          fraction(FontIndex::VeryBig,
                   CVrxStringU::Formatted("%d", std::clamp(widget.fractionPart, 0, kMaxDigit))) {
        whole.at.y = (kBoxHeight - whole.size.height) / 2;
        unit.at.y = whole.at.y + whole.ink.top - unit.ink.top;
        unit.BeginInkAt(whole.ink.right + kUnitGap);
        point.at.y = whole.at.y + whole.ink.bottom - point.ink.bottom;
        point.BeginInkAt(whole.ink.right + kPointGap);
        fraction.at.y = whole.at.y + whole.ink.bottom - fraction.ink.bottom;
        fraction.BeginInkAt(point.at.x + point.ink.right + kDigitGap);
    }

    // What does not show does not count.
    int32_t Width(const CVrGuiTemperatureWidget& widget) const {
        int32_t width = whole.Right();
        if (widget.showFraction)
            width = std::max({width, point.Right(), fraction.Right()});
        if (!widget.unitOutside && !widget.unit.IsEmpty())
            width = std::max(width, unit.Right());
        return width;
    }

    Piece whole, unit, point, fraction;
};

CVrGuiTemperatureWidget::CVrGuiTemperatureWidget() : unit(kDegree) {
    type = ElementType::PlainText;
    className = "CVrGuiTemperatureWidget";
}

bool CVrGuiTemperatureWidget::ApplyLayout() {
    CVrGuiElement::ApplyLayout();
    return false;
}

void CVrGuiTemperatureWidget::CreateContent(CVrStructureItem* newItem) {
    CVrGuiElement::CreateContent(newItem);
    eventMask = 0;
}

// ---------------------------------------------------------------------------------------------- number and colours

void CVrGuiTemperatureWidget::Show(int32_t whole, int32_t fraction, bool negative) {
    if (wholePart == whole && fractionPart == fraction && isNegative == negative)
        return;
    wholePart = whole;
    fractionPart = fraction;
    isNegative = negative;
    Invalidate();
}

void CVrGuiTemperatureWidget::ShowTenths(int32_t tenths) {
    Show(tenths / 10, std::abs(tenths % 10), tenths < 0);
}

void CVrGuiTemperatureWidget::ShowWhole(int32_t number) {
    Show(number, 0, number < 0);
}

void CVrGuiTemperatureWidget::TakeColors(const CVrGuiElement& page) {
    mainColor = page.colors[ColorText];
    backColor = page.colors[ColorBackground];
    dimColor = (mainColor & kRgbMask) | kHalfAlpha;
    Invalidate();
}

CVrxStringU CVrGuiTemperatureWidget::WholeText() const {
    return CVrxStringU::Formatted("%s%d", isNegative && wholePart == 0 ? "-" : "", wholePart);
}

// ---------------------------------------------------------------------------------------------- painting

void CVrGuiTemperatureWidget::DrawContent() {
    if (!IsDrawable() || rect.width == 0 || rect.height == 0)
        return;
    CVrPoint origin;
    CVrGuiElement* target = GetRenderTarget(origin, false);
    if (!target)
        return;
    const Pieces pieces(*this);
    // One that is too wide begins with the element and dissolves at its end.
    const int32_t left = std::max((rect.width - pieces.Width(*this)) / 2, 0);
    const auto draw = [&](const Piece& piece, uint32_t color) {
        const int32_t x = left + piece.at.x;
        if (piece.font && !piece.text.IsEmpty() && x < rect.width)
            target->DrawText(origin.Moved(x, piece.at.y), *piece.font, piece.text.CStr(), color, backColor,
                             rect.width - x);
    };
    draw(pieces.whole, mainColor);
    draw(pieces.unit, mainColor);
    if (!showFraction)
        return;
    draw(pieces.point, dimColor);
    draw(pieces.fraction, dimColor);
}
