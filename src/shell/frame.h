// A page of the display: the rounded panel under the menu row, its scrollable area, and the wiring of the
// action bar and the popups that it borrows while it is on screen. What stands in the area is the business of
// the control that derives from this class; where it stands is that of CVrGuiFrameArea.
#pragma once

#include "foundation/ptr_array.h"
#include "gui/element.h"

class CVrGuiFrameArea;
class CVrGuiMenuBtn;
class CVrGuiButton;

class CVrGuiFrame : public CVrGuiElement {
public:
    CVrGuiFrame();
    ~CVrGuiFrame() override;

    uint32_t GetCornerMask() const override { return CornerAll; }
    // Evaluates the style, takes over the menu row's room while that is hidden, and lays out area and action
    // bar. Returns false: the children have been laid out already.
    bool ApplyLayout() override;
    void CreateContent(CVrStructureItem* item) override;
    void OnVisibilityChanged(bool hidden) override;

    // Copies what `CopyFrom` copies and the coming-soon mark.
    virtual void CopyFrame(const CVrGuiFrame& source);
    // Prepares the four buttons of the shared action bar for this page; the control assigns them behind it.
    virtual void SetupActionbar();
    virtual void FillPopup() {}
    // Rebuilds the area for the first served item of that room, if there is one.
    virtual void SelectRoomItem(int32_t room);
    virtual void SetMenuButton(CVrGuiMenuBtn* button) { menuButton = button; }
    // The frame's rectangle in its parent, without the action bar's height where there is one.
    virtual CVrRect GetContentRect();
    virtual bool HasActionbar() { return false; }
    virtual bool HasGroupMenu() { return false; }
    virtual bool IsScrollable() { return false; }
    // The menu button of the page on screen was tapped again.
    virtual void OnMenuReselect() {}
    virtual void CreateArea();
    // Empties the area and builds it for `item` (null: the item of the last build). Controls call this version
    // first and then create their buttons.
    virtual void FillArea(CVrStructureItem* item);
    virtual void ReloadAreaColors();

    // Runs each time the page comes up: fills an empty area, fetches or hides the action bar and the popups.
    void Activate();
    // Shows the coming-soon text over the whole area instead of content.
    void AddComingSoonText();
    void PlaceComingSoonText();
    // Shortens the area by the action bar's height while that is visible.
    void ReserveActionbarSpace();
    // Renders the button's symbol again at the size that its style gives it now.
    static void FitIcon(CVrGuiButton& button);

    // Number of served items: the entries of `items`, or `item` alone when that list is empty.
    int32_t ServedCount() const;
    // Served item by index, 0 to ServedCount() - 1; null for an index out of range.
    CVrStructureItem* ServedItem(int32_t index) const;
    // The served item with this `uuid`, `item` first; null if there is none.
    CVrStructureItem* FindServedItem(uint32_t uuid) const;

    CVrGuiMenuBtn* menuButton = nullptr;  // null for a page without one; owned by the menu
    CVrGuiFrameArea* frameArea = nullptr; // child, created on demand
    CVrxPtrArray items;                   // CVrStructureItem*, not owned
    bool comingSoon = false;              // the page shows the coming-soon text instead of content

private:
    void ActivateActionbar();
    void HideActionbar();
    bool SharesParentWith(const CVrGuiElement& element, const CVrGuiElement& other) const;
};
