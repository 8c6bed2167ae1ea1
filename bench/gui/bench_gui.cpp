// What drawing costs. Every line is measured turn by turn with its reference in one run on one core, and
// medians are compared: figures of one machine at one moment say little, ratios hold. The unit M is a memcpy
// of one screen, 2,073,600 bytes. Exit code 1 when a goal is missed.
#include "gui/font.h"
#include "gui/frame_buffer.h"
#include "gui/frame_composer.h"
#include "gui/nanosvg_import.h"
#include "gui/pixel_ops.h"
#include "gui/svg_image.h"
#include "support/measure.h"
#include "support/plain_pixels.h"

#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kRounds = 200;
constexpr size_t kRow = 720;
constexpr size_t kScreen = kRow * 720;

using bench::CopyScreen;
using bench::Goal;

bench::Report s_report(kRounds);

void Compare(const std::string& name, const bench::Work& work, const bench::Work& reference, Goal goal,
             double limit, const char* unit) {
    s_report.Compare(name, work, reference, goal, limit, unit);
}

std::vector<uint32_t> s_a(kScreen, 0xFF336699);
std::vector<uint32_t> s_b(kScreen, 0xFF112233);

// A store's pixels are drawn row by row; so are the plain loops.
void ForRows(const std::function<void(size_t offset)>& work) {
    for (size_t offset = 0; offset < kScreen / 8; offset += kRow)
        work(offset);
}

void CompareLoops(const pixelops::Loops& loops) {
    std::mt19937 random(1);
    std::vector<uint32_t> source(kScreen);
    std::vector<uint8_t> coverage(kScreen);
    for (size_t i = 0; i < kScreen; i++) {
        source[i] = static_cast<uint32_t>((4 + random() % 248) << 24 | (random() & 0xFFFFFF));
        coverage[i] = static_cast<uint8_t>(random() % 256);
    }
    uint32_t* dst = s_b.data();
    const std::string prefix = std::string(loops.name) + ": ";
    auto row = [&](const char* name, const std::function<void(size_t)>& fast,
                   const std::function<void(size_t)>& slow) {
        Compare(
            prefix + name, [&] { ForRows(fast); }, [&] { ForRows(slow); }, Goal::AtLeast, 3, "x plain");
    };
    row(
        "fill", [&](size_t at) { loops.fill(dst + at, kRow, 0xFF102030); },
        [&](size_t at) { plain::Fill(dst + at, kRow, 0xFF102030); });
    row(
        "blend one colour", [&](size_t at) { loops.blendColor(dst + at, kRow, 0x80402010, 128); },
        [&](size_t at) { plain::BlendColor(dst + at, kRow, 0x80402010, 128); });
    row(
        "blend a gradient", [&](size_t at) { loops.blendColors(dst + at, source.data() + at, kRow); },
        [&](size_t at) { plain::BlendColors(dst + at, source.data() + at, kRow); });
    row(
        "blend a store", [&](size_t at) { loops.blendRow(dst + at, source.data() + at, kRow); },
        [&](size_t at) { plain::BlendRow(dst + at, source.data() + at, kRow); });
    row(
        "blend coverage",
        [&](size_t at) {
            loops.blendMono({dst + at, kRow, coverage.data() + at, kRow, kRow, 1}, 0xFF402010);
        },
        [&](size_t at) { plain::BlendMono(dst + at, coverage.data() + at, kRow, 0xFF402010); });
    row(
        "blend tinted coverage",
        [&](size_t at) { loops.blendTint(dst + at, source.data() + at, kRow, 0xFF402010, 200); },
        [&](size_t at) { plain::BlendTint(dst + at, source.data() + at, kRow, 0xFF402010, 200); });
}

void CompareFrame() {
    static CVrFrame frame;
    std::vector<uint32_t> screen(kScreen);
    Compare(
        "copy of the screen and composed frame",
        [&] {
            std::memcpy(screen.data(), s_a.data(), kScreen * 4);
            ComposeFrame(screen.data(), frame);
        },
        CopyScreen, Goal::AtMost, 3, "M");
}

void CompareText() {
    CVrGuiFrameBuffer store;
    store.InitMem(CVrRect(0, 0, 720, 720));
    for (int32_t size : {20, 25, 35, 50}) {
        CVrGuiFont font;
        font.size = size;
        const char* label = "Wohnzimmer/Decke/Sud"; // 20 glyphs
        store.DrawText(CVrPoint(10, 10), font, label, 0xFF000000, 0xFFFFFFFF, 700);
        Compare(
            "label of 20 glyphs, " + std::to_string(size) + " pixels",
            [&] { store.DrawText(CVrPoint(10, 10), font, label, 0xFF000000, 0xFFFFFFFF, 700); }, CopyScreen,
            Goal::AtMost, 0.3, "M");
        Compare(
            "its measure",
            [&] {
                CVrSize measured;
                font.MeasureText(measured, label);
            },
            CopyScreen, Goal::AtMost, 0.1, "M");
    }
}

constexpr char kSymbol[] = "<svg xmlns='http://www.w3.org/2000/svg' width='24' height='24' viewBox='0 0 24 "
                           "24' fill='none' stroke='#000' "
                           "stroke-width='2' stroke-linecap='round' stroke-linejoin='round'><path d='M15 "
                           "14c.2-1 .7-1.7 1.5-2.5 1-.9 1.5-2.2 "
                           "1.5-3.5A6 6 0 0 0 6 8c0 1 .2 2.2 1.5 3.5.7.7 1.3 1.5 1.5 2.5'/><path d='M9 "
                           "18h6'/><path d='M10 22h4'/></svg>";

void CompareSymbol() {
    static NSVGrasterizer* rasterizer = nsvgCreateRasterizer();
    CVrGuiSvg2Img image;
    std::vector<uint8_t> rgba(64 * 64 * 4);
    char text[sizeof kSymbol];
    Compare(
        "a symbol at 64 pixels",
        [&] {
            image.FreeBitmap();
            image.LoadAndRender(kSymbol, sizeof kSymbol - 1, CVrRect(0, 0, 64, 64), true);
        },
        [&] {
            std::memcpy(text, kSymbol, sizeof kSymbol);
            NSVGimage* parsed = nsvgParse(text, "", 96);
            nsvgRasterize(rasterizer, parsed, 0, 0, 64.0F / 24, rgba.data(), 64, 64, 256);
            nsvgDelete(parsed);
        },
        Goal::AtMost, 1.3, "x nanosvg");
    CVrGuiFrameBuffer store;
    store.InitMem(CVrRect(0, 0, 720, 720));
    Compare(
        "its drawing", [&] { store.DrawSvg(image, CVrPoint(20, 20), 0xFF000000); }, CopyScreen, Goal::AtMost,
        0.1, "M");
}

void CompareShapes() {
    CVrGuiFrameBuffer store;
    CVrGuiFrameBuffer list;
    store.InitMem(CVrRect(0, 0, 720, 720));
    list.InitMem(CVrRect(0, 0, 690, 1600));
    list.FillRoundRect(CVrRect(0, 0, 690, 1600), 15, CornerAll, 0xFF806040, CornerAlpha::Write);
    Compare(
        "a rounded tile of 220 x 180",
        [&] { store.FillRoundRect(CVrRect(10, 10, 220, 180), 15, CornerAll, 0xFFD9D4CC); }, CopyScreen,
        Goal::AtMost, 0.2, "M");
    Compare(
        "a page's content composed, 690 x 590",
        [&] { store.BlendStore(CVrRect(10, 120, 690, 590), list, CVrPoint(10, -300), 16); }, CopyScreen,
        Goal::AtMost, 2, "M");
    Compare(
        "the menu's fading edge, 96 x 110",
        [&] {
            store.FillRoundRect(CVrRect(600, 0, 96, 110), 0, CornerNone, 0x00000000, CornerAlpha::Blend,
                                0xFF000000, Gradient::Horizontal);
        },
        CopyScreen, Goal::AtMost, 0.2, "M");
}

} // namespace

int main() {
    bench::PinToOneCore();
    Compare("M: memcpy of a screen", CopyScreen, CopyScreen, Goal::AtMost, 1.5, "M");
    CompareFrame();
    for (pixelops::Level level : {pixelops::Level::Sse2, pixelops::Level::Avx2}) {
        if (const pixelops::Loops* loops = pixelops::LoopsFor(level))
            CompareLoops(*loops);
    }
    CompareShapes();
    CompareText();
    CompareSymbol();
    return s_report.ExitCode();
}
