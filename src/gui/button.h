// The workhorse of the toolkit: whatever shows text (one line, two or many), a symbol, a picture or a vector
// animation on a coloured, rounded background is a button or derives from one, plain labels too.
//
// It has no press logic of its own. Subclasses set `eventMask` and `state`; this class paints what `state`
// selects.
#pragma once

#include "gui/element.h"
#include "gui/icon.h"

class CVrVectorPlayer;
struct CVrGuiImage;

class CVrGuiButton : public CVrGuiElement {
public:
    // Bits of `layout`; 0: no content is painted. Without LayoutIconLeft or LayoutIconRight the symbol is
    // centred horizontally, without LayoutTextBelow or LayoutTextBottom the text is centred vertically.
    enum Layout : uint32_t {
        LayoutIcon = 0x001,      // with LayoutTextCenter: above the text; alone: some content is painted
        LayoutIconLeft = 0x002,  // at the `symbol` gap of the style
        LayoutIconRight = 0x004, // likewise
        LayoutTextCenter = 0x010,
        LayoutTextLeft = 0x020,   // at the `text` gap of the style, or behind a left symbol
        LayoutTextRight = 0x040,  // at the `text` gap
        LayoutTextBelow = 0x100,  // below the picture; without one at the bottom
        LayoutTextBottom = 0x200, // at the bottom, over a picture if there is one
        LayoutShorten = 0x400,    // the first line ends in "..." where it does not fit
        LayoutWrap = 0x800,       // the text goes over several lines

        // Any of these draws the text.
        LayoutAnyText = LayoutTextCenter | LayoutTextLeft | LayoutTextRight | LayoutTextBelow |
                        LayoutTextBottom | LayoutShorten,

        LayoutStacked = LayoutIcon | LayoutTextCenter,
        LayoutStackedWrapped = LayoutStacked | LayoutWrap,
        LayoutIconBesideText = LayoutIconLeft | LayoutTextLeft | LayoutShorten,
        LayoutIconOverBottomText = LayoutIcon | LayoutTextLeft | LayoutTextBottom | LayoutShorten
    };

    // Values of `alphaRamp`; every value but the first two fades to the right.
    enum AlphaRamp : uint32_t { RampNone = 0, RampFadesLeft = 1, RampFadesRight = 2 };

    CVrGuiButton();
    ~CVrGuiButton() override;

    void OnStart() override { LoadIcons(); }
    void DrawContent() override;
    bool OnTimer(uint64_t now) override;
    void OnStateChanged() override {}

    virtual void CopyButton(const CVrGuiButton&) {} // copies what a subclass adds
    virtual void OnActionModeChanged() {}           // after `actionMode` was set
    virtual void OnFadeEnd() {}                     // the root has faded the button in, or given it up
    // The symbol for a size in pixels; null if there is no bitmap of that size to be had.
    virtual CVrGuiIcon* GetIconForSize(uint32_t size);

    // Renders `icon` and `addIcon` where they are missing; a text that could not be parsed is not tried
    // again.
    void LoadIcons();
    // Renders `icon` anew, for another name, size or set; true if there is a bitmap now. Nothing without a
    // name.
    bool ReloadIcon();
    // (Re)starts the timer of `vector`, or stops it.
    void RestartVector();
    // Shows another picture; a former one that was owned is deleted.
    void SetImage(CVrGuiImage* newImage, bool owned);

    CVrGuiIcon icon;
    CVrGuiIcon addIcon;                // in the top right corner
    CVrGuiIcon altIcon;                // `icon` at another size
    CVrElementRef<> linkedElement;     // the page that a menu button opens
    uint32_t layout = 0;               // bits of Layout
    uint32_t fontIndex = 7;            // first line: 35 pixels, bold
    uint32_t font2Index = 6;           // second line: 35 pixels
    uint32_t actionMode = 1;           // read by action bar buttons
    uint32_t alphaRamp = RampNone;     // over the own store
    CVrGuiImage* image = nullptr;      // instead of the background
    CVrVectorPlayer* vector = nullptr; // instead of `icon`; not owned
    bool ownsImage = false;            // `image` is deleted here
    uint32_t vectorPeriod = 0;         // ms; 0 stands for 50
    int32_t textOffsetY = 0;
    int32_t iconOffsetY = 0;
    int32_t textOffsetX = 0;
    int32_t iconOffsetX = 0;
    int32_t stackGap = 10; // between symbol and text when stacked
    // While the root fades the button in: passes that are over, of how many.
    uint32_t fadeCounter = 0, fadeLength = 0;

protected:
    // Where things are painted, in coordinates of the target store.
    struct Placement {
        CVrPoint symbol;
        CVrPoint first; // first line of the text
        CVrPoint second;
    };

    bool Has(uint32_t bits) const { return (layout & bits) != 0; }
    bool HasSymbol() const;
    // What lies under text and symbol: the picture, if there is one. May move the text.
    virtual void DrawUnderlay(CVrGuiElement& target, Placement& place, const CVrPoint& origin);
    // Moves the text to its place below or over the picture.
    void PlaceTextByPicture(Placement& place) const;
    virtual uint32_t SecondLineColor() const { return TextColor(); }
    virtual void DrawAddIcon(CVrGuiElement& target, const CVrPoint& origin);

private:
    struct Lines;

    bool IsStacked() const { return (layout & LayoutStacked) == LayoutStacked; }
    uint32_t ShownIconSize() const;
    void SplitText(Lines& lines) const;
    void MeasureLines(Lines& lines) const;
    void PlaceSymbol(Placement& place, const CVrPoint& origin) const;
    void PlaceTextX(Placement& place, Lines& lines, const CVrPoint& origin) const;
    void PlaceTextY(Placement& place, const Lines& lines, const CVrPoint& origin) const;
    // `bottom`: the button's lower edge in the target.
    void DrawTextLines(CVrGuiElement& target, const Placement& place, const Lines& lines, int32_t bottom);
    void DrawWrapped(CVrGuiElement& target, const Placement& place, const Lines& lines, int32_t bottom);
    void DrawSymbol(CVrGuiElement& target, const Placement& place);
    void ApplyAlphaRamp();
    int32_t GapOfText() const;
    int32_t GapOfSymbol() const;
};
