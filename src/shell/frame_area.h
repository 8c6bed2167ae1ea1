// The scrollable surface of a page. It places the buttons of a control in a grid, list buttons in a column,
// tiles and shade elements (rows of a list, or one or two side by side) by their own rules, and can glide buttons from old places to new ones.
#pragma once

#include "gui/animation.h"
#include "shell/scroll_area.h"

class CVrGuiFrame;

class CVrGuiFrameArea : public CVrGuiScrollArea, public IVrAnimConsumer<CVrAnimArray<CVrRect>> {
public:
    CVrGuiFrameArea();
    ~CVrGuiFrameArea() override;

    uint32_t GetCornerMask() const override { return CornerTopLeft | CornerTopRight; }
    bool ApplyLayout() override;
    void DetachChildren() override;
    void DeleteChildren() override;
    // A button's tap: stores the button's state and tells its listener.
    void OnChildSelected(CVrGuiElement* child, uint32_t state) override;
    // A finger on the content closes what a popup had open.
    void OnDragBegin() override;
    void OnAnimValue(CVrAnimArray<CVrRect>& rects) override;

    // Every child back to the normal state.
    void ClearSelection();
    // Rectangle of grid button `index` in the area; lays out the button's own style first. An index of -1 or
    // a `buttonCount` of 0 gives an empty cell.
    CVrRect GridRect(CVrGuiElement& button, int32_t index);
    // Gives a switch or push button its place: one, two or three large ones, the grid for more.
    void PlaceSwitchButton(CVrGuiElement& button, int32_t index);

    int32_t buttonCount = 0;    // grid buttons that the control created
    int32_t laidOutCount = 0;   // the buttonCount that the row table was built for
    int32_t rowCols[3] = {};    // columns of row 0, of row 1, of all later rows
    int32_t rowCount = 0;       // rows that share the height
    int32_t totalRows = 0;      // all rows of the grid
    int32_t gap = 0;            // pixels between cells
    int32_t fixedCols = 0;      // not 0: a grid of that many columns of cellW by cellH
    int32_t topInset = 0;       // pixels kept free at the top for a widget of the control
    bool animateLayout = false; // ApplyLayout glides the buttons to their new places
    CVrAnimArray<CVrRect> fromRects, toRects;
    uint32_t duration = 200; // ms
    CVrAnimCurve curve;
    CVrTweenAnimation<CVrAnimArray<CVrRect>> tween;
    int32_t cellW = 0, cellH = 0; // cell of a fixed grid
    bool layoutFixed = false;     // a control has set the area's rectangle; the style is not evaluated

protected:
    // The page that this area belongs to; null while detached.
    CVrGuiFrame* Frame() const;

private:
    struct Margins {
        int32_t left = 0, top = 0, right = 0, bottom = 0;
    };
    struct TileColumn {
        int32_t count = 0, left = 0, gap = 0, heightSum = 0;
        bool shared = false;         // the tiles divide the area's height among them
        int32_t share = 0, rest = 0; // pixels each, and what the last one gets on top
        int32_t bottom = 0;          // bottom edge of the last placed tile
    };

    static Margins ButtonMargins(const CVrGuiElement& button);
    static int32_t WantedHeight(CVrGuiElement& child, int32_t areaHeight);
    int32_t AvailableHeight(CVrGuiFrame* frame) const;
    int32_t InsetWithGap() const { return topInset > 0 ? topInset + gap : topInset; }
    void BuildRowTable();
    CVrRect FixedGridRect(const Margins& margins, int32_t index) const;
    TileColumn MeasureTiles(int32_t height);
    void PlaceShades(int32_t height);
    CVrRect ShadeRow(int32_t index, int32_t count, int32_t height) const;
    CVrRect ShadeColumn(int32_t index, int32_t columns, int32_t height) const;
    void PlaceChildren(CVrGuiFrame* frame, TileColumn& tiles, int32_t height);
    void PlaceTile(CVrGuiElement& tile, TileColumn& tiles, int32_t placed, int32_t height);
    int32_t PlaceListButton(CVrGuiElement& child, int32_t y) const;
    void SetTileEvents();
    void EnterScrollMode(CVrGuiFrame* frame, const TileColumn& tiles);
    void FinishRunningTween();
    void StartGlide();
};
