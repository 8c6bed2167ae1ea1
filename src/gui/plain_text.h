// The text elements: labels in two sizes, the notice of a control that this display cannot operate yet, and
// an empty coloured panel. None of them takes events.
#pragma once

#include "gui/button.h"

// A label; the creator sets `layout` and `text`.
class CVrGuiPlainText : public CVrGuiButton {
public:
    CVrGuiPlainText();
};

class CVrGuiPlainTextSmall : public CVrGuiButton {
public:
    CVrGuiPlainTextSmall();
};

// Stands over a whole page, with the symbol in the colour of the text.
class CVrGuiComingSoonText : public CVrGuiPlainText {
public:
    CVrGuiComingSoonText();
    void OnColorsChanged() override;
    void OnLanguageChanged() override;
};

class CVrGuiBackgroundPanel : public CVrGuiButton {
public:
    CVrGuiBackgroundPanel();
    uint32_t GetCornerMask() const override { return cornerMask; }

    uint32_t cornerMask = CornerNone; // bits of CornerMask
};
