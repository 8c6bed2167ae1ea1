// Reading of runtime messages, and the two handlers of CVrGuiApp that turn a message of the host into changed state.
#include "app/runtime_settings.h"

#include <algorithm>

#include "app/color_scheme.h"
#include "app/gui_app.h"
#include "app/settings.h"
#include "foundation/files.h"
#include "foundation/json.h"
#include "foundation/log.h"
#include "foundation/translator.h"

namespace {

constexpr int8_t kMostBrightnessStep = 5;

int8_t BrightnessStep(int8_t value) {
    return std::clamp<int8_t>(value, -kMostBrightnessStep, kMostBrightnessStep);
}

} // namespace

bool ParseRuntimeJson(const CVrxStringU& text, CVrRuntimeMessage& message) {
    CVrJsonParser parser;
    const CVrJsonValue* root = parser.ParseRoot(text);
    if (!root || !root->IsObject())
        return false;
    const auto read = [&](const char* key, CVrRuntimeMessage::Flag flag, auto store) {
        if (const CVrJsonValue* value = root->Find(key)) {
            store(value->ToUint32());
            message.flags |= flag;
        }
    };
    read("nightmode", CVrRuntimeMessage::HasNight, [&](uint32_t value) { message.night = value != 0; });
    read("restmode", CVrRuntimeMessage::HasRest,
         [&](uint32_t value) { message.rest = static_cast<uint8_t>(value); });
    read("color", CVrRuntimeMessage::HasBg, [&](uint32_t value) { message.bg = value; });
    read("restModeDelay", CVrRuntimeMessage::HasRestDelay,
         [&](uint32_t value) { message.restDelay = value; });
    return message.flags != 0;
}

// ---------------------------------------------------------------------------------------------- from the file

// What the last run left: everything is in effect at once but the colours, whose scheme comes with the first
// message about night or background.
void CVrGuiApp::LoadSettings() {
    settings = CVrDisplaySettings();
    CVrxStringU text;
    if (!LoadStringFromFile(GetSettingsFilePath().CStr(), text) ||
        !ParseSettings(text, nullptr, &settings, &settings.options))
        return;
    const CVrSettingsOptions& options = settings.options;
    if (options.hasBackground) {
        runtime.bg = options.background;
        runtime.flags |= CVrRuntimeMessage::HasBg;
    }
    if (options.hasRestMode) {
        runtime.rest = options.restMode;
        runtime.flags |= CVrRuntimeMessage::HasRest;
        mainWin.restMode = options.restMode;
    }
    if (options.hasRestDelay) {
        runtime.restDelay = options.restDelay;
        runtime.flags |= CVrRuntimeMessage::HasRestDelay;
        mainWin.SetInteractionTimeout(options.restDelay);
    }
    mainWin.SetDateTimeFormat(settings.timeFormat, settings.dateFormat);
}

// ---------------------------------------------------------------------------------------------- from the host

void CVrGuiApp::HandleWallSlateSettingsMessage(const CVrDisplaySettings& message) {
    Log(LogState, "CVrGuiApp::HandleWallSlateSettingsMessage",
        "[VrGuiApp] Settings changed event! timeformat=%d dateformat=%d country=%s language=%s crcRooms=%08X "
        "crcCategories=%08X crcStructure=%08X",
        static_cast<int>(message.timeFormat), static_cast<int>(message.dateFormat), message.country,
        message.language, message.crcRooms, message.crcCategories, message.crcStructure);
    const bool changed = settings.crcRooms != message.crcRooms ||
                         settings.crcCategories != message.crcCategories ||
                         settings.crcStructure != message.crcStructure;
    const CVrSettingsOptions options = settings.options; // not what such a message speaks of
    settings = message;
    settings.options = options;
    SaveSettings(settings);
    mainWin.SetDateTimeFormat(settings.timeFormat, settings.dateFormat);
    if (!changed)
        mainWin.ForceIdle();
    if (CVrTranslator::Instance().SetLanguage(settings.language))
        ApplyLanguage();
    else
        DrawAndUpdate();
}

void CVrGuiApp::HandleWallSlateRuntimeSettingsMessage(const CVrRuntimeMessage& message) {
    if (message.Has(CVrRuntimeMessage::HasBg))
        runtime.bg = message.bg;
    runtime.flags |= message.flags;
    Log(LogState, "CVrGuiApp::HandleWallSlateRuntimeSettingsMessage",
        "[VrGuiApp] WallSlate runtime changed event! displayon=%d dnd=%d dis=%d abr=%d brightness=%d "
        "volume=%d "
        "brDelta=%d bell=%d brGain=%d presence=%d night=%d eco=%d bg=%08X rest=%d restDelay=%u",
        message.displayon, message.dnd, message.dis, message.abr, message.brightness, message.volume,
        message.brDelta, message.bell, message.brGain, message.presence, message.night, message.eco,
        message.bg, message.rest, message.restDelay);
    TakeDisplayValues(message);
    if (message.Has(CVrRuntimeMessage::HasNight))
        TakeNight(message.night);
    if (message.Has(CVrRuntimeMessage::HasEco)) {
        runtime.eco = message.eco;
        mainWin.SetEco(message.eco != 0);
    }
    TakePersistentValues(message);
}

// What a display with sensors and a backlight of its own would be told.
void CVrGuiApp::TakeDisplayValues(const CVrRuntimeMessage& message) {
    const auto take = [&](CVrRuntimeMessage::Flag flag, auto CVrRuntimeMessage::*field, auto value) {
        if (message.Has(flag))
            runtime.*field = value;
        return message.Has(flag);
    };
    if (take(CVrRuntimeMessage::HasDisplayOn, &CVrRuntimeMessage::displayon, message.displayon))
        mainWin.SetKeepOn(message.displayon != 0);
    if (take(CVrRuntimeMessage::HasDnd, &CVrRuntimeMessage::dnd, message.dnd))
        mainWin.dnd = message.dnd != 0;
    if (take(CVrRuntimeMessage::HasDis, &CVrRuntimeMessage::dis, message.dis))
        mainWin.dis = message.dis != 0;
    bool light = take(CVrRuntimeMessage::HasAbr, &CVrRuntimeMessage::abr, message.abr);
    light |= take(CVrRuntimeMessage::HasBrightness, &CVrRuntimeMessage::brightness, message.brightness);
    take(CVrRuntimeMessage::HasVolume, &CVrRuntimeMessage::volume, message.volume);
    if (take(CVrRuntimeMessage::HasBrDelta, &CVrRuntimeMessage::brDelta, BrightnessStep(message.brDelta)))
        mainWin.brightnessDelta = runtime.brDelta;
    take(CVrRuntimeMessage::HasBell, &CVrRuntimeMessage::bell, message.bell);
    light |= take(CVrRuntimeMessage::HasBrGain, &CVrRuntimeMessage::brGain, BrightnessStep(message.brGain));
    if (light)
        mainWin.SetBrightness(runtime.abr != 0, runtime.brightness, runtime.brGain);
    if (take(CVrRuntimeMessage::HasPresence, &CVrRuntimeMessage::presence, message.presence))
        mainWin.SetPresence(message.presence != 0);
}

void CVrGuiApp::TakeNight(uint8_t night) {
    runtime.night = night;
    mainWin.SetNight(night != 0);
    RenewColors();
}

// The values that survive a restart. The display goes to rest at once, so that the user sees the chosen rest.
void CVrGuiApp::TakePersistentValues(const CVrRuntimeMessage& message) {
    constexpr uint32_t kPersistent =
        CVrRuntimeMessage::HasBg | CVrRuntimeMessage::HasRest | CVrRuntimeMessage::HasRestDelay;
    CVrSettingsOptions& options = settings.options;
    if (message.Has(CVrRuntimeMessage::HasBg)) {
        options.hasBackground = true;
        options.background = message.bg;
        RenewColors();
    }
    if (message.Has(CVrRuntimeMessage::HasRest)) {
        runtime.rest = std::min<uint8_t>(message.rest, kRestModes - 1);
        options.hasRestMode = true;
        options.restMode = runtime.rest;
        mainWin.SetRestMode(runtime.rest);
    }
    if (message.Has(CVrRuntimeMessage::HasRestDelay)) {
        runtime.restDelay = message.restDelay;
        options.hasRestDelay = true;
        options.restDelay = message.restDelay;
        mainWin.SetInteractionTimeout(message.restDelay);
    }
    if ((message.flags & kPersistent) == 0)
        return;
    mainWin.ForceIdle();
    SaveSettings(settings);
}

// The scheme of what is in effect now. While the display is being paired it stays white.
void CVrGuiApp::RenewColors() {
    const bool useWhite = mainWin.pairingScreen && !mainWin.pairingScreen->IsHidden();
    const bool hasBackground = runtime.Has(CVrRuntimeMessage::HasBg);
    if (ApplyColorScheme(structure, settings, runtime.night != 0, useWhite,
                         hasBackground ? &runtime.bg : nullptr))
        ApplyColors();
}
