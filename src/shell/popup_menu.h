// The list in the popup frame, in three modes: a plain list, the volumes of a group of players with the group's own on
// top, and a fixed table of values. It gives the frame around it its rectangle: the frame's bottom stays where it is,
// the frame grows upwards. A list longer than the frame shows half a row more, as a sign that it goes on, and scrolls.
#pragma once

#include "shell/scroll_area.h"

class CVrGuiPopupMenuSlider;
class CVrGuiTreeListBtn;

// Values of `popupMode`.
enum class PopupMode : uint32_t { List = 0, Volumes = 1, Values = 2 };

// One line of the volume list below its master row.
struct CVrVolumeRow {
    int32_t id = 0; // of the player; given to the row
    CVrxStringU name;
};

class CVrGuiPopupMenu : public CVrGuiScrollArea {
public:
    static constexpr int32_t kMasterRowId = 255;

    CVrGuiPopupMenu();

    // Places the frame, then the rows, and decides whether they scroll.
    bool ApplyLayout() override;
    void OnStart() override;
    void DrawContent() override;
    // Ends the press of the row that is held, along with the menu's own.
    bool OnPressCancelled() override;

    // The volume list: the master row, then one row for each of `rows`. All take touches and report to `control` with
    // OnControlRefresh. Rows that are there already in the same order are kept, with their values.
    void ShowVolumeRows(CVrGuiElement* control, const CVrVolumeRow* rows, uint32_t count);
    // The table of climate values: temperature in tenths of a degree, humidity in percent, CO2 in ppm.
    void ShowValueRows(uint32_t co2, uint32_t humidity, int32_t temperature);
    // A new row of the table; null if it cannot be created.
    CVrGuiTreeListBtn* AddValueRow(const CVrxStringU& title, const CVrxStringU& value);
    // Other texts for a row of the table; null if there is no such row.
    CVrGuiTreeListBtn* SetValueRow(uint32_t index, const CVrxStringU& title, const CVrxStringU& value);
    // A new slider with symbols and title, which takes no touches yet; null if it cannot be created.
    CVrGuiPopupMenuSlider* AddSliderRow(int32_t rowId, const CVrxStringU& title);
    // The slider row with this id; null if there is none or the list is in another mode.
    CVrGuiPopupMenuSlider* FindSliderRow(int32_t rowId) const;
    // The row that is being held; null: none.
    void SetHighlightedRow(CVrGuiElement* row);

    PopupMode popupMode = PopupMode::List;
    int32_t visibleRows = 0;        // rows shown without scrolling
    int32_t rowGap = 0;             // pixels between rows
    int32_t rowHeight = 0;          // pixels
    CVrElementRef<> highlightedRow; // repainted on a change
    CVrElementRef<> heldRow;        // a row whose press is cancelled along with the menu's

private:
    struct Margins {
        int32_t left = 0, top = 0, right = 0, bottom = 0;
    };
    struct Span {
        int32_t x = 0, width = 0;
    };

    static Margins MarginsOf(const CVrGuiElement& element);
    Span FrameSpan() const;
    void PlaceFrame();
    void SizeFrame(int32_t width, int32_t height, int32_t bottom);
    void LayOutTable(int32_t bottom);
    void LayOutRows(int32_t bottom);
    int32_t PlaceRows(int32_t& cut);
    void BeginRows(PopupMode mode);
    void FinishRows();
    bool HasVolumeRows(const CVrVolumeRow* rows, uint32_t count) const;
    bool HasValueRows() const;
    void ShowValueRow(uint32_t index, const CVrxStringU& title, const CVrxStringU& value);
};
