// The page of a room climate controller: what the room is doing, its temperature in large digits, the target with its
// limit word, and the mode. The action bar steps the target, returns to the schedule and opens a table of room values.
//
// All temperatures are tenths of a degree. The page keeps copies of the item's fields and shows these; UpdateFromItem is
// the one way in. A command changes nothing here: the answer brings the new target.
#pragma once

#include "gui/icon.h"
#include "shell/frame.h"

class CVrGuiActionbar;
class CVrGuiBackgroundPanel;
class CVrGuiPlainText;
class CVrGuiTemperatureWidget;

class CVrGuiHeatIRoomController2 : public CVrGuiFrame {
public:
    CVrGuiHeatIRoomController2();

    CVrxStringU GetClassName() const override { return "HeatIRoomController2"; }
    void OnColorsChanged() override;
    void OnLanguageChanged() override;
    bool ApplyLayout() override;
    void UpdateFromItem(CVrStructureItem* changed) override;
    void OnChildEvent(CVrGuiElement* child, int32_t childId, uint32_t reported) override;
    void SetupActionbar() override;
    void FillPopup() override;
    bool HasActionbar() override { return true; }
    bool HasGroupMenu() override { return true; }
    void FillArea(CVrStructureItem* newItem) override;
    void CopyFrame(const CVrGuiFrame& source) override;

    int32_t currentTemp = 0;   // tenths
    int32_t targetTemp = 210;  // tenths
    int32_t operatingMode = 0; // as in the item
    int32_t activeMode = 0;    // as in the item
    int32_t modeSymbol = 0;    // number of the static symbol now loaded; 0: none
    CVrGuiIcon modeImage;      // that symbol
    // Children of the area; null until it is filled.
    CVrGuiBackgroundPanel* backPanel = nullptr; // hidden
    CVrGuiPlainText* modeText = nullptr;        // "Heating"
    CVrGuiPlainText* modeSymbolText = nullptr;  // flame or snowflake, left of it
    CVrGuiTemperatureWidget* widget = nullptr;
    CVrGuiPlainText* targetText = nullptr;     // "Min 21.0"
    CVrGuiPlainText* activeModeText = nullptr; // "Comfort"

private:
    bool IsOff() const;
    CVrxStringU ModeWord() const;
    CVrxStringU ActiveModeWord() const;
    CVrxStringU TargetWord() const;
    int32_t WantedSymbol() const;

    CVrGuiPlainText* AddText(uint32_t layoutBits, uint32_t font);
    void CreateAreaContent();
    void ShowTexts();
    void ShowSymbol();
    bool LoadSymbol(int32_t number);
    void DropSymbol();
    void ColorTexts();
    void PlaceModeRow(int32_t width, int32_t y);
    void AssignScheduleButton(CVrGuiActionbar& bar);
    bool OwnsActionbar() const;
    bool IsInfoUp() const;
    void ToggleInfo();
    void CloseInfo();
    void SendCommandOf(int32_t button);
};
