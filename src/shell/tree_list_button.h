// The list tile: a symbol, a title with a second line under it, and at the right end an arrow or a value. Lists of
// groups and controls, status pages and the value rows of the popup are made of it. It has three faces:
//
//   tile          a tap tells the listener
//   plain row     a read-only value: no background, no touch, a line between neighbours
//   push button   reports press and release; its background fades to dark and back
//
//   push: down    shown pressed, fades to dark, OnChildEvent(.., 0)
//         up      fades back after 100 ms, OnChildEvent(.., 1)
//         taken away by a drag: fades back at once, OnChildEvent(.., 1)
#pragma once

#include "shell/frame_button.h"

class CVrGuiTreeListBtn : public CVrGuiFrameListBtn {
public:
    CVrGuiTreeListBtn();

    bool ApplyLayout() override;
    // Title and symbol of an item; null gives a blank tile.
    void CreateContent(CVrStructureItem* newItem) override;
    void OnTouchDown(const CVrPoint& point) override;
    void OnTouchUp(const CVrPoint& point) override;
    void DrawContent() override;
    void DrawBackground() override;
    void OnClick(const CVrPoint& point) override;
    bool OnTimer(uint64_t now) override;
    bool OnPressCancelled() override;
    // Ends the press of a push button at once.
    virtual void ReleasePush();

    // A label that takes no touch; without an arrow.
    void SetStatusRow();
    // The text at the right end, in place of the arrow. "0" and "1" of an on/off value become words.
    void SetValueText(const CVrxStringU& newText);
    void SetPushMode();
    // Which of the two symbols of a push button shows.
    void SetPushShown(bool shown);
    // Renders `arrowIcon` anew from `arrowName` at `arrowSize`.
    void LoadArrow();
    // A row that shows something and takes no touch.
    bool IsPlain() const;

    CVrxStringU arrowName;   // static symbol at the right end
    uint32_t arrowSize = 48; // pixels
    CVrGuiIcon arrowIcon;
    bool arrowLoaded = false;  // `arrowIcon` has a bitmap
    CVrxStringU valueText;     // at the right end; beats the symbol
    CVrxStringU secondLine;    // under the title
    int32_t valueFont = -1;    // below 0: `fontIndex`
    uint32_t secondFont = 6;   // 35 pixels
    uint32_t arrowWidth = 44;  // pixels of the column of the right-end symbol
    uint32_t rightMargin = 18; // pixels, of a tile
    bool statusRow = false;
    bool pushMode = false;
    bool pushShown = false; // the symbol shows the pressed state
    bool fading = false;
    bool fadeIn = false;         // towards dark
    uint64_t fadeStart = 0;      // tick
    uint32_t fadeDelay = 0;      // ms before the change starts
    uint32_t fadeDuration = 150; // ms
    uint8_t fade = 0;            // 0: normal background, 255: dark

private:
    struct Paint;

    void LoadItemSymbol();
    void StartFade(bool in, uint32_t delay);
    void ReportPush(bool shown, uint32_t delay, uint32_t reported);
    uint32_t FadedBackground() const;
    void DrawTexts(const Paint& paint);
    int32_t DrawRightEnd(const Paint& paint);
    void DrawDivider(const Paint& paint);
    bool IsLastPlainRow() const;
};
