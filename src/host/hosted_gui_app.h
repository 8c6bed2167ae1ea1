// The application as the host link sees it: the one real CVrGuiApp behind the link's interface.
#pragma once

#include "app/gui_app.h"
#include "host/application.h"

class CHostedGuiApp : public CHostedApplication {
public:
    explicit CHostedGuiApp(const CHostSlots& slots);

    // A CHostedApplicationFactory.
    static CHostedApplication* Create(const CHostSlots& slots) { return new CHostedGuiApp(slots); }

    // A CHostDispatcher: carries out a queued message on the one application. Text that is no JSON, and payloads that
    // are too short, do nothing.
    static void DispatchQueuedMessage(uint32_t command, const CVrxByteArray& payload);

    void Load(const CHostTexts& texts) override;
    void PostTouch(uint32_t type, CVrPoint point) override { app.PostTouch(type, point); }
    void PostRepaint() override { app.WakeForRepaint(); }
    void RequestStop() override { app.RequestStop(); }
    bool HasEnded() const override { return !app.HasThread(); }

    CVrGuiApp app;
};
