#include "gui/font.h"

#include "foundation/files.h"
#include "gui/frame_buffer.h"
#include "gui/utf8_reader.h"
#include "support/golden.h"
#include "support/log_capture.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr uint32_t kBlack = 0xFF000000;
constexpr uint32_t kWhite = 0xFFFFFFFF;

struct NamedSize {
    const char* name;
    int32_t size;
};

// The fonts of the style sheet in the order of its list.
constexpr NamedSize kFonts[] = {
    {"verysmall", 20},    {"cover", 22},    {"small", 25},       {"small_bold", 25}, {"smaller", 30},
    {"smaller_bold", 30}, {"normal", 35},   {"normal_bold", 35}, {"bigger", 40},     {"bigger_bold", 40},
    {"big", 50},          {"big_bold", 50}, {"header_bold", 80}, {"verybig", 100},   {"verybig_bold", 100},
    {"extrembig", 130},   {"huge", 230},
};

// A font as the style sheet makes it.
struct Font : CVrGuiFont {
    explicit Font(int32_t wantedSize, bool isBold = false) {
        size = wantedSize;
        bold = isBold ? 1 : 0;
    }
};

int32_t WidthOf(CVrGuiFont& font, const char* text) {
    CVrSize size;
    font.MeasureText(size, text);
    return size.width;
}

struct Canvas : CVrGuiFrameBuffer {
    Canvas(int width, int height, uint32_t color) {
        InitMem(CVrRect(0, 0, width, height));
        FillRect(CVrRect(0, 0, width, height), color);
    }
    // First column behind everything that differs from `color`.
    int InkEnd(uint32_t color) const {
        int end = 0;
        for (int y = 0; y < storeSize.height; y++) {
            for (int x = end; x < storeSize.width; x++) {
                if (Row(y)[x] != color)
                    end = x + 1;
            }
        }
        return end;
    }
    golden::Picture Picture() const {
        return {storeSize.width,
                storeSize.height,
                {pixels, pixels + static_cast<size_t>(storeSize.width) * storeSize.height}};
    }
};

std::vector<uint32_t> Decoded(const std::string& text) {
    std::vector<uint32_t> codes;
    for (Utf8Reader reader(text.data(), text.size()); !reader.IsAtEnd();)
        codes.push_back(reader.Next());
    return codes;
}

// --- UTF-8 --------------------------------------------------------------------------------------

using Codes = std::vector<uint32_t>;

TEST(Utf8Reader, ReadsSequencesOfEveryLength) {
    EXPECT_EQ(Decoded("aü€😀"), (Codes{'a', 0xFC, 0x20AC, 0x1F600}));
    EXPECT_EQ(Decoded(""), Codes{});
    EXPECT_EQ(Utf8Reader(nullptr).Next(), 0U);
}

TEST(Utf8Reader, FollowingBytesGiveTheirLowBitsWhateverTheyAre) {
    EXPECT_EQ(Decoded("\xC3z"), (Codes{3 << 6 | ('z' & 0x3F)}));
    EXPECT_EQ(Decoded("\xE2\xE2\xE2!"), (Codes{2 << 12 | 0x22 << 6 | 0x22, '!'}));
}

TEST(Utf8Reader, StrayBytesDecodeToZeroOneByOne) {
    EXPECT_EQ(Decoded("\x80\xBF"
                      "a\xF8\xFF"
                      "b"),
              (Codes{0, 0, 'a', 0, 0, 'b'}));
}

TEST(Utf8Reader, ASequenceThatTheEndCutsOffEndsTheText) {
    for (const char* cut : {"a\xC3", "a\xE2\x82", "a\xF0\x9F\x98", "a\xF0"})
        EXPECT_EQ(Decoded(cut), (Codes{'a', 0})) << cut;
}

TEST(Utf8Reader, PeekDoesNotMove) {
    Utf8Reader reader("äb");
    EXPECT_EQ(reader.Peek(), 0xE4U);
    EXPECT_EQ(reader.Next(), 0xE4U);
    EXPECT_EQ(reader.Peek(), 'b');
    reader.Next();
    EXPECT_EQ(reader.Peek(), 0U);
    EXPECT_TRUE(reader.IsAtEnd());
}

// --- Loading ------------------------------------------------------------------------------------

TEST(Font, OneUseOfAFontLoadsTheWholeList) {
    Font fonts[] = {Font(20), Font(0), Font(230, true)};
    CVrxPtrArray list;
    for (Font& font : fonts)
        list.Add(static_cast<CVrGuiFont*>(&font));
    CVrGuiFont::SetFontList(&list);
    LogCapture log;
    fonts[0].EnsureLoaded();
    fonts[0].EnsureLoaded();
    CVrGuiFont::SetFontList(nullptr);
    EXPECT_EQ(fonts[0].loadedSize, 20);
    EXPECT_EQ(fonts[1].loadedSize, 0);
    EXPECT_EQ(fonts[2].loadedSize, 230);
    EXPECT_EQ(log.Count("CVrGuiFont::Init: Load font "), 2U);
    EXPECT_TRUE(log.Has("Load font 2"));
    EXPECT_TRUE(log.Has("Allocating font buffer size 211600 bytes"));
}

TEST(Font, MetricsFollowFromTheSizeOfTheLine) {
    for (const NamedSize& entry : kFonts) {
        Font font(entry.size);
        font.EnsureLoaded();
        EXPECT_EQ(font.belowBase, -font.descent);
        EXPECT_EQ(font.lineHeight, font.ascent - font.descent);
        EXPECT_NEAR(font.lineHeight, entry.size, 1) << "ascent and descent fill the size, up to rounding";
        EXPECT_GT(font.ascent, font.belowBase);
        EXPECT_GT(font.space.advance, 0);
    }
}

TEST(Font, AnotherSizeIsLoadedAtTheNextUse) {
    Font font(40);
    const int32_t large = WidthOf(font, "Licht");
    font.Unload();
    font.size = 20;
    EXPECT_NEAR(WidthOf(font, "Licht"), large / 2, 4);
    EXPECT_EQ(font.loadedSize, 20);
}

TEST(Font, ABrokenFileFailsOnceAndShowsNothing) {
    CVrxByteArray whole;
    ASSERT_TRUE(LoadResourceData(ResourceFontRegular, whole));
    for (uint32_t size : {1U, 11U, 40U, 300U, whole.GetSize() / 2, whole.GetSize() - 1}) {
        CVrxByteArray cut(whole.GetData(), size);
        CVrGuiFont::SetFontData(&cut, nullptr);
        LogCapture log(LogError);
        Font font(30);
        EXPECT_EQ(WidthOf(font, "Licht"), 0);
        EXPECT_EQ(font.GetGlyphDsc('L', 0), nullptr);
        EXPECT_EQ(font.GetGlyphBitmap('L'), nullptr);
        EXPECT_EQ(log.Count("Load font failed"), 1U) << size;
    }
    CVrGuiFont::SetFontData(nullptr, nullptr);
    CVrGuiFont font;
    EXPECT_FALSE(font.Init(nullptr, 0, 20));
    EXPECT_FALSE(font.Init(&whole, 0, 0));
    EXPECT_FALSE(font.Init(&whole, 0, 256));
    EXPECT_TRUE(font.Init(&whole, 0, 255));
}

// --- Glyphs and measures ------------------------------------------------------------------------

class FontOfSize : public testing::TestWithParam<int32_t> {
protected:
    void SetUp() override {
        ASSERT_TRUE(LoadResourceData(ResourceFontRegular, data));
        ASSERT_TRUE(stbtt_InitFont(&info, data.GetData(), 0));
        font.EnsureLoaded();
    }

    int32_t ExpectedAdvance(int code, int next) const {
        int units = 0, bearing = 0;
        stbtt_GetCodepointHMetrics(&info, code, &units, &bearing);
        units += next ? stbtt_GetCodepointKernAdvance(&info, code, next) : 0;
        const float x = static_cast<float>(units) * font.scale;
        if (GetParam() < 28)
            return static_cast<int32_t>(std::lround(x));
        return static_cast<int32_t>(units < 0 ? x - 0.7F : x + 0.3F);
    }

    Font font{GetParam()};
    CVrxByteArray data;
    stbtt_fontinfo info = {};
};

TEST_P(FontOfSize, AdvancesAreRoundedBySizeAndKernedWithTheNextGlyph) {
    for (const char* pair : {"AV", "To", "LT", "11", "Wa", "mm", "Та", "ГА"}) {
        Utf8Reader reader(pair);
        const int code = static_cast<int>(reader.Next());
        const int next = static_cast<int>(reader.Next());
        const CFontCacheData* glyph =
            font.GetGlyphDsc(static_cast<uint32_t>(code), static_cast<uint32_t>(next));
        ASSERT_NE(glyph, nullptr) << pair;
        EXPECT_EQ(glyph->advance, ExpectedAdvance(code, 0)) << "the first look-up knows no kerning";
        font.GetGlyphDsc(static_cast<uint32_t>(code), static_cast<uint32_t>(next));
        EXPECT_EQ(glyph->advance, ExpectedAdvance(code, next)) << pair;
        font.GetGlyphDsc(static_cast<uint32_t>(code), ' ');
        EXPECT_EQ(glyph->advance, ExpectedAdvance(code, 0)) << "no kerning next to a blank";
    }
}

TEST_P(FontOfSize, BitmapsAreThoseOfTheRasterizer) {
    for (uint32_t code : {uint32_t{'g'}, uint32_t{'8'}, 0xC4U, 0x416U}) {
        const CFontCacheData* glyph = font.GetGlyphDsc(code, 0);
        ASSERT_NE(glyph, nullptr);
        int width = 0, height = 0, left = 0, top = 0;
        unsigned char* expected = stbtt_GetCodepointBitmap(
            &info, font.scale, font.scale, static_cast<int>(code), &width, &height, &left, &top);
        ASSERT_EQ(glyph->bitmapSize, CVrSize(width, height));
        EXPECT_EQ(glyph->left, left);
        EXPECT_EQ(-glyph->below - height, top);
        EXPECT_EQ(std::memcmp(glyph->bitmap, expected, static_cast<size_t>(width * height)), 0) << code;
        EXPECT_EQ(std::memcmp(font.GetGlyphBitmap(code), expected, static_cast<size_t>(width * height)), 0);
        stbtt_FreeBitmap(expected, nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, FontOfSize, testing::Values(20, 25, 27, 28, 35, 80, 230));

TEST(Font, GlyphsThatTheFontLacksAndEmptyOnesCountAsMissing) {
    LogCapture log;
    Font font(30);
    font.EnsureLoaded();
    EXPECT_EQ(font.GetGlyphDsc(0x1F600, 0), nullptr);
    EXPECT_TRUE(log.Has("CVrGuiFont::GetGlyphDsc: UC not found 0001f600"));
    EXPECT_EQ(font.GetGlyphDsc(0, 0), nullptr);
    EXPECT_EQ(font.GetGlyphDsc(0xFFFFFFFF, 0), nullptr);
    EXPECT_EQ(font.GetGlyphDsc(0xA0, 0), nullptr) << "a no-break space has no bitmap";
    EXPECT_EQ(font.GetGlyphDsc(' ', 'A'), &font.space);
}

TEST(Font, LogLinesCarryTheGlyphAsText) {
    LogCapture log;
    Font font(30);
    font.GetGlyphBitmap(0x416);
    EXPECT_TRUE(log.Has("CA 00000416 Ж  0.00 "));
    EXPECT_TRUE(log.Has("UC 00000416 "));
}

TEST(MeasureText, CountsTheFirstLineOnly) {
    Font font(35);
    WidthOf(font, "Licht");
    const int32_t width = WidthOf(font, "Licht");
    EXPECT_EQ(WidthOf(font, "Licht\nzweite Zeile"), width);
    EXPECT_EQ(WidthOf(font, "Licht\rzweite Zeile"), width);
    EXPECT_EQ(WidthOf(font, "Licht\x80zweite Zeile"), width) << "a stray byte decodes to 0";
    EXPECT_EQ(WidthOf(font, "Licht😀zweite Zeile"), width) << "a missing glyph ends the measure";
    EXPECT_EQ(WidthOf(font, "Licht "), width + font.space.advance);
    EXPECT_EQ(WidthOf(font, "Licht\xE2\x82"), width) << "a cut sequence";
}

TEST(MeasureText, AnEmptyTextIsAsHighAsTheFont) {
    Font font(35);
    CVrSize size(7, 7);
    font.MeasureText(size, "");
    EXPECT_EQ(size, CVrSize(0, 35));
    font.MeasureText(size, nullptr);
    EXPECT_EQ(size, CVrSize(0, 35));
}

TEST(MeasureText, TheFirstMeasureCanBeWiderThanLaterOnes) {
    Font font(80);
    const int32_t first = WidthOf(font, "AVATAR To");
    const int32_t second = WidthOf(font, "AVATAR To");
    EXPECT_GT(first, second);
    EXPECT_EQ(WidthOf(font, "AVATAR To"), second);
}

TEST(MeasureText, ATextOfMegabytesDoesNotOverflow) {
    Font font(230);
    const std::string text(48 << 20, ' ');
    EXPECT_EQ(WidthOf(font, text.c_str()), INT32_MAX);
}

// --- Drawing ------------------------------------------------------------------------------------

TEST(DrawText, InkStandsOnTheBaselineWithinTheLineBox) {
    for (const NamedSize& entry : kFonts) {
        Font font(entry.size);
        Canvas canvas(700, 300, kWhite);
        canvas.DrawText(CVrPoint(10, 20), font, "H", kBlack, kUnpainted, 680);
        const int baseline = 20 + font.ascent;
        auto isRowClear = [&](int y) {
            return std::all_of(canvas.Row(y), canvas.Row(y) + 700, [](uint32_t p) { return p == kWhite; });
        };
        EXPECT_FALSE(isRowClear(baseline - 1)) << entry.name;
        EXPECT_TRUE(isRowClear(baseline + 1)) << entry.name;
        EXPECT_LE(baseline, 20 + entry.size);
    }
}

TEST(DrawText, AMissingGlyphLeavesAGapOfHalfTheSize) {
    Font font(40);
    Canvas with(300, 60, kWhite);
    Canvas without(300, 60, kWhite);
    with.DrawText(CVrPoint(0, 0), font, "😀I", kBlack, kUnpainted, 300);
    without.DrawText(CVrPoint(20, 0), font, "I", kBlack, kUnpainted, 280);
    EXPECT_TRUE(std::equal(with.pixels, with.pixels + 300 * 60, without.pixels));
}

TEST(DrawText, OnlyTheFirstLineIsDrawn) {
    Font font(40);
    Canvas line(300, 60, kWhite);
    Canvas lines(300, 60, kWhite);
    line.DrawText(CVrPoint(0, 0), font, "Licht", kBlack, kUnpainted, 300);
    line.FillRect(CVrRect(0, 0, 300, 60), kWhite);
    line.DrawText(CVrPoint(0, 0), font, "Licht", kBlack, kUnpainted, 300);
    lines.DrawText(CVrPoint(0, 0), font, "Licht\nunten", kBlack, kUnpainted, 300);
    EXPECT_TRUE(std::equal(line.pixels, line.pixels + 300 * 60, lines.pixels));
}

// Where the ink of a text ends when nothing cuts it.
int InkWidth(CVrGuiFont& font, const char* text) {
    WidthOf(font, text); // so that kerning is known
    Canvas canvas(700, 60, kWhite);
    canvas.DrawText(CVrPoint(0, 0), font, text, kBlack, kUnpainted, 10000);
    const CFontCacheData* last = font.GetGlyphDsc(static_cast<uint8_t>(text[strlen(text) - 1]), 0);
    return WidthOf(font, text) - last->advance + last->left + last->bitmapSize.width;
}

TEST(DrawText, ATextExactlyAsWideAsTheLimitIsCut) {
    Font font(40);
    const int ink = InkWidth(font, "Schlafzimmer");
    for (int limit : {ink, ink + 1}) {
        Canvas canvas(700, 60, kWhite);
        canvas.DrawText(CVrPoint(0, 5), font, "Schlafzimmer", kBlack, kUnpainted, limit);
        EXPECT_EQ(canvas.InkEnd(kWhite) < ink || canvas.Row(5)[limit - 1] == kUnpainted, limit == ink)
            << limit;
    }
}

TEST(DrawText, TheTailOfACutTextIsErasedWithAWhiteFade) {
    Font font(40);
    InkWidth(font, "Schlafzimmer");
    Canvas canvas(300, 60, kWhite);
    canvas.DrawText(CVrPoint(10, 5), font, "Schlafzimmer", kBlack, kUnpainted, 120);
    EXPECT_EQ(canvas.Row(5)[129], kUnpainted);
    EXPECT_EQ(canvas.Row(44)[129], kUnpainted);
    EXPECT_EQ(canvas.Row(45)[129], kWhite) << "below the size of the font";
    EXPECT_EQ(canvas.Row(5)[130], kWhite) << "behind the limit";
    EXPECT_EQ(canvas.Row(5)[70], kWhite) << "more than a quarter before the pen";
}

TEST(DrawText, TheTailOfACutTextDissolvesIntoTheFadeColour) {
    Font font(40);
    InkWidth(font, "Schlafzimmer");
    Canvas canvas(300, 60, 0xFF000000);
    for (int x = 0; x < 300; x++)
        canvas.Row(6)[x] = kUnpainted;
    canvas.DrawText(CVrPoint(10, 5), font, "Schlafzimmer", kBlack, 0xFF0000FF, 120);
    uint32_t former = 0;
    int start = 0;
    for (int x = 10; x < 130; x++) {
        const uint32_t blue = canvas.Row(5)[x] & 0xFF;
        EXPECT_EQ(canvas.Row(5)[x], 0xFF000000 | blue) << "alpha stays";
        EXPECT_GE(blue, former);
        start = start == 0 && blue > 0 ? x : start;
        former = blue;
    }
    EXPECT_GT(former, 240U);
    EXPECT_EQ(canvas.Row(5)[130], 0xFF000000);
    EXPECT_NEAR(start, 10 + 120 - 30, 30);
    EXPECT_EQ(canvas.Row(6)[129], (canvas.Row(5)[129] & 0xFF) << 24 | 0x0000FF)
        << "an unpainted pixel takes the alpha";
    EXPECT_EQ(canvas.Row(6)[10], kUnpainted);
}

TEST(DrawText, AFadeThatLeavesTheStoreIsNotPainted) {
    Font font(40);
    Canvas canvas(100, 60, kWhite);
    canvas.DrawText(CVrPoint(0, 5), font, "Schlafzimmer unten", kBlack, 0xFF0000FF, 720);
    for (int i = 0; i < 100 * 60; i++)
        ASSERT_EQ(canvas.pixels[i] & 0xFF, canvas.pixels[i] >> 16 & 0xFF) << "no blue anywhere";
    canvas.FillRect(CVrRect(0, 0, 100, 60), kWhite);
    canvas.DrawText(CVrPoint(0, 30), font, "Schlafzimmer unten", kBlack, kUnpainted, 90);
    EXPECT_EQ(canvas.Row(40)[85], kWhite) << "the box reaches below the store";
    canvas.FillRect(CVrRect(0, 0, 100, 60), kWhite);
    canvas.DrawText(CVrPoint(0, 0), font, "Schlafzimmer", kBlack, kUnpainted, 0);
    canvas.DrawText(CVrPoint(0, 0), font, "Schlafzimmer", kBlack, kUnpainted, -50);
    EXPECT_TRUE(std::all_of(canvas.pixels, canvas.pixels + 100 * 60, [](uint32_t p) { return p == kWhite; }));
}

TEST(DrawText, TextOutsideTheStoreIsHarmless) {
    Font font(230);
    Canvas canvas(100, 60, kWhite);
    for (const CVrPoint at : {CVrPoint(-1000, 0), CVrPoint(0, -1000), CVrPoint(0, 1000), CVrPoint(5000, 5000),
                              CVrPoint(INT32_MIN, INT32_MAX), CVrPoint(INT32_MAX, INT32_MIN)})
        canvas.DrawText(at, font, "WÄg", kBlack, 0xFF123456, INT32_MAX);
    EXPECT_TRUE(std::all_of(canvas.pixels, canvas.pixels + 100 * 60, [](uint32_t p) { return p == kWhite; }));
}

// --- Pictures -----------------------------------------------------------------------------------

TEST(FontGolden, AllFontsOfTheStyleSheet) {
    const char* sample = "Wohnzimmer · Вітальня, їжа ґ · İğdır Şişli · ț ș ă â î · 23.5 °C AV To";
    Canvas canvas(1000, 1230, 0xFFFDF4EB);
    int y = 10;
    for (const NamedSize& entry : kFonts) {
        const bool bold = std::string(entry.name).find("_bold") != std::string::npos;
        Font font(entry.size, bold);
        const char* text = entry.size > 100 ? "21:48" : sample;
        WidthOf(font, text);
        canvas.DrawText(CVrPoint(10, y), font, text, kBlack, 0xFFFDF4EB, 970);
        y += entry.size + 10;
    }
    EXPECT_TRUE(golden::Matches("fonts", canvas.Picture()));
}

// Every letter that the display's languages need is in both faces.
TEST(Font, BothFacesHaveTheLettersOfTheDisplaysLanguages) {
    const char* letters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
        "ÄÖÜäöüßẞ„“”‚‘’«»–—…·•×°€§%‰µ²³½"
        "АБВГҐДЕЁЄЖЗИІЇЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯабвгґдеёєжзиіїйклмнопрстуфхцчшщъыьэюя"
        "ÇĞİIÖŞÜçğıiöşüĂÂÎȘȚăâîșțŞŢşţ"
        "ÀÁÃÅÆÈÉÊËÌÍÏÐÑÒÓÔÕØÙÚÛÝÞàáãåæèéêëìíïðñòóôõøùúûýþÿŒœŠšŽžČčĆćĐđŁłŃńŚśŹźŻżĄąĘęĚěŘřŤťĎďŇňŮůŐőŰű";
    for (const bool bold : {false, true}) {
        Font font(20, bold);
        font.EnsureLoaded();
        for (Utf8Reader reader(letters); !reader.IsAtEnd();) {
            const uint32_t code = reader.Next();
            EXPECT_NE(font.GetGlyphDsc(code, 0), nullptr)
                << std::hex << code << (bold ? " bold" : " regular");
        }
    }
}

} // namespace
