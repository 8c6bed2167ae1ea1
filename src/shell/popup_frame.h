// The two panels that float above a page: the popup frame with its list, and the popup slider frame with one wide
// slider. Each exists once and hangs under the page on screen; a control fills it and shows it from its action bar
// buttons. While either is up, the page behind it is darkened.
//
// Both are a rounded panel in the page's colour with a rim of another.
#pragma once

#include "gui/element.h"

class CVrGuiPopupMenu;
class CVrGuiPopupSlider;

class CVrGuiPopupFrame : public CVrGuiElement {
public:
    CVrGuiPopupFrame();

    uint32_t GetCornerMask() const override { return CornerAll; }
    // The menu inside sets the rectangle.
    bool ApplyLayout() override { return true; }
    void CreateContent(CVrStructureItem* newItem) override;
    void DrawContent() override;
    void OnVisibilityChanged(bool hidden) override;
    // A refusal closes the popup; the page is told either way.
    void OnPopupResult(bool accepted) override;

    CVrGuiPopupMenu* popupMenu = nullptr; // child; null if it could not be created
};

class CVrGuiPopupSliderFrame : public CVrGuiElement {
public:
    CVrGuiPopupSliderFrame();

    uint32_t GetCornerMask() const override { return CornerAll; }
    // Follows the parent's width. The y stays where the page has put it.
    bool ApplyLayout() override;
    void CreateContent(CVrStructureItem* newItem) override;
    void DrawContent() override;
    void OnVisibilityChanged(bool hidden) override;

    CVrGuiPopupSlider* popupSlider = nullptr; // child; null if it could not be created
};
