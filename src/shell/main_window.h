// The root of the element tree. It turns the loaded structure into pages and menu buttons, decides which page
// is up, filters every touch before the tree sees it, keeps the time since the last interaction, and paints
// the two full-screen messages over the finished picture.
//
// The parts live in files of their own: screen_builder.cpp makes the pages, status_panel.cpp paints the
// messages, root_animation.cpp leads single elements over a saved picture, rest.cpp falls asleep and wakes,
// main_window.cpp holds what remains.
#pragma once

#include "foundation/mutex.h"
#include "gui/element.h"
#include "shell/menu.h"
#include "shell/root_animation.h"

class CVrGuiActionbar;
class CVrGuiFrame;
class CVrGuiMenuBtn;
class CVrGuiPopupFrame;
class CVrGuiPopupSliderFrame;

class CVrGuiMainWin : public CVrGuiElement {
public:
    CVrGuiMainWin();
    ~CVrGuiMainWin() override;

    // Stores the size and allocates the root's pixel store.
    void SetSize(const CVrRect& size) override;
    bool IsMainWin() const override { return true; }
    // The root's rectangle is never evaluated again.
    bool ApplyLayout() override { return true; }
    void OnStart() override;
    // Sends the (still blank) store as the first frame, makes the tree paintable and waits for splashMs.
    void ShowSplash() override;
    // Builds one hidden page and one menu button for each top-level entry below `rootItem`, and the elements
    // that all pages share. Does nothing for null or when the menu exists already.
    void CreateContent(CVrStructureItem* rootItem) override;
    // An interaction: everything that belongs to the rest starts anew.
    void RestartTimer() override;
    bool OnTimer(uint64_t now) override;
    bool RouteEvent(uint32_t eventType, const CVrPoint& point) override;
    // Without the elements that a root animation leads.
    void Draw(bool force, bool compose) override;

    // Takes the root's row of the style sheet, once that is loaded.
    void AdoptStyle();
    // Forgets the shared children; to be called when all children have been deleted, before the next
    // CreateContent.
    void ClearChildLinks();
    // Shows the first page, or the message for an empty structure. Called once, when the tree has started.
    void SelectInitialScreen();
    // Brings up the page of the item that is marked as default screen. False when there is none.
    bool ShowDefaultScreen();
    void SetEmptyConfiguration(bool on);
    // Paints a full-screen message straight into the root's store, `text` in UTF-8; with a spinner that turns
    // with the clock.
    void DrawStatusPanel(const char* statusText, bool withSpinner);
    // A visible popup frame or popup slider frame.
    bool IsPopupUp() const;
    // Hides the popups that are up. With the popup frame goes the mark of the buttons that open popups.
    void ClosePopups();
    // Deletes the rows of the popups: they are never carried from one page to another.
    void EmptyPopups();
    // Takes the mark off every button of the action bar that opens a popup.
    void ResetActionbarButtons();
    // Parent and visibility of what the pages share: all hang under `page`; the bar shows, the popups do not.
    void LendSharedElements(CVrGuiElement& page);
    void HideSharedElements();
    // Flags everything for a repaint, hidden or not.
    void RepaintAll();
    // The first visible page that serves a running control marked as the room's active one; it postpones the rest.
    // Null when nothing runs.
    CVrGuiElement* FindActiveControl(CVrGuiElement* element) const;

    // ---- Rest (rest.cpp) ----

    // The display rests at once, whatever the time.
    void ForceIdle();
    // What the display shows while it rests; `idle` is set already.
    void EnterIdle();
    void EnterDisplayOff();
    void WakeByPresence();
    // Nothing while there is no screen saver: the display then rests on its page.
    void SetScreenSaverVisible(bool on);
    void SetRestMode(uint8_t mode); // 0..5
    void SetInteractionTimeout(uint32_t seconds);
    void SetKeepOn(bool on);
    void SetBrightness(bool automatic, uint32_t percent, int32_t gain);
    void SetPresence(bool near);
    void SetEco(bool on);
    void SetNight(bool on);
    void SetDateTimeFormat(uint32_t timeFormat, uint32_t dateFormat);

    // ---- Root animations, see root_animation.h ----

    static constexpr uint32_t kLongestStep = 1U << 20; // pixels a pass
    // Fill a slot; the element is painted from there on only by the animation, which begins with the next pass. False:
    // the slot is taken, or there is nothing to do. Positions are relative to the element's parent. Clip and listener
    // of a move are set in the slot behind this. An element that has no store of its own shows only where the screen
    // holds all of it.
    bool ArmMove(CVrGuiElement& element, int32_t startY, int32_t targetY, uint32_t pixelsPerPass);
    bool ArmFade(CVrGuiButton& button, uint32_t passes);
    bool ArmScroll(CVrGuiElement& element);
    // The tree must not be painted: the picture would lack an element.
    bool LeavesElementsOut() const;
    // True: a slot is filled and its animation runs; then StepAnimations.
    bool StartAnimations();
    // True: all is over, and the tree should be painted.
    bool StepAnimations();
    // Ends all at once. Any work of the main loop may call it.
    void RemoveAnimations();
    // The picture of the rest is no longer true; the next pass saves it anew.
    void DropSavedPicture();

    CVrGuiMenu* menu = nullptr;                         // child; null until CreateContent
    CVrGuiActionbar* actionbar = nullptr;               // owned by the page that it hangs under at the moment
    CVrGuiPopupFrame* popupFrame = nullptr;             // likewise
    CVrGuiPopupSliderFrame* popupSliderFrame = nullptr; // likewise
    CVrGuiElement* pairingScreen = nullptr;             // child, made on demand
    CVrGuiElement* screenSaver = nullptr;               // child, made on demand
    uint32_t brightness = 60;                           // percent
    uint32_t splashMs = 500;                            // how long the splash stays before the load goes on
    bool idle = false;                                  // the display rests
    bool keepOn = false;                                // the interaction timeout does not run
    bool dnd = false, dis = false;                      // stored only
    bool displayOff = false;                            // dark; a touch then only wakes
    bool eco = false;                                   // rest goes dark, never to the screen saver
    bool swallowUntilUp = false; // the rest of the touch that woke the display is dropped
    bool presence = false, presenceKnown = false;
    bool night = false;
    int32_t brightnessDelta = -2; // -5..5, stored only
    int32_t brightnessGain = 0;   // -5..5, stored only
    uint64_t idleSince = 0;       // tick; 0 while awake
    uint64_t lastInteraction = 0; // tick
    CVrGuiMoveAnimation moveAnimation;
    CVrGuiScrollAnimation scrollAnimation;
    CVrGuiButtonAnimation buttonAnimation;
    CVrMutex animationLock;        // guards the three slots
    uint32_t roomCo2 = 0;          // ppm
    int32_t roomTemperature = 220; // tenths of a degree Celsius
    uint32_t roomHumidity = 0;     // percent
    bool use24Hours = true;
    uint32_t dateOrder = 0;
    uint32_t fahrenheit = 0;
    char dateSeparator = '.';
    uint8_t restMode = 1;                 // 0..5
    uint64_t interactionTimeout = 60'000; // ms; 0 switches it off
    bool loading = false;                 // the loading message is up, all touch is ignored
    bool emptyConfiguration = false;      // the message for an empty structure is up
    bool swallowAfterPopup = false;       // from a down that closed a popup until the matching up

private:
    void StayAwake();
    void WakeFromDark();
    bool SavePicture();
    bool StepFade();
    bool StepMove();
    void PresentAnimations();
    void PaintOver(CVrGuiElement& element);
    void LetPictureThrough(const CVrGuiButton& button);
    size_t StoreBytes() const {
        return sizeof(uint32_t) * static_cast<size_t>(storeSize.width) *
               static_cast<size_t>(storeSize.height);
    }
    bool TapClosesPopup(const CVrPoint& point) const;
    bool RestIsDue(uint64_t now);
    void AddLeafEntry(CVrStructureItem& entry, CVrGuiFrame*& firstPage);
    void AddGroupEntry(CVrStructureItem& entry, CVrGuiFrame*& firstPage);
    CVrGuiFrame* AddPage(const CVrxStringU& pageClass, CVrStructureItem& entry, int32_t pageType);
    CVrGuiMenuBtn* AddMenuButton(CVrStructureItem& entry, CVrGuiFrame& page);
    void CreateSharedElements(CVrGuiElement& home);
};

// The root of the running application; null before command 1 and in tests without one.
CVrGuiMainWin* MainWindow();
