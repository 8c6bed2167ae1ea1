// CVrGuiMainWin's rest: how the display falls asleep and wakes, and the values of the host that reach it. A display
// that is
//
//   awake    shows its page;
//   resting  (idle) shows the screen saver, or its page while it has none;
//   dark     (idle, displayOff) goes on painting; the next touch does nothing but wake it.
#include "shell/main_window.h"

#include <algorithm>

#include "foundation/clock.h"
#include "foundation/log.h"
#include "gui/application.h"
#include "structure/structure.h"

namespace {

constexpr uint8_t kRestDark = 0, kRestNever = 5; // values of `restMode`
constexpr uint64_t kMsPerSecond = 1000;
constexpr uint32_t kMostBrightness = 100; // percent

bool HasEntries() {
    return TheApplication()->Structure()->root.children.GetSize() > 0;
}

} // namespace

// ---------------------------------------------------------------------------------------------- falling asleep

// Whether the display has been left alone for so long that it rests. What holds the rest off counts as an
// interaction: a running control postpones it by a whole timeout.
bool CVrGuiMainWin::RestIsDue(uint64_t now) {
    if (idle || keepOn || interactionTimeout == 0 || now <= lastInteraction + interactionTimeout)
        return false;
    const bool heldOff = restMode == kRestNever || (!eco && restMode != kRestDark && FindActiveControl(this));
    if (heldOff)
        lastInteraction = now;
    if (restMode == kRestNever)
        SetScreenSaverVisible(false);
    return !heldOff;
}

void CVrGuiMainWin::ForceIdle() {
    idle = true;
    idleSince = TickMs();
    EnterIdle();
    RepaintAll();
}

void CVrGuiMainWin::EnterIdle() {
    const bool isPairing = pairingScreen && !pairingScreen->IsHidden();
    if (!HasEntries()) {
        idle = displayOff = false;
        idleSince = 0;
        SetScreenSaverVisible(false);
    } else if (restMode == kRestNever) {
        StayAwake();
    } else if (isPairing) {
        // it stays up
    } else if (!eco && restMode != kRestDark) {
        displayOff = false;
        SetScreenSaverVisible(true);
    } else {
        EnterDisplayOff();
    }
    Invalidate();
}

void CVrGuiMainWin::EnterDisplayOff() {
    displayOff = idle = true;
    if (idleSince == 0)
        idleSince = TickMs();
    RepaintAll();
}

// ---------------------------------------------------------------------------------------------- waking

void CVrGuiMainWin::StayAwake() {
    idle = displayOff = swallowUntilUp = false;
    idleSince = 0;
    lastInteraction = TickMs();
    SetScreenSaverVisible(false);
}

void CVrGuiMainWin::WakeFromDark() {
    StayAwake();
    ShowDefaultScreen();
    InvalidateTree();
}

// Somebody came near: a dark display shows its screen saver first, not the page.
void CVrGuiMainWin::WakeByPresence() {
    if (displayOff) {
        StayAwake();
        InvalidateTree();
    }
    swallowUntilUp = false;
    if (!HasEntries()) {
        idle = false;
        idleSince = 0;
        SetScreenSaverVisible(false);
    } else if (restMode == kRestNever) {
        StayAwake();
    } else {
        displayOff = false;
        idle = true;
        lastInteraction = TickMs();
        if (idleSince == 0)
            idleSince = lastInteraction;
        SetScreenSaverVisible(true);
    }
    RepaintAll();
}

// The screen saver lies on top of everything while it is up.
void CVrGuiMainWin::SetScreenSaverVisible(bool on) {
    if (!screenSaver)
        return;
    const bool wish = on && restMode != kRestNever && HasEntries();
    if (wish)
        screenSaver->SetParent(this);
    screenSaver->SetHidden(!wish);
    screenSaver->SetUpdate(1, true);
    Invalidate();
}

// ---------------------------------------------------------------------------------------------- values of the host

void CVrGuiMainWin::SetRestMode(uint8_t mode) {
    if (mode == restMode)
        return;
    if (restMode == kRestDark)
        WakeFromDark();
    restMode = mode;
    if (mode == kRestNever) {
        idle = swallowUntilUp = false;
        idleSince = 0;
        lastInteraction = TickMs();
        SetScreenSaverVisible(false);
        RepaintAll();
    } else if (idle) {
        EnterIdle();
    }
}

void CVrGuiMainWin::SetInteractionTimeout(uint32_t seconds) {
    interactionTimeout = seconds * kMsPerSecond;
    lastInteraction = TickMs();
    Log(LogState, "CVrGuiMainWin::UpdateInteractionTimeoutSetting", "Interaction timeout updated to %u sec",
        seconds);
}

void CVrGuiMainWin::SetKeepOn(bool on) {
    const bool changed = keepOn != on;
    keepOn = on;
    if (on && (displayOff || idle))
        WakeFromDark();
    else if (on || changed)
        lastInteraction = TickMs();
}

// With automatic brightness the gain alone decides.
void CVrGuiMainWin::SetBrightness(bool automatic, uint32_t percent, int32_t gain) {
    constexpr int32_t kStep = 5, kMiddle = 12; // percent a step; steps below the middle of the scale
    brightnessGain = gain;
    const int32_t value = automatic ? kStep * (gain + kMiddle) : static_cast<int32_t>(percent);
    brightness = std::min(static_cast<uint32_t>(std::max(value, 0)), kMostBrightness);
}

void CVrGuiMainWin::SetPresence(bool near) {
    const bool left = presenceKnown && presence && !near;
    presenceKnown = true;
    presence = near;
    if (near && (displayOff || idle)) {
        WakeByPresence();
        return;
    }
    lastInteraction = TickMs();
    if (left && !keepOn)
        EnterDisplayOff();
}

void CVrGuiMainWin::SetEco(bool on) {
    eco = on;
    if (on)
        EnterDisplayOff();
    else if (displayOff)
        WakeFromDark();
    else
        lastInteraction = TickMs();
}

void CVrGuiMainWin::SetNight(bool on) {
    if (night == on)
        return;
    night = on;
    RepaintAll();
}

void CVrGuiMainWin::SetDateTimeFormat(uint32_t timeFormat, uint32_t dateFormat) {
    constexpr uint32_t kOrderMask = 0xFF, kUnitShift = 8, kFirstWithSlash = 2;
    use24Hours = timeFormat != 0;
    dateOrder = dateFormat & kOrderMask;
    fahrenheit = (dateFormat >> kUnitShift & kOrderMask) == 1;
    dateSeparator = dateOrder < kFirstWithSlash ? '.' : '/';
}
