// wallslate-motion: the display, with a page behind those of the house on which everything moves. It stands in for the
// display wherever a host starts one:
//
//   build/release/wallslate-host --display build/release/wallslate-motion

#include "host/hosted_gui_app.h"
#include "host/link.h"
#include "motion_page.h"
#include "shell/menu_button.h"

namespace {

constexpr int32_t kMotionSymbol = 10014; // a spectrum

void AddMotionPage(CVrGuiMainWin& root) {
    auto* page = root.CreateChild<CVrGuiMotionPage>("CVrGuiMotionPage", false);
    page->flags |= CVrGuiElement::FlagPage | CVrGuiElement::FlagHidden;
    page->text = "Motion";
    page->FillArea(nullptr);
    auto* button = root.menu->CreateChild<CVrGuiMenuBtn>("CVrGuiMenuBtn", true);
    button->iconName = StaticSymbolName(kMotionSymbol);
    button->ReloadIcon();
    button->linkedElement = page;
    page->SetMenuButton(button);
    root.menu->SetHidden(root.menu->ChildCount() < 2);
    root.menu->ApplyLayout();
    root.ForEachChild([](CVrGuiElement& child) { child.ReloadColors(); });
}

class MotionApp : public CHostedGuiApp {
public:
    using CHostedGuiApp::CHostedGuiApp;

    static CHostedApplication* Create(const CHostSlots& slots) { return new MotionApp(slots); }

    void Load(const CHostTexts& texts) override {
        app.InitAndLoad();
        app.LoadStructure(texts.configuration, texts.categories, texts.rooms, texts.symbols);
        AddMotionPage(app.mainWin);
        app.Start();
    }
};

} // namespace

int main(int argc, char** argv) {
    CHostLink link(&MotionApp::Create, &CHostedGuiApp::DispatchQueuedMessage);
    return link.Run(argc, argv);
}
