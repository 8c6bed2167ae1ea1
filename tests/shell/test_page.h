// A page for tests of what pages share: an action bar with as many buttons as wanted, events written down.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "shell/actionbar.h"
#include "shell/frame.h"
#include "shell/frame_area.h"
#include "shell/frame_button.h"
#include "shell/main_window.h"
#include "shell/popup_frame.h"
#include "shell/popup_menu.h"
#include "shell/popup_slider.h"
#include "support/test_display.h"

class CVrGuiTestPage : public CVrGuiFrame, public IVrCoverListener {
public:
    bool HasActionbar() override { return true; }
    void SetupActionbar() override {
        CVrGuiFrame::SetupActionbar();
        static const int32_t symbols[] = {10025, 10022, 10023, 10024};
        CVrGuiActionbar& bar = *MainWindow()->actionbar;
        for (uint32_t i = 0; i < CVrGuiActionbar::kMaxButtons; i++) {
            if (i < buttons)
                bar.SetButton(i, this, static_cast<int32_t>(i), StaticSymbolName(symbols[i]), kinds[i]);
            else
                bar.Button(i)->SetHidden(true);
        }
    }
    void OnChildEvent(CVrGuiElement*, int32_t childId, uint32_t reported) override {
        events.push_back(std::to_string(childId) + ":" + std::to_string(reported));
    }
    void OnControlRefresh(bool) override { refreshes++; }
    void SkipCover(bool next) override { events.push_back(next ? "next" : "previous"); }
    bool CloseCover() override {
        events.push_back("close");
        return true;
    }

    uint32_t buttons = 4;
    ActionKind kinds[4] = {ActionKind::Momentary, ActionKind::Held, ActionKind::OpensSlider,
                           ActionKind::OpensMenu};
    std::vector<std::string> events;
    int refreshes = 0;
};

// A display with two switches' pages and a test page behind them, which is up.
struct PageOnDisplay {
    explicit PageOnDisplay(uint32_t buttons = 4)
        : display(TestHouse::Of(R"([{"T":342,"U":1,"N":"One","C":1},{"T":342,"U":2,"N":"Two","C":1}])")) {
        page = display.Root().CreateChild<CVrGuiTestPage>("CVrGuiTestPage", false);
        page->flags |= CVrGuiElement::FlagPage;
        page->buttons = buttons;
        page->FillArea(nullptr);
        auto* tile = page->frameArea->CreateChild<CVrGuiFrameBtn>("CVrGuiFrameBtn", false);
        tile->id = 50;
        tile->listener = page;
        tile->eventMask = CVrGuiElement::EventUp;
        page->frameArea->buttonCount = 1;
        page->ReloadColors();
        page->SetHidden(true);
        display.Root().ShowPage(page);
        Repaint();
    }
    CVrGuiMainWin& Root() { return display.Root(); }
    CVrGuiActionbar& Bar() { return *Root().actionbar; }
    CVrGuiPopupFrame& Popup() { return *Root().popupFrame; }
    CVrGuiPopupMenu& Menu() { return *Root().popupFrame->popupMenu; }
    CVrGuiPopupSliderFrame& SliderFrame() { return *Root().popupSliderFrame; }
    CVrGuiPopupSlider& Slider() { return *Root().popupSliderFrame->popupSlider; }
    // What a test changed by hand has no event that would bring it to the screen.
    void Repaint() {
        display.App().WakeForRepaint();
        display.Settle();
    }
    std::vector<std::string> TakeEvents() { return std::exchange(page->events, {}); }
    // Screen position of the middle of an element.
    static CVrPoint Middle(const CVrGuiElement& element) { return element.ToRoot(element.rect.Center()); }
    void Tap(const CVrGuiElement& element) {
        const CVrPoint at = Middle(element);
        display.Tap(at.x, at.y);
    }
    // The slider with symbols and title, above the action bar.
    void ShowSlider(int32_t value) {
        Slider().layout = CVrGuiButton::LayoutIconLeft | CVrGuiButton::LayoutTextLeft;
        Slider().text = "Brightness";
        Slider().listener = page;
        Slider().LoadSliderIcons(10003, 10004, 10005);
        Slider().SetValue(value);
        SliderFrame().SetY(Bar().rect.y - SliderFrame().rect.height - 10);
        SliderFrame().SetHidden(false);
        Repaint();
    }
    void ShowVolumes(uint32_t zones) {
        const CVrVolumeRow rows[] = {{11, "Kitchen"}, {12, "Living room"}, {13, "Bathroom"}, {14, "Terrace"}};
        Menu().ShowVolumeRows(page, rows, zones);
        int32_t value = 40;
        Menu().ForEachChild([&value](CVrGuiElement& row) {
            static_cast<CVrGuiPopupMenuSlider&>(row).SetValue(value);
            value = std::max(value - 40, 0);
        });
        Popup().SetHidden(false);
        Repaint();
    }

    TestDisplay display;
    CVrGuiTestPage* page = nullptr;
};
