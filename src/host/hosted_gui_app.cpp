#include "host/hosted_gui_app.h"

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
