// The large number of a page, centred in its element: the whole part in the largest font, behind it the unit level with
// the top of the digits and the fraction level with their bottom.
//
//      ___
//     |   |  °        unit: in the large font if it is the degree sign, else in the small one
//     |21 |
//     |   | . 5       point and fraction: small and dimmed
//
// The number is shown in lines of ink, not in line boxes: what shows is level, whatever the font leaves free around it.
// Not every caller has temperatures: with a `unit` of its own, or none, it shows any number.
#pragma once

#include "gui/element.h"

class CVrGuiTemperatureWidget : public CVrGuiElement {
public:
    CVrGuiTemperatureWidget();

    // Follows the style; nothing below to lay out.
    bool ApplyLayout() override;
    // Takes no events.
    void CreateContent(CVrStructureItem* newItem) override;
    bool HitChildren() const override { return true; }
    void DrawContent() override;

    // Shows a number given in tenths: -5 is "-0" and "5".
    void ShowTenths(int32_t tenths);
    // Shows a whole number; the fraction becomes 0, whether it shows or not.
    void ShowWhole(int32_t number);
    // Digits in the text colour of `page`, the fraction in the same at half strength, on the background of `page`.
    void TakeColors(const CVrGuiElement& page);

    int32_t wholePart = 22;
    int32_t fractionPart = 0; // 0..9
    bool isNegative = false;  // a minus stands also before a whole part of 0
    bool showFraction = true;
    bool unitOutside = false;        // the unit does not count where the number is centred
    CVrxStringU unit;                // "°"; empty: none
    uint32_t mainColor = 0xFF000000; // of digits and unit
    uint32_t dimColor = 0x80000000;  // of point and fraction
    uint32_t backColor = kUnpainted; // what a number that is too wide dissolves into

private:
    struct Piece;
    struct Pieces;

    CVrxStringU WholeText() const;
    void Show(int32_t whole, int32_t fraction, bool negative);
};
