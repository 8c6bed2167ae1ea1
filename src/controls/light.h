// The page of a light controller: a grid of mood buttons, and above it, while a brightness was set by hand, the strip of
// the custom mood. The action bar switches the light and opens the brightness slider, whose two buttons repeat while they
// are held.
//
//   state     moods active   brightness   strip
//   off       none           0 or -1      hidden
//   one mood  one            any          hidden
//   mixed     several        any          hidden
//   custom    none           1 to 100     shown
//
// The item holds the state. Touches change it at once and send a command; whoever changes the item from elsewhere calls
// UpdateFromItem or RefreshView.
#pragma once

#include "gui/animation.h"
#include "shell/frame.h"

class CVrGuiActionbar;
class CVrGuiFrameBtn;
class CVrGuiPopupSlider;
class CVrStructureItemLightController2;
struct CVrLightMood;

class CVrGuiLightController2 : public CVrGuiFrame, public IVrAnimConsumer<CVrRect> {
public:
    CVrGuiLightController2();
    ~CVrGuiLightController2() override;

    CVrxStringU GetClassName() const override { return "LightController2"; }
    void OnLanguageChanged() override;
    bool ApplyLayout() override;
    bool AcceptsEvent(uint32_t) const override { return false; }
    void CreateContent(CVrStructureItem* newItem) override;
    void UpdateFromItem(CVrStructureItem* changed) override;
    // A tap on the strip, whose parent this page is.
    void OnChildSelected(CVrGuiElement* child, uint32_t newState) override;
    void OnChildEvent(CVrGuiElement* child, int32_t childId, uint32_t reported) override;
    void OnVisibilityChanged(bool hidden) override;
    // A step of the brightness while its button is held.
    bool OnTimer(uint64_t now) override;
    // The slider has another value. `force`: the command leaves too.
    void OnControlRefresh(bool force) override;
    void SetupActionbar() override;
    bool HasActionbar() override { return true; }
    bool IsScrollable() override;
    void FillArea(CVrStructureItem* newItem) override;
    // Brings buttons, strip, action bar and slider up to the item. Only what changes is flagged, so that a brightness
    // that follows a finger repaints no mood.
    virtual void RefreshView();
    void CopyFrame(const CVrGuiFrame& source) override;
    void OnAnimValue(CVrRect& value) override;

    CVrStructureItemLightController2* lightItem = nullptr; // whose moods the page shows; not owned
    CVrGuiFrameBtn* customButton = nullptr; // the strip: child of the page, over its area, kept over fills
    int32_t step = 0;                       // direction of the held brightness button: -1, 0 or +1
    CVrRect tweenFrom, tweenTo;
    uint32_t tweenDuration = 200; // ms
    CVrAnimCurve tweenCurve;
    CVrTweenAnimation<CVrRect> tween; // the strip grows
    bool tweenRunning = false;

private:
    // The action bar and the slider while they serve this page; null otherwise.
    CVrGuiActionbar* OwnActionbar() const;
    CVrGuiPopupSlider* OwnSlider() const;
    void SetupSlider();
    void HideSlider();

    void CreateCustomButton();
    void AddMoodButton(const CVrLightMood& mood);
    CVrLightMood* MoodOf(uint32_t button) const;
    CVrLightMood* FindMood(int32_t moodId) const;
    bool IsAnyMoodActive() const;
    bool IsAnyButtonSelected() const;
    void ClearMoods();
    void TurnOff();
    void Send(int32_t event, int32_t value) const;

    void OnMoodTap(CVrGuiFrameBtn& button);
    void OnPower();
    void OnCustomTap();
    void OnBrightness(bool brighter, bool released);
    void BeginStepping(bool brighter, int32_t value);
    void EndStepping();
    void StopStepping();
    void OpenSlider(bool withStrip);

    void ShowButtonStates();
    void ShowMixSymbols();
    void ShowPower();

    bool IsCustomShown() const;
    bool IsCustomDue() const;
    void ShowCustom(bool show, bool animate);
    void GlideArea(int32_t inset);
    void FinishTween();
    void StartTween();
    void SetStrip(const CVrRect& place);
    void PlaceCustom();
    void CentreCustomText();
    CVrRect StripRect(int32_t height) const;
};
