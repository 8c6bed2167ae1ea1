// The style sheet: where the elements of each class sit in their parent, how they are coloured, the fonts,
// and a few numbers of the layout. Values, fonts and colours are addressed by position; their order in the
// file is a contract.
#pragma once

#include <cstdint>

#include "foundation/geometry.h"
#include "foundation/ptr_array.h"
#include "foundation/string.h"
#include "foundation/string_array.h"

class CVrJsonValue;

// Positions in the list of values.
namespace StyleValue {
enum : uint32_t {
    VerySmallSymbol = 0,
    SmallSymbol = 1,
    NormalSymbol = 2,
    BigSymbol = 3,
    VeryBigSymbol = 4,
    MenuAddSymbol = 5,
    MenuMaxVisible = 6,
    FrameListMaxVisible = 7,
    PopupMenuMaxVisible = 8,
    PopupSliderButtonWidth = 9,
    ActionbarMaxButtons = 10,
    ActionbarGap = 11,
    CoverColumns = 12,
    CoverSize = 13,
    CoverButtonHeight = 14,
    MoveTolerance = 15,
};
} // namespace StyleValue

// Positions in the list of fonts.
namespace FontIndex {
enum : uint32_t {
    VerySmall = 0,
    Cover = 1,
    Small = 2,
    SmallBold = 3,
    Smaller = 4,
    SmallerBold = 5,
    Normal = 6,
    NormalBold = 7,
    Bigger = 8,
    BiggerBold = 9,
    Big = 10,
    BigBold = 11,
    HeaderBold = 12,
    VeryBig = 13,
    VeryBigBold = 14,
    ExtremBig = 15,
    Huge = 16,
};
} // namespace FontIndex

// A layout string, parsed: a list of key=value items such as "l=6,t=110,r=6,b=6,rad=25". The keys x and l, y
// and t, w and r, h and b share a number each; of two in one string the later one wins it, while both bits
// stay set.
struct CStyle {
    enum MaskBit : uint32_t {
        AbsoluteX = 1,
        AbsoluteY = 2,
        AbsoluteW = 4,
        AbsoluteH = 8,
        PercentX = 16,
        PercentY = 32,
        PercentW = 64,
        PercentH = 128,
        Left = 0x100,
        Top = 0x200,
        Right = 0x400,
        Bottom = 0x800,
        AllMargins = Left | Top | Right | Bottom,
    };

    uint32_t mask = 0; // which numbers are set, and how
    int32_t x = 0;     // or the distance from the left
    int32_t y = 0;     // or the distance from the top
    int32_t w = 0;     // or the distance from the right
    int32_t h = 0;     // or the distance from the bottom
    int32_t rad = 0;   // corner radius
    int32_t gap = 0;   // a spacing that the users of the style interpret
    int32_t all = 0;   // kept; nothing reads it
    CVrxStringU spec;  // the string as written

    void Parse(const CVrxStringU& text);

    // The rectangle in a reference of that size; null for an element without a parent, where percentages and
    // the distances from right and bottom do not count.
    CVrRect Evaluate(const CVrSize* reference) const;

    // Distance of an edge from the reference's; 0 where the string gives none.
    int32_t RightDistance() const { return mask & Right ? w : 0; }
    int32_t BottomDistance() const { return (mask & Bottom) && !(mask & AbsoluteH) ? h : 0; }

private:
    void SetItem(const CVrxStringU& key, const CVrxStringU& value);
};

// One row of the table of element classes.
struct CVrClassStyle {
    static constexpr uint32_t kColors = 10;

    CVrxStringArray colorNames;
    uint8_t colorIndex[kColors] =
        {}; // index in the colour list of each colour slot; 0 (transparent) if unknown
    CVrxStringU className;
    uint32_t startFlags = 0; // value for the element's `flags`
    CVrxStringU styleName;   // name of the entry in the file
    CStyle element, text,
        symbol; // layouts of the element in its parent, and of text and symbol in the element
};

struct CVrColorSpec {
    CVrxStringU name;
    CVrxStringU valueText; // hexadecimal digits or another colour's name
    uint32_t value = 0;    // 0xAARRGGBB
};

struct CVrFontSpec {
    CVrxStringU name;
    int32_t size = 0; // pixels
    bool bold = false;
};

struct CVrStyleValue {
    CVrxStringU name;
    int32_t value = 0;
};

class CVrStyleSheet {
public:
    CVrStyleSheet() = default;
    ~CVrStyleSheet();
    CVrStyleSheet(const CVrStyleSheet&) = delete;
    CVrStyleSheet& operator=(const CVrStyleSheet&) = delete;

    // Fills the table of element classes; a second call starts anew.
    void PrepareClasses();
    // Reads the sheet into the prepared table. False, and a log line, for a text that cannot be parsed.
    bool Load(const CVrxStringU& text);

    // The row of an element type; a type beyond the table gets row 0. Null before PrepareClasses.
    const CVrClassStyle* Row(int32_t type) const;
    // 0 for an index beyond the list.
    uint32_t Color(uint32_t index) const;
    int32_t Value(uint32_t index) const;

    VrPtrs<CVrColorSpec> colorList; // owned, like the other lists
    VrPtrs<CVrFontSpec> fonts;
    VrPtrs<CVrStyleValue> values;
    CVrxStringArray classNames;
    VrPtrs<CVrClassStyle> classRows;

private:
    void ClearLists();
    void ClearRows();
    void LoadColors(const CVrJsonValue* list);
    void LoadFonts(const CVrJsonValue* list);
    void LoadValues(const CVrJsonValue* list);
    void LoadRows(const CVrJsonValue* list);
    void LoadRow(const CVrJsonValue& entry);
    int32_t FindColor(const CVrxStringU& name) const;
};
