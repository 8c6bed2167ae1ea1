// Whole passes of a display: everything repainted, copied and composed, as a ratio to M, a memcpy of a screen in the
// same loop. Medians.

#include <algorithm>
#include <chrono>
#include <string>

#include "app/gui_app.h"
#include "controls/light.h"
#include "shell/actionbar.h"
#include "shell/popup_frame.h"
#include "shell/popup_slider.h"
#include "support/measure.h"

namespace {

constexpr int kRuns = 300;

bench::Report s_report(kRuns);

// A house whose first entries are given, with switches behind them, so that the menu row scrolls.
void Load(CVrGuiApp& app, std::string entries, uint32_t switches) {
    for (uint32_t i = 1; i <= switches; i++)
        entries += (entries.empty() ? "" : ",") + std::string(R"({"T":342,"U":)") + std::to_string(i) +
                   R"(,"N":"Ceiling light )" + std::to_string(i) + R"(","C":1})";
    app.frameSlot = [](const uint8_t*, uint32_t) {};
    app.mainWin.splashMs = 0;
    app.CreateScreen();
    app.InitAndLoad();
    app.LoadStructure(("[" + entries + "]").c_str(), R"([{"U":1,"N":"Light","I":1}])", "[]",
                      R"([{"I":1,"N":"lightbulb.svg"}])");
}

// Each pass is the first one after `change`, whose own time counts too.
template <typename Change>
void Measure(const std::string& name, CVrGuiApp& app, double goal, Change change) {
    int run = 0;
    s_report.CompareWithCopy(
        name,
        [&] {
            change(run++);
            app.DrawAndUpdate();
        },
        goal);
}

// Six pages; the first one serves so many switches.
void MeasureSwitches(uint32_t buttons, double goal) {
    CVrGuiApp app;
    Load(app, "", std::max(buttons, 6U));
    auto* frame = static_cast<CVrGuiFrame*>(app.structure.root.children[0]->element);
    frame->items.Clear();
    for (uint32_t i = 0; i < buttons; i++)
        frame->items.Add(app.structure.root.children[i]);
    app.BeginLoop();
    Measure("whole pass, page of " + std::to_string(buttons) + " buttons", app, goal,
            [&app](int) { app.mainWin.RepaintAll(); });
}

// A light of nine moods with the brightness slider open.
void MeasureLight() {
    std::string moods;
    for (int i = 1; i <= 9; i++)
        moods += std::string(i > 1 ? "," : "") + R"({"name":"Mood )" + std::to_string(i) + R"(","id":)" +
                 std::to_string(i) + "}";
    CVrGuiApp app;
    Load(app, R"({"T":484,"U":100,"N":"Light","C":1,"moodList":[)" + moods + "]}", 5);
    app.BeginLoop();
    auto& page = *static_cast<CVrGuiLightController2*>(app.structure.root.children[0]->element);
    page.OnChildEvent(app.mainWin.actionbar->Button(2), 2, 0);
    page.OnChildEvent(app.mainWin.actionbar->Button(2), 2, 1);
    using Clock = std::chrono::steady_clock;
    for (const auto until = Clock::now() + std::chrono::milliseconds(500); Clock::now() < until;)
        app.RunPass(1); // the strip has grown
    Measure("light with slider, whole pass", app, 16, [&app](int) { app.mainWin.RepaintAll(); });
    Measure("light with slider, the slider changed", app, 6, [&](int run) {
        app.mainWin.popupSliderFrame->popupSlider->SetValue(1 + run % 100);
        page.OnControlRefresh(true);
    });
}

} // namespace

int main() {
    MeasureSwitches(4, 10);
    MeasureSwitches(9, 14);
    MeasureSwitches(14, 14);
    MeasureLight();
    return s_report.ExitCode();
}
