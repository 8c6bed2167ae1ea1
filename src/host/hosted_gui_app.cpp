#include "host/hosted_gui_app.h"

#include "host/protocol.h"

namespace {

// The payload up to its NUL.
CVrxStringU TextOf(const CVrxByteArray& payload) {
    CVrxStringU text;
    text.AssignBytes(payload.GetData(), payload.GetSize());
    return text.CStr();
}

void ApplySettings(CVrGuiApp& app, const CVrxStringU& text) {
    CVrDisplaySettings settings;
    if (!text.IsEmpty() && ParseSettings(text, nullptr, &settings, nullptr))
        app.HandleWallSlateSettingsMessage(settings);
}

void ApplyRuntime(CVrGuiApp& app, const CVrxStringU& text) {
    CVrRuntimeMessage message;
    if (ParseRuntimeJson(text, message))
        app.HandleWallSlateRuntimeSettingsMessage(message);
}

void ApplyNight(CVrGuiApp& app, uint32_t night) {
    CVrRuntimeMessage message;
    message.flags = CVrRuntimeMessage::HasNight;
    message.night = night != 0;
    app.HandleWallSlateRuntimeSettingsMessage(message);
}

} // namespace

CHostedGuiApp::CHostedGuiApp(const CHostSlots& slots) {
    app.frameSlot = slots.frame;
    app.commandSlot = slots.command;
    app.drainSlot = slots.drain;
    app.readySlot = slots.hasRoom;
    app.CreateScreen();
}

void CHostedGuiApp::Load(const CHostTexts& texts) {
    app.InitAndLoad();
    app.LoadStructure(texts.configuration, texts.categories, texts.rooms, texts.symbols);
    app.Start();
}

void CHostedGuiApp::DispatchQueuedMessage(uint32_t command, const CVrxByteArray& payload) {
    auto* app = static_cast<CVrGuiApp*>(TheApplication());
    if (!app)
        return;
    switch (command) {
    case CommandText:
        if (!payload.IsEmpty())
            app->pendingText = TextOf(payload);
        break;
    case CommandSettings:
        ApplySettings(*app, TextOf(payload));
        break;
    case CommandRest:
        app->mainWin.ForceIdle();
        break;
    case CommandNight:
        if (payload.GetSize() >= sizeof(uint32_t))
            ApplyNight(*app, ReadU32(payload.GetData(), 0));
        break;
    case CommandRuntime:
        ApplyRuntime(*app, TextOf(payload));
        break;
    default:
        break;
    }
}
