// A panel for a short digit code: ten keys, a row of dots that shows how far the entry has come and how much time is
// left, and up to two symbols above. A page that wants a code makes it as a child, sets what the fields say, hands the
// touches on (`hitElement` and OnTouchDown, OnTouchUp) and reads `value` and `entryState`: the keypad tells nobody.
//
//   key press    the row lights up          then every dotDelay ms the rightmost lit dot goes out
//   last digit   it stays, no countdown     time is up: the row is red; the value stays
//
// Lit dots have the colour of the digits (black by day), the others that of what is disabled: they tell how many digits
// are wanted.
#pragma once

#include "gui/button.h"
#include "shell/frame_area.h"

class CVrGuiFrameBtn;

class CVrGuiNumKeypad : public CVrGuiFrameArea {
public:
    static constexpr uint32_t kKeys = 10;
    static constexpr uint32_t kMaxDots = 10;
    static constexpr int32_t kCornerButtonId = 99;

    // Values of `entryState`.
    enum Entry : uint32_t { EntryEmpty = 0, EntryUnderWay = 1, EntryComplete = 2 };

    CVrGuiNumKeypad();

    CVrxStringU GetClassName() const override { return "Intercom"; }
    uint32_t GetCornerMask() const override { return cornerMask; }
    // Places keys, symbols and dots in the keypad's rectangle and begins the entry anew; `value` stays.
    bool ApplyLayout() override;
    void CreateContent(CVrStructureItem* newItem) override;
    // The key under the finger is `hitElement`.
    void OnTouchDown(const CVrPoint& point) override;
    void OnTouchUp(const CVrPoint& point) override;
    void DrawContent() override;
    bool OnTimer(uint64_t now) override;
    void OnColorsChanged() override;

    // Colour of one dot (0xAARRGGBB), of all with an index below 0.
    void SetDotColor(int32_t index, uint32_t color);

    uint32_t cornerMask = CornerAll;
    uint32_t dotCount = 4;                // at most kMaxDots show
    CVrxStringU cornerIconName;           // static symbol; shows only beside a head symbol
    CVrxStringU headIconName;             // static symbol
    CVrGuiButton* cornerButton = nullptr; // child, top right
    CVrGuiButton* headButton = nullptr;   // child, in the middle of the top edge
    CVrGuiFrameBtn* keys[kKeys] = {};     // children: 1 to 9, then 0
    uint32_t dotColors[kMaxDots] = {};    // 0xAARRGGBB
    uint32_t entryState = EntryEmpty;
    uint32_t dotSize = 0;  // pixels
    uint32_t dotPitch = 0; // pixels; 0: no dots
    CVrGuiIcon dotIcon;    // loaded by the creator
    uint32_t keyColor = 0; // background of a pressed key
    uint32_t lastDigit = 0;
    uint32_t value = 0; // the digits as a number
    uint32_t maxDigits = 4;
    uint32_t entered = 0;  // digits
    uint32_t dotDelay = 0; // ms for each dot of the countdown
    uint64_t pressTick = 0;
    int32_t dotsLeft = 0; // dots still black
    CVrElementRef<> pressedKey;

private:
    uint32_t ShownDots() const { return dotCount < kMaxDots ? dotCount : kMaxDots; }
    void ColorDots();
    void ResetEntry();
    CVrGuiButton* CreateSymbolButton(const CVrxStringU& symbol);
    void CreateSymbolButtons();
    void PlaceSymbolButton(CVrGuiButton& button, int32_t x, int32_t y, int32_t size);
    void PlaceKeys(const CVrRect& first);
    void PlaceKey(uint32_t index, const CVrRect& place);
    void ColorKey(CVrGuiElement& key) const;
    void ShowKey(uint32_t newState);
};
