// What a pass over the element tree costs: painting after one change, and a drag, whose content is only
// composed anew. Each line is measured turn by turn with its reference in one run, and medians are compared.
// The unit M is a memcpy of one screen, 2,073,600 bytes. Exit code 1 when a goal is missed.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "gui/button.h"
#include "gui/test_tree.h"
#include "shell/scroll_area.h"
#include "support/measure.h"

using namespace test_tree;

namespace {

constexpr int kRounds = 300;
constexpr size_t kScreenBytes = 720 * 720 * 4;

// A page as the shell builds it: rounded frame, area in it, a grid of buttons with name and symbol.
struct Page {
    Page(int count, bool scrolls) : area(*new CVrGuiScrollArea(ScrollAxis::Vertical)) {
        app.LoadStyles();
        CVrGuiElement& root = *app.root;
        root.colorIndex[0] = 1;
        root.colors[0] = 0xFF000000;
        Probe& frame = Add(root, CVrRect(6, 110, 708, 604), 0xFFFDF4EB);
        frame.cornerMask = CornerAll;
        area.SetParent(&frame);
        area.type = ElementType::FrameArea;
        area.rect = CVrRect(10, 10, 688, 584);
        area.canvasSize = area.rect.Size();
        area.colorIndex[0] = 1;
        area.colors[0] = 0xFFFDF4EB;
        const int columns = scrolls ? 4 : 3;
        const int width = (688 - (columns - 1) * 10) / columns, height = scrolls ? 225 : 188;
        for (int i = 0; i < count; i++)
            AddButton(CVrRect(i % columns * (width + 10), i / columns * (height + 10), width, height));
        if (scrolls) {
            area.SetScrolling();
            area.SizeStore(CVrSize(688, (count / columns) * (height + 10)));
        } else {
            area.SetFixed();
        }
        root.Draw(false, true);
    }
    void AddButton(const CVrRect& rect) {
        struct Rounded : CVrGuiButton {
            uint32_t GetCornerMask() const override { return CornerAll; }
        };
        auto& button = Add<Rounded>(area, rect, 0xFFD9D4CC);
        button.layout = CVrGuiButton::LayoutStackedWrapped;
        button.text = "Ceiling lamp";
        std::fill_n(button.colors + CVrGuiElement::ColorText, 6, 0xFF000000);
        CVrGuiSvg2Img& symbol = button.icon.image;
        static const char kSvg[] =
            "<svg width='24' height='24' viewBox='0 0 24 24'><circle cx='12' cy='12' r='9' "
            "fill='none' stroke='#000' stroke-width='2'/></svg>";
        symbol.LoadAndRender(kSvg, 0, CVrRect(0, 0, 80, 80), true);
        button.iconSize = button.icon.requestedSize = 80;
    }

    Application app;
    CVrGuiScrollArea& area;
};

} // namespace

int main() {
    CVrTestClock clock;
    std::vector<uint8_t> screen(kScreenBytes);
    bench::Report report(kRounds);
    {
        Page page(40, true);
        CVrGuiElement& root = *page.app.root;
        int step = 0;
        const auto scroll = [&] { page.area.SetScrollOffset(CVrPoint(0, -(step++ * 7 % 1500))); };
        report.Compare(
            "drag in a page of 40 buttons",
            [&] {
                scroll();
                root.needsUpdate = true;
                root.Draw(false, true);
                memcpy(screen.data(), root.pixels, kScreenBytes);
            },
            [&] {
                scroll();
                root.BlendStore(CVrRect(16, 120, 688, 584), page.area, CVrPoint(16, 120 + page.area.offsetY),
                                16);
                memcpy(screen.data(), root.pixels, kScreenBytes);
            },
            bench::Goal::AtMost, 2.0, "x copy+compose");
    }
    {
        Page page(9, false);
        CVrGuiElement& root = *page.app.root;
        report.CompareWithCopy(
            "one button changed on a page of nine",
            [&] {
                page.area.Child(4)->Invalidate();
                root.Draw(false, true);
            },
            4.0);
        report.CompareWithCopy(
            "redraw flags and timers of that page",
            [&] {
                root.UpdateTimers(clock.Now());
                if (root.NeedsUpdateTree())
                    std::printf("unexpected\n");
            },
            0.1);
    }
    return report.ExitCode();
}
