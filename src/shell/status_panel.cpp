// The two full-screen messages of the system. They are painted over the finished picture, straight into the root's
// store, after the drawing pass.

#include "foundation/clock.h"
#include "gui/application.h"
#include "gui/font.h"
#include "gui/icon.h"
#include "gui/text_layout.h"
#include "shell/main_window.h"
#include "structure/style_sheet.h"

#include <algorithm>

namespace {

constexpr uint32_t kBlack = 0xFF000000;
constexpr uint32_t kWhite = 0xFFFFFFFF;
constexpr uint32_t kBandColor = 0xFF8DFF70;
constexpr int32_t kPanelInset = 6;
constexpr int32_t kPanelRadius = 19;
constexpr int32_t kBandHeight = 94;
constexpr int32_t kContentTop = 100;
constexpr int32_t kLogoSymbol = 20000;
constexpr int32_t kLogoSize = 142;
constexpr int32_t kLogoX = 39, kLogoY = 29;
constexpr int32_t kLogoNeedsHeight = 167;
constexpr int32_t kTextMargin = 18; // pixels free at each side of the text
constexpr int32_t kSpinnerDots = 12;
constexpr uint64_t kSpinnerStepMs = 80;

// Places of the dots on a circle of radius 100, clockwise from the top.
constexpr int32_t kDotX[kSpinnerDots] = {0, 50, 87, 100, 87, 50, 0, -50, -87, -100, -87, -50};
constexpr int32_t kDotY[kSpinnerDots] = {-100, -87, -50, 0, 50, 87, 100, 87, 50, 0, -50, -87};
// Alpha of a dot by its distance behind the bright head.
constexpr uint32_t kDotAlpha[kSpinnerDots] = {255, 220, 185, 150, 120, 95, 75, 60, 48, 40, 34, 30};

struct Spinner {
    int32_t radius = 0, dot = 0, gap = 0;

    explicit Spinner(const CVrRect& panel)
        : radius(std::clamp(std::min(panel.width, panel.height) / 14, 16, 30)),
          gap(std::clamp(panel.height / 25, 12, 22)) {
        const int32_t raw = std::min(panel.width, panel.height) / 14;
        dot = raw < 16 ? 3 : raw > 30 ? 6 : std::clamp(radius / 5, 3, 6);
    }

    int32_t Height() const { return gap + 2 * (radius + dot); }

    void Draw(CVrGuiFrameBuffer& target, CVrPoint center, uint64_t tick) const {
        const auto phase = static_cast<int32_t>(tick / kSpinnerStepMs % kSpinnerDots);
        for (int32_t i = 0; i < kSpinnerDots; i++) {
            const uint32_t alpha = kDotAlpha[(phase - i + kSpinnerDots) % kSpinnerDots];
            const CVrRect place(center.x + kDotX[i] * radius / 100 - dot / 2,
                                center.y + kDotY[i] * radius / 100 - dot / 2, dot, dot);
            target.FillRoundRect(place, dot / 2, CornerAll, alpha << 24 | (kBlack & 0xFFFFFF));
        }
    }
};

CVrPoint StatusTextPosition(const CVrRect& panel, CVrGuiFont& font, const char* text, const CVrSize& textSize,
                            const Spinner* spinner) {
    const int32_t top = panel.height <= kContentTop ? 0 : kContentTop;
    CVrPoint position((panel.width - textSize.width) / 2, 0);
    position.x = std::max(position.x, panel.width < 2 * kTextMargin + 1 ? 0 : kTextMargin);
    if (spinner) {
        const int32_t block = textSize.height + spinner->Height();
        position.y = std::max(top + (panel.height - top - block) / 2, top);
        return position;
    }
    // Without a spinner the ink is centred, not the line box: nobody sees the box.
    const int32_t bottom = std::clamp(panel.height - kPanelInset, top, panel.height);
    position.y = std::max(top + (bottom - top - textSize.height) / 2, top);
    TextInk ink;
    if (MeasureInk(ink, font, text))
        position.y = (bottom - top) / 2 - (ink.top + ink.bottom) / 2 + top;
    return position;
}

// Rendered once and kept for the life of the process: the message may come at any time.
const CVrGuiIcon& StatusLogo() {
    static CVrGuiIcon logo;
    if (!logo.HasBitmap())
        logo.SetStaticIconFromFile(StaticSymbolName(kLogoSymbol), kLogoSize, true);
    return logo;
}

} // namespace

void CVrGuiMainWin::DrawStatusPanel(const char* statusText, bool withSpinner) {
    if (!HasStore())
        return;
    const CVrRect screen(0, 0, rect.width, rect.height);
    const CVrRect panel = screen.Shrunken(kPanelInset);
    FillRect(screen, kBlack);
    FillRoundRect(panel, kPanelRadius, CornerAll, kWhite);
    const CVrRect band(panel.x, panel.y, panel.width, std::min(panel.height, kBandHeight));
    FillRoundRect(band, kPanelRadius, CornerTopLeft | CornerTopRight, kBandColor);
    if (rect.height >= kLogoNeedsHeight && StatusLogo().HasBitmap())
        DrawSvg(StatusLogo().image, CVrPoint(kLogoX, kLogoY), kBlack);

    CVrGuiFont* font = GetFont(FontIndex::BigBold);
    if (!font)
        return;
    const int32_t maxWidth = rect.width < 2 * kTextMargin + 1 ? rect.width : rect.width - 2 * kTextMargin;
    CVrSize textSize;
    font->MeasureText(textSize, statusText);
    const Spinner spinner(screen);
    const CVrPoint position =
        StatusTextPosition(screen, *font, statusText, textSize, withSpinner ? &spinner : nullptr);
    DrawText(position, *font, statusText, kBlack, kWhite, maxWidth);
    if (withSpinner) {
        const int32_t y = position.y + textSize.height + spinner.gap + spinner.radius + spinner.dot;
        spinner.Draw(*this, CVrPoint(rect.width / 2, y), TickMs());
    }
}
