// Whole passes of a display: everything repainted, copied and composed, as a ratio to M, a memcpy of a screen in the
// same loop. Medians.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "app/gui_app.h"
#include "shell/frame.h"

namespace {

constexpr int kRuns = 300;

using Clock = std::chrono::steady_clock;

double Microseconds(Clock::time_point since) {
    return std::chrono::duration<double, std::micro>(Clock::now() - since).count();
}

double Median(std::vector<double>& values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

// Six pages, so that the menu row scrolls; the first one serves so many switches.
void Load(CVrGuiApp& app, uint32_t buttons) {
    std::string entries;
    for (uint32_t i = 1; i <= std::max(buttons, 6U); i++)
        entries += (i > 1 ? "," : "") + std::string(R"({"T":342,"U":)") + std::to_string(i) +
                   R"(,"N":"Ceiling light )" + std::to_string(i) + R"(","C":1})";
    app.mainWin.splashMs = 0;
    app.CreateScreen();
    app.InitAndLoad();
    app.LoadStructure(("[" + entries + "]").c_str(), R"([{"U":1,"N":"Light","I":1}])", "[]",
                      R"([{"I":1,"N":"lightbulb.svg"}])");
    auto* page = app.structure.root.children[0]->element;
    auto* frame = static_cast<CVrGuiFrame*>(page);
    frame->items.Clear();
    for (uint32_t i = 0; i < buttons; i++)
        frame->items.Add(app.structure.root.children[i]);
    app.BeginLoop();
}

void Measure(uint32_t buttons, double goal) {
    CVrGuiApp app;
    app.frameSlot = [](const uint8_t*, uint32_t) {};
    Load(app, buttons);
    std::vector<uint8_t> from(kScreenBytes, 1), to(kScreenBytes);
    std::vector<double> passes, copies;
    for (int run = 0; run < kRuns; run++) {
        auto begin = Clock::now();
        memcpy(to.data(), from.data(), kScreenBytes);
        copies.push_back(Microseconds(begin));
        app.mainWin.RepaintAll();
        begin = Clock::now();
        app.DrawAndUpdate();
        passes.push_back(Microseconds(begin));
    }
    const double pass = Median(passes), copy = Median(copies);
    printf("whole pass, page of %u buttons   %8.1f us   %5.2f M   (goal <= %.0f)\n", buttons, pass,
           pass / copy, goal);
}

} // namespace

int main() {
    Measure(4, 10);
    Measure(9, 14);
    Measure(14, 14);
    return 0;
}
