// Values that the host changes while the display runs: night mode, background, rest, and those that only a system
// with sensors and a backlight of its own would send.
#pragma once

#include <cstdint>

#include "foundation/string.h"

// One message, or (as CVrGuiApp::runtime) the values in effect.
struct CVrRuntimeMessage {
    enum Flag : uint32_t {
        HasDisplayOn = 0x0001,
        HasDnd = 0x0002,
        HasDis = 0x0004,
        HasAbr = 0x0010,
        HasBrightness = 0x0020,
        HasVolume = 0x0040,
        HasBrDelta = 0x0080,
        HasBell = 0x0100,
        HasBrGain = 0x0200,
        HasPresence = 0x0400,
        HasNight = 0x0800,
        HasEco = 0x1000,
        HasBg = 0x2000,
        HasRest = 0x4000,
        HasRestDelay = 0x8000,
    };

    uint32_t flags = 0;      // which fields count
    uint8_t displayon = 0;   // display forced on
    uint8_t dnd = 0;         // do not disturb
    uint8_t dis = 0;         // stored only
    uint8_t abr = 0;         // automatic brightness
    uint8_t brightness = 60; // percent
    uint8_t volume = 80;     // percent
    int8_t brDelta = -2;     // -5..5
    uint8_t bell = 0;        // stored only
    int8_t brGain = 0;       // -5..5
    uint8_t presence = 0;    // somebody is near the display
    uint8_t night = 0;
    uint8_t eco = 0;
    uint32_t bg = 0xFFFFFF;  // 0x00BBGGRR
    uint8_t rest = 1;        // rest mode
    uint32_t restDelay = 60; // seconds

    bool Has(Flag flag) const { return (flags & flag) != 0; }
};

// Reads the keys "nightmode", "restmode", "color" and "restModeDelay" of one object; values are numbers. False if
// none of them is there.
bool ParseRuntimeJson(const CVrxStringU& text, CVrRuntimeMessage& message);
