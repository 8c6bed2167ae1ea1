#include "gui/svg_image.h"

#include "gui/nanosvg_import.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

constexpr char kHouse[] =
    "<svg xmlns='http://www.w3.org/2000/svg' width='24' height='24' fill='none' stroke='#000' "
    "stroke-width='2'><path d='M3 10 L12 3 L21 10 L21 21 L3 21 Z'/><path d='M9 21 L9 14 L15 14 "
    "L15 21'/></svg>";
constexpr char kArrow[] = "<svg width='24' height='24' fill='none' stroke='black' stroke-width='2'>"
                          "<path d='M4 12 L20 12 M14 6 L20 12 L14 18'/></svg>";

CVrRect Square(int32_t side) {
    return CVrRect(0, 0, side, side);
}

std::vector<uint8_t> Bitmap(const CVrGuiSvg2Img& image) {
    return {image.bitmap, image.bitmap + image.bitmapBytes};
}

std::vector<uint8_t> RenderedAlpha(const char* svg, int side) {
    std::string text(svg);
    NSVGimage* image = nsvgParse(text.data(), "", 96);
    NSVGrasterizer* rasterizer = nsvgCreateRasterizer();
    std::vector<uint8_t> rgba(static_cast<size_t>(side * side * 4));
    nsvgRasterize(rasterizer, image, 0, 0, static_cast<float>(side) / image->width, rgba.data(), side, side,
                  side * 4);
    nsvgDeleteRasterizer(rasterizer);
    nsvgDelete(image);
    std::vector<uint8_t> alpha;
    for (size_t i = 3; i < rgba.size(); i += 4)
        alpha.push_back(rgba[i]);
    return alpha;
}

TEST(SvgImage, AMonoBitmapIsTheAlphaOfTheRasterizer) {
    for (int side : {1, 24, 64, 90, 360, 361, 500}) { // The last two do not fit the shared scratch.
        CVrGuiSvg2Img image;
        ASSERT_TRUE(image.LoadAndRender(kHouse, 0, Square(side), true));
        EXPECT_EQ(Bitmap(image), RenderedAlpha(kHouse, side)) << side;
        EXPECT_EQ(image.image, nullptr) << "the parsed picture does not outlive the bitmap";
    }
}

TEST(SvgImage, AColourBitmapHasTheBytesOfTheStore) {
    CVrGuiSvg2Img image;
    const char* svg = "<svg width='2' height='2'><rect width='2' height='2' fill='#102030'/></svg>";
    ASSERT_TRUE(image.LoadAndRender(svg, 0, Square(2), false));
    EXPECT_EQ(image.mono, 0);
    EXPECT_EQ(image.bitmapBytes, 16U);
    uint32_t pixel = 0;
    std::memcpy(&pixel, image.bitmap, 4);
    EXPECT_EQ(pixel, 0xFF102030U);
}

TEST(SvgImage, TheWidthSetsTheScale) {
    CVrGuiSvg2Img image;
    const char* wide = "<svg width='20' height='10'><rect width='20' height='10' fill='black'/></svg>";
    ASSERT_TRUE(image.LoadAndRender(wide, 0, Square(40), true));
    EXPECT_EQ(image.bitmap[19 * 40 + 20], 255);
    EXPECT_EQ(image.bitmap[21 * 40 + 20], 0) << "a blank strip below";
}

TEST(SvgImage, ASecondRenderOfTheSameSizeNeedsNoPicture) {
    CVrGuiSvg2Img image;
    EXPECT_FALSE(image.Render(Square(24), true));
    ASSERT_TRUE(image.LoadAndRender(kHouse, sizeof kHouse - 1, Square(24), true));
    const uint8_t* bitmap = image.bitmap;
    EXPECT_TRUE(image.Render(Square(24), true));
    EXPECT_EQ(image.bitmap, bitmap);
    EXPECT_FALSE(image.Render(Square(25), true));
    ASSERT_TRUE(image.LoadAndRender(kHouse, 0, Square(24), false));
    EXPECT_FALSE(image.Render(Square(24), true)) << "another mode";
}

TEST(SvgImage, AnotherPictureOfTheSameSizeReplacesTheBitmap) {
    CVrGuiSvg2Img image;
    ASSERT_TRUE(image.LoadAndRender(kHouse, 0, Square(24), true));
    ASSERT_TRUE(image.LoadAndRender(kArrow, 0, Square(24), true));
    EXPECT_EQ(Bitmap(image), RenderedAlpha(kArrow, 24));
}

TEST(SvgImage, WhatIsNoPictureFailsToParse) {
    const std::string endless(1 << 20, ' ');
    const char* texts[] = {
        "",
        endless.c_str(),
        "<svg></svg>",
        "<svg width='0' height='0'/>",
        "<svg width='1e30' height='1e30'><rect width='1' height='1'/></svg>",
        "<svg width='24' height='24'><path d='M1e30 1e30 L5 5 Z'/></svg>",
        "<svg width='24' height='24'><path stroke='black' stroke-width='1e20' d='M1 1 L5 5'/></svg>",
        "no picture at all",
    };
    for (const char* text : texts) {
        CVrGuiSvg2Img image;
        EXPECT_FALSE(image.LoadAndRender(text, 0, Square(24), true)) << text;
        EXPECT_EQ(image.parseFailed, 1) << text;
        EXPECT_EQ(image.image, nullptr);
        EXPECT_FALSE(image.HasBitmap());
    }
    CVrGuiSvg2Img image;
    EXPECT_FALSE(image.Parse(nullptr, 0));
    EXPECT_FALSE(image.Parse(nullptr, 100));
    EXPECT_TRUE(image.Parse(kHouse, 0));
    EXPECT_EQ(image.parseFailed, 0);
    EXPECT_FLOAT_EQ(image.svgWidth, 24);
}

TEST(SvgImage, SizesThatNoScreenHasFail) {
    for (const CVrRect& rect : {CVrRect(0, 0, 0, 24), CVrRect(0, 0, 24, -1), CVrRect(0, 0, 100000, 1)}) {
        CVrGuiSvg2Img image;
        ASSERT_TRUE(image.Parse(kHouse, 0));
        EXPECT_FALSE(image.Render(rect, true));
        EXPECT_EQ(image.image, nullptr);
        ASSERT_TRUE(image.Parse(kHouse, 0));
        EXPECT_FALSE(image.RenderFilled(rect));
        EXPECT_EQ(image.image, nullptr);
        EXPECT_FALSE(image.HasBitmap());
    }
}

TEST(SvgImage, ThinDashesAndSharpMitersAreDrawnAllTheSame) {
    CVrGuiSvg2Img image;
    const char* svg =
        "<svg width='24' height='24'><path stroke='black' stroke-dasharray='1e-9 1e-9' "
        "stroke-miterlimit='1e30' stroke-width='2' fill='none' d='M2 12 L22 12 L2 12.01'/></svg>";
    EXPECT_TRUE(image.LoadAndRender(svg, 0, Square(24), true));
    EXPECT_EQ(image.bitmap[12 * 24 + 12], 255);
}

TEST(SvgImage, AGradientOfOneColourIsThatColour) {
    const char* svg =
        "<svg width='4' height='4'><linearGradient id='a'><stop offset='0.3' stop-color='#102030'/>"
        "</linearGradient><rect width='4' height='4' fill='url(#a)' stroke='url(#a)'/></svg>";
    CVrGuiSvg2Img image;
    ASSERT_TRUE(image.LoadAndRender(svg, 0, Square(4), false));
    uint32_t pixel = 0;
    std::memcpy(&pixel, image.bitmap + 4 * 5, 4);
    EXPECT_EQ(pixel, 0xFF102030U);
}

// Texts that once led the parser astray: numbers that are none, a reference that never ends.
TEST(SvgImage, StrangeTextsAreHarmless) {
    for (const char* text : {"<svg width='24' height='24'><path d='M6 141e304a5 5 0 0 1 11 0'/></svg>",
                             "<svg width='24' height='24'><linearGradient id='a' fill=\"url(#000"}) {
        CVrGuiSvg2Img image;
        const std::string exact(text); // Nothing readable behind it.
        image.LoadAndRender(exact.data(), static_cast<uint32_t>(exact.size()), Square(24), true);
        EXPECT_EQ(image.image, nullptr) << text;
    }
}

// --- The filled style ---------------------------------------------------------------------------

TEST(RenderFilled, ClosedLinesBecomeAreasAndLinesBecomeHolesInThem) {
    CVrGuiSvg2Img lines;
    CVrGuiSvg2Img filled;
    ASSERT_TRUE(lines.LoadAndRender(kHouse, 0, Square(48), true));
    ASSERT_TRUE(filled.Parse(kHouse, 0));
    ASSERT_TRUE(filled.RenderFilled(Square(48)));
    EXPECT_EQ(filled.mono, 1);
    EXPECT_EQ(filled.image, nullptr);
    auto at = [](const CVrGuiSvg2Img& image, int x, int y) { return image.bitmap[y * 48 + x]; };
    EXPECT_EQ(at(lines, 10, 30), 0);
    EXPECT_EQ(at(filled, 10, 30), 255) << "the wall is solid";
    EXPECT_EQ(at(lines, 18, 35), 255) << "the door's left line";
    EXPECT_EQ(at(filled, 18, 35), 0) << "is a hole";
    EXPECT_EQ(at(lines, 5, 30), 255) << "the outer half of the house's left line";
    EXPECT_EQ(at(filled, 5, 30), 255) << "stays";
    EXPECT_EQ(at(filled, 7, 30), 0) << "its inner half is a hole";
}

TEST(RenderFilled, EachPixelFollowsFromTheTwoMasks) {
    const char* areas =
        "<svg width='24' height='24'><path fill='#fff' d='M3 10 L12 3 L21 10 L21 21 L3 21 Z'/></svg>";
    const std::vector<uint8_t> a = RenderedAlpha(kHouse, 64);
    const std::vector<uint8_t> b = RenderedAlpha(areas, 64);
    CVrGuiSvg2Img filled;
    ASSERT_TRUE(filled.Parse(kHouse, 0));
    ASSERT_TRUE(filled.RenderFilled(Square(64)));
    for (size_t i = 0; i < a.size(); i++) {
        const int expected = b[i] <= 3 ? a[i] : b[i] > a[i] ? b[i] - a[i] : 0;
        ASSERT_EQ(filled.bitmap[i], expected) << i;
    }
}

TEST(RenderFilled, ASymbolWithoutClosedLinesLooksAsEver) {
    const char* solid = "<svg width='24' height='24'><circle cx='12' cy='12' r='9' fill='black'/></svg>";
    for (const char* svg : {kArrow, solid}) {
        CVrGuiSvg2Img filled;
        ASSERT_TRUE(filled.Parse(svg, 0));
        ASSERT_TRUE(filled.RenderFilled(Square(64)));
        EXPECT_EQ(Bitmap(filled), RenderedAlpha(svg, 64));
    }
    CVrGuiSvg2Img none;
    EXPECT_FALSE(none.RenderFilled(Square(64)));
}

} // namespace
