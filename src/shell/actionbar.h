// The row of up to four large buttons at the bottom of a page. There is one in the system; it hangs under the page on
// screen, whose control assigns each button's symbol, kind and id every time the page comes up.
#pragma once

#include "gui/button.h"

// What an action button does with a touch; the value of `actionMode`.
enum class ActionKind : uint32_t {
    Momentary = 1,   // looks pressed while the finger is on it; reports the release
    OpensSlider = 2, // the control sets the state; reports the release
    OpensMenu = 3,   // likewise
    Held = 4,        // looks pressed; reports touch-down (ids 1 and 2) and release, for values that repeat
    HeldValue = 5,   // likewise
};

class CVrGuiActionbarBtn : public CVrGuiButton {
public:
    CVrGuiActionbarBtn();

    uint32_t GetCornerMask() const override { return CornerAll; }
    void OnStart() override;
    void OnTouchDown(const CVrPoint& point) override;
    // Wherever the finger is lifted: the button has captured the touch.
    void OnTouchUp(const CVrPoint& point) override;
    bool OnPressCancelled() override;

    ActionKind Kind() const { return static_cast<ActionKind>(actionMode); }
    bool IsHeldKind() const { return Kind() == ActionKind::Held || Kind() == ActionKind::HeldValue; }
    bool IsLatching() const { return Kind() == ActionKind::OpensSlider || Kind() == ActionKind::OpensMenu; }
    void ShowState(uint32_t newState);
    // Shows a state of the house while nothing is open: this is what ResetButtons goes back to. Until SetButton.
    void SetRestState(uint32_t newState);

    CVrElementRef<> owner;            // the page that gets the events
    uint32_t restState = StateNormal; // of a latching button

private:
    void LetGo();
    void Release();
};

class CVrGuiActionbar : public CVrGuiElement {
public:
    static constexpr uint32_t kMaxButtons = 4;

    CVrGuiActionbar();

    uint32_t GetCornerMask() const override { return CornerAll; }
    // The visible buttons share the width. The y stays where the page has put the bar.
    bool ApplyLayout() override;
    void CreateContent(CVrStructureItem* newItem) override;
    void OnChildSelected(CVrGuiElement* child, uint32_t newState) override;

    // Assigns the button at `index` and shows it; `symbolName` is a static symbol. Nothing for an index without a button.
    void SetButton(uint32_t index, CVrGuiElement* buttonOwner, int32_t buttonId,
                   const CVrxStringU& symbolName, ActionKind kind);
    // Takes the mark of an open popup off every latching button.
    void ResetButtons();
    // The button at `index`; null if there is none.
    CVrGuiActionbarBtn* Button(uint32_t index) const;
};
