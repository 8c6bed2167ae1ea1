#include "gui/frame_buffer.h"

#include "foundation/map.h"
#include "gui/image.h"
#include "gui/svg_image.h"
#include "gui/vector_surface.h"
#include "support/log_capture.h"
#include "support/plain_pixels.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

constexpr uint32_t kWhite = 0xFFFFFFFF;
constexpr uint32_t kRed = 0xFFCC2010;

// A store that tests can look at. Random ones hold alphas at the thresholds and unpainted pixels.
class Canvas : public CVrGuiFrameBuffer {
public:
    Canvas(int width, int height, uint32_t color = 0xFF102030) {
        InitMem(CVrRect(0, 0, width, height));
        std::fill_n(pixels, width * height, color);
    }
    static constexpr uint32_t kAlphas[] = {0, 1, 3, 4, 100, 251, 252, 255, 255, 255};

    void Randomize(std::mt19937& random) {
        for (uint32_t& pixel : *this) {
            pixel = kAlphas[random() % std::size(kAlphas)] << 24 | (random() & 0xFFFFFF);
            if (random() % 8 == 0)
                pixel = kUnpainted;
        }
    }

    uint32_t* begin() { return pixels; }
    uint32_t* end() { return pixels + Count(); }
    uint32_t& At(int x, int y) { return Row(y)[x]; }
    uint32_t At(int x, int y) const { return Row(y)[x]; }
    std::vector<uint32_t> Copy() const { return {pixels, pixels + Count()}; }
    bool IsAll(uint32_t color) const {
        return std::all_of(pixels, pixels + Count(), [=](uint32_t p) { return p == color; });
    }

private:
    size_t Count() const { return static_cast<size_t>(storeSize.width) * storeSize.height; }
};

int RandomBetween(std::mt19937& random, int low, int high) {
    return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
}

// --- The rules word by word, one pixel after the other ------------------------------------------

namespace slow {

uint8_t Corner(int radius, int row, int col) {
    if (radius == 0)
        return 255;
    const int dy = radius - row;
    const int dx = radius - col;
    const int d = static_cast<int>((dx * dx + dy * dy) / (radius * radius / 1000.0));
    return d < 1000   ? 255
           : d < 1010 ? 224
           : d < 1025 ? 192
           : d < 1035 ? 160
           : d < 1045 ? 128
           : d < 1052 ? 96
           : d < 1060 ? 64
                      : 0;
}

// Coverage of a corner pixel, -1 for an inner one: the first corner of the mask whose square holds the pixel.
int CornerAt(int row, int col, int w, int h, int r, uint32_t mask) {
    if ((mask & 1) && row <= r && col <= r)
        return Corner(r, row, col);
    if ((mask & 2) && row <= r && col >= w - 1 - r)
        return Corner(r, row, w - 1 - col);
    if ((mask & 4) && row >= h - 1 - r && col <= r)
        return Corner(r, h - 1 - row, col);
    if ((mask & 8) && row >= h - 1 - r && col >= w - 1 - r)
        return Corner(r, h - 1 - row, w - 1 - col);
    return -1;
}

uint32_t Gradient(uint32_t c1, uint32_t c2, int i, int w) {
    const int t = i * 256 / w;
    uint32_t out = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const int a = static_cast<int>(c1 >> shift & 255);
        const int b = static_cast<int>(c2 >> shift & 255);
        out |= static_cast<uint32_t>(((b - a) * t >> 8) + a) << shift;
    }
    return out;
}

void FillRoundRect(Canvas& canvas, CVrRect rect, int r, uint32_t mask, uint32_t color, bool writeAlpha,
                   uint32_t color2, bool gradient) {
    for (int row = 0; row < rect.height; row++) {
        for (int col = 0; col < rect.width; col++) {
            const int y = rect.y + row;
            if (canvas.clip.height != 0 && y >= canvas.clip.height)
                continue;
            uint32_t& dst = canvas.At(rect.x + col, y);
            const uint32_t c = gradient ? Gradient(color, color2, col, rect.width) : color;
            const int corner = CornerAt(row, col, rect.width, rect.height, r, mask);
            const uint32_t alpha = c >> 24;
            if (color == kUnpainted)
                dst = color;
            else if (corner < 0)
                dst = alpha == 255 ? c : plain::Blend(dst, c, alpha);
            else if (writeAlpha || dst == kUnpainted)
                dst = static_cast<uint32_t>(corner) << 24 | (c & 0xFFFFFF);
            else
                dst = plain::Blend(dst, c, alpha < 255 ? static_cast<uint32_t>(corner) * alpha >> 8 : corner);
        }
    }
}

void BlendStore(Canvas& canvas, CVrRect clipRect, const Canvas& source, CVrPoint at, int radius) {
    int left = std::max({at.x, clipRect.x, 0});
    int top = std::max({at.y, clipRect.y, 0});
    int right = std::min({at.x + source.storeSize.width, clipRect.Right(), canvas.storeSize.width});
    int bottom = std::min({at.y + source.storeSize.height, clipRect.Bottom(), canvas.storeSize.height});
    if (canvas.clip.height != 0)
        bottom = std::min(bottom, canvas.clip.height);
    const int w = right - left;
    const int h = bottom - top;
    const int r = std::min({radius, w / 2, h / 2});
    for (int row = 0; row < h; row++) {
        for (int col = 0; col < w; col++) {
            const int dx = col < r ? r - 1 - col : col >= w - r ? col - (w - r) : -1;
            const int dy = row < r ? r - 1 - row : row >= h - r ? row - (h - r) : -1;
            if (dx >= 0 && dy >= 0 && dx * dx + dy * dy >= r * r)
                continue;
            const uint32_t src = source.At(left + col - at.x, top + row - at.y);
            plain::BlendRow(&canvas.At(left + col, top + row), &src, 1);
        }
    }
}

} // namespace slow

// --- Store --------------------------------------------------------------------------------------

TEST(FrameBuffer, InitMemGivesZeroedPixelsAndKeepsAStoreOfTheSameSize) {
    CVrGuiFrameBuffer buffer;
    buffer.InitMem(CVrRect(5, 6, 7, 3));
    ASSERT_TRUE(buffer.HasStore());
    EXPECT_EQ(buffer.storeSize, CVrSize(7, 3));
    EXPECT_EQ(buffer.Row(2)[6], 0U);
    buffer.Row(1)[1] = 42;
    buffer.clip.height = 2;
    buffer.InitMem(CVrRect(0, 0, 7, 3));
    EXPECT_EQ(buffer.Row(1)[1], 42U);
    EXPECT_EQ(buffer.clip.height, 2);
    buffer.InitMem(CVrRect(0, 0, 3, 7));
    EXPECT_EQ(buffer.Row(1)[1], 0U);
    EXPECT_EQ(buffer.clip.height, 0);
}

TEST(FrameBuffer, AStoreThatCannotBeHadIsReportedAndAbsent) {
    LogCapture log;
    CVrGuiFrameBuffer buffer;
    buffer.InitMem(CVrRect(0, 0, 4, 4));
    buffer.InitMem(CVrRect(0, 0, INT32_MAX, INT32_MAX));
    EXPECT_FALSE(buffer.HasStore());
    EXPECT_EQ(buffer.storeSize, CVrSize());
    EXPECT_EQ(log.Count("CVrGuiFrameBuffer::InitMem: no memory"), 1U);
    buffer.InitMem(CVrRect(0, 0, -5, 9));
    EXPECT_FALSE(buffer.HasStore());
}

TEST(FrameBuffer, NothingIsDrawnWithoutAStore) {
    CVrGuiFrameBuffer none;
    const Canvas source(4, 4);
    none.FillRect(CVrRect(0, 0, 1, 1), kRed);
    none.FillRoundRect(CVrRect(0, 0, 1, 1), 3, CornerAll, kRed);
    none.BlendStore(CVrRect(0, 0, 10, 10), source, CVrPoint(), 0);
    Canvas target(4, 4);
    target.BlendStore(CVrRect(0, 0, 10, 10), none, CVrPoint(), 0);
    EXPECT_TRUE(target.IsAll(0xFF102030));
}

// --- Corner tables ------------------------------------------------------------------------------

TEST(CornerTable, IsOneSharedTableForEachRadius) {
    EXPECT_EQ(CVrGuiFrameBuffer::GetCornerTable(15), CVrGuiFrameBuffer::GetCornerTable(15));
    EXPECT_EQ(CVrGuiFrameBuffer::GetCornerTable(0)[0], 255);
    EXPECT_EQ(CVrGuiFrameBuffer::GetCornerTable(-3), CVrGuiFrameBuffer::GetCornerTable(0));
    EXPECT_NE(CVrGuiFrameBuffer::GetCornerTable(INT32_MAX), nullptr);
}

TEST(CornerTable, FollowsTheStepsOfCoverage) {
    for (int radius : {1, 2, 10, 15, 16, 25}) {
        const uint8_t* table = CVrGuiFrameBuffer::GetCornerTable(radius);
        for (int row = 0; row <= radius; row++) {
            for (int col = 0; col <= radius; col++)
                ASSERT_EQ(table[row * (radius + 1) + col], slow::Corner(radius, row, col)) << radius;
        }
        EXPECT_EQ(table[0], 0) << "outermost pixel";
        EXPECT_EQ(table[(radius + 1) * (radius + 1) - 1], 255) << "centre";
    }
}

TEST(CornerTable, LiesInTheMapOfTheApplicationWhileThatIsSet) {
    CVrMapIntToPtr map;
    CVrGuiFrameBuffer::SetCornerTableMap(&map);
    const uint8_t* table = CVrGuiFrameBuffer::GetCornerTable(7);
    EXPECT_EQ(map.Lookup(7), table);
    CVrGuiFrameBuffer::SetCornerTableMap(nullptr);
    CVrGuiFrameBuffer::FreeCornerTables(map);
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_NE(CVrGuiFrameBuffer::GetCornerTable(7), nullptr);
}

// --- Fills --------------------------------------------------------------------------------------

TEST(FillRect, DrawsNothingUnlessItFitsWholly) {
    Canvas canvas(20, 10);
    for (const CVrRect& rect :
         {CVrRect(-1, 0, 5, 5), CVrRect(0, -1, 5, 5), CVrRect(0, 0, 0, 5), CVrRect(0, 0, 5, 0),
          CVrRect(0, 0, -5, 5), CVrRect(16, 0, 5, 5), CVrRect(0, 6, 5, 5), CVrRect(1, 1, INT32_MAX, 2),
          CVrRect(INT32_MAX, INT32_MAX, 2, 2)}) {
        canvas.FillRect(rect, kRed);
        canvas.FillRoundRect(rect, 3, CornerAll, kRed);
    }
    EXPECT_TRUE(canvas.IsAll(0xFF102030));
    canvas.FillRect(CVrRect(0, 0, 20, 10), 0);
    EXPECT_TRUE(canvas.IsAll(0));
    canvas.FillRoundRect(CVrRect(0, 0, 20, 10), 4, CornerAll, kUnpainted, CornerAlpha::Write);
    EXPECT_TRUE(canvas.IsAll(kUnpainted));
}

TEST(FillRect, StopsAtTheClipHeight) {
    Canvas canvas(8, 200);
    canvas.clip.height = 100;
    canvas.FillRect(CVrRect(0, 90, 8, 50), kRed);
    canvas.FillRect(CVrRect(0, 150, 8, 5), kRed);
    EXPECT_EQ(canvas.At(0, 89), 0xFF102030);
    EXPECT_EQ(canvas.At(7, 99), kRed);
    EXPECT_EQ(canvas.At(0, 100), 0xFF102030);
    EXPECT_EQ(canvas.At(0, 152), 0xFF102030);
}

TEST(FillRoundRect, RadiusZeroIsAPlainRectangle) {
    Canvas rounded(9, 9, kWhite);
    Canvas flat(9, 9, kWhite);
    rounded.FillRoundRect(CVrRect(1, 1, 7, 7), 0, CornerAll, kRed);
    flat.FillRect(CVrRect(1, 1, 7, 7), kRed);
    EXPECT_EQ(rounded.Copy(), flat.Copy());
}

TEST(FillRoundRect, OwnStoresKeepTheirCornersTransparent) {
    Canvas canvas(40, 40, kUnpainted);
    canvas.FillRoundRect(CVrRect(0, 0, 40, 40), 15, CornerTopLeft, kRed, CornerAlpha::Write);
    EXPECT_EQ(canvas.At(0, 0), 0x00CC2010U);
    EXPECT_EQ(canvas.At(39, 0), kRed);
    EXPECT_EQ(canvas.At(20, 20), kRed);
}

TEST(FillRoundRect, EqualsTheRulesOnRandomRectangles) {
    std::mt19937 random(1);
    for (int round = 0; round < 4000; round++) {
        Canvas actual(60, 50);
        actual.Randomize(random);
        Canvas expected(60, 50);
        std::copy(actual.begin(), actual.end(), expected.begin());
        actual.clip.height = expected.clip.height = round % 3 == 0 ? RandomBetween(random, 1, 70) : 0;
        const int x = RandomBetween(random, 0, 40);
        const int y = RandomBetween(random, 0, 30);
        const CVrRect rect(x, y, RandomBetween(random, 1, 60 - x), RandomBetween(random, 1, 50 - y));
        const int radius = RandomBetween(random, 0, 20);
        const auto mask = static_cast<uint32_t>(RandomBetween(random, 0, 15));
        const uint32_t color =
            Canvas::kAlphas[random() % std::size(Canvas::kAlphas)] << 24 | (random() & 0xFFFFFF);
        const uint32_t color2 = random() & 0xFFFFFFFF;
        const bool writeAlpha = random() % 2;
        const bool gradient = random() % 2;
        actual.FillRoundRect(rect, radius, mask, color, writeAlpha ? CornerAlpha::Write : CornerAlpha::Blend,
                             color2, gradient ? Gradient::Horizontal : Gradient::None);
        slow::FillRoundRect(expected, rect, radius, mask, color, writeAlpha, color2, gradient);
        ASSERT_EQ(actual.Copy(), expected.Copy())
            << rect.width << "x" << rect.height << " radius " << radius << " mask " << mask;
    }
}

TEST(FillRoundRect, AGradientRunsFromTheFirstColourAlmostToTheSecond) {
    Canvas canvas(256, 1, 0xFF000000);
    canvas.FillRoundRect(CVrRect(0, 0, 256, 1), 0, CornerNone, 0xFF000000, CornerAlpha::Blend, 0xFF80FF00,
                         Gradient::Horizontal);
    EXPECT_EQ(canvas.At(0, 0), 0xFF000000);
    EXPECT_EQ(canvas.At(128, 0), 0xFF407F00);
    EXPECT_EQ(canvas.At(255, 0), 0xFF7FFE00);
}

// --- Pictures -----------------------------------------------------------------------------------

class RoundImage : public testing::Test {
protected:
    void Make(uint32_t bits, uint32_t width, uint32_t height) {
        ASSERT_TRUE(image.Allocate(width, height, bits));
        for (uint32_t i = 0; i < height * image.stride; i++)
            image.pixels[i] = static_cast<uint8_t>(random());
    }
    uint32_t Source(uint32_t x, uint32_t y) const {
        const uint8_t* p = image.pixels + y * image.stride + x * image.BytesPerPixel();
        return 0xFF000000 | static_cast<uint32_t>(p[2] << 16 | p[1] << 8 | p[0]);
    }
    std::mt19937 random{7};
    CVrGuiImage image;
};

TEST_F(RoundImage, RoundsItsCornersAndIsOpaqueElsewhere) {
    for (uint32_t bits : {24U, 32U}) {
        Make(bits, 40, 30);
        Canvas canvas(60, 50);
        canvas.DrawRoundImage(CVrRect(3, 4, 50, 40), 8, &image);
        for (int y = 0; y < 30; y++) {
            for (int x = 0; x < 40; x++) {
                const int corner = slow::CornerAt(y, x, 40, 30, 8, 15);
                const uint32_t source = Source(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
                const uint32_t expected = corner < 0 ? source : plain::Blend(0xFF102030, source, corner);
                const bool isCopied = bits == 32 && y > 8 && y < 21; // with the picture's own alpha
                ASSERT_EQ(canvas.At(3 + x, 4 + y) | (isCopied ? 0xFF000000 : 0), expected) << x << "/" << y;
            }
        }
        EXPECT_EQ(canvas.At(43, 10), 0xFF102030U) << "right of the picture";
        EXPECT_EQ(canvas.At(10, 34), 0xFF102030U) << "below the picture";
    }
}

TEST_F(RoundImage, IsCutToASmallerRectangleRowByRow) {
    Make(24, 40, 30);
    Canvas canvas(60, 50);
    canvas.DrawRoundImage(CVrRect(0, 0, 20, 10), 0, &image);
    EXPECT_EQ(canvas.At(10, 5), Source(10, 5));
    EXPECT_EQ(canvas.At(20, 5), 0xFF102030U);
    EXPECT_EQ(canvas.At(10, 10), 0xFF102030U);
}

TEST_F(RoundImage, IsSkippedWhenMissingTooSmallOrOutside) {
    Canvas canvas(60, 50);
    canvas.DrawRoundImage(CVrRect(0, 0, 40, 30), 4, nullptr);
    canvas.DrawRoundImage(CVrRect(0, 0, 40, 30), 4, &image);
    Make(24, 40, 23);
    canvas.DrawRoundImage(CVrRect(0, 0, 40, 23), 8, &image);
    canvas.DrawRoundImage(CVrRect(21, 0, 40, 23), 4, &image);
    EXPECT_TRUE(canvas.IsAll(0xFF102030));
}

// --- Composition --------------------------------------------------------------------------------

TEST(BlendStore, AlphaDecidesBetweenStoringBlendingAndSkipping) {
    Canvas source(4, 1);
    const uint32_t row[] = {0xFC123456, 0xFB808080, 0x04FFFFFF, 0x03FFFFFF};
    std::memcpy(source.pixels, row, sizeof row);
    Canvas target(4, 1, 0xFF000000);
    target.BlendStore(CVrRect(0, 0, 4, 1), source, CVrPoint(), 0);
    EXPECT_EQ(target.At(0, 0), 0xFC123456U) << "alpha included";
    EXPECT_EQ(target.At(1, 0), 0xFF7D7D7DU);
    EXPECT_EQ(target.At(2, 0), 0xFF040404U);
    EXPECT_EQ(target.At(3, 0), 0xFF000000U);
}

TEST(BlendStore, ALongStoreShowsThroughItsWindowWithRoundCorners) {
    Canvas list(100, 1000, kRed);
    Canvas page(200, 300, kWhite);
    page.BlendStore(CVrRect(10, 20, 100, 200), list, CVrPoint(10, 20 - 400), 16);
    EXPECT_EQ(page.At(10, 20), kWhite);
    EXPECT_EQ(page.At(26, 20), kRed);
    EXPECT_EQ(page.At(10, 120), kRed);
    EXPECT_EQ(page.At(109, 219), kWhite);
    EXPECT_EQ(page.At(60, 219), kRed);
    EXPECT_EQ(page.At(60, 220), kWhite);
    EXPECT_EQ(page.At(60, 19), kWhite);
}

TEST(BlendStore, EqualsTheRulesOnRandomPlaces) {
    std::mt19937 random(2);
    for (int round = 0; round < 4000; round++) {
        Canvas actual(50, 40);
        actual.Randomize(random);
        Canvas expected(50, 40);
        std::copy(actual.begin(), actual.end(), expected.begin());
        actual.clip.height = expected.clip.height = round % 3 == 0 ? RandomBetween(random, 1, 60) : 0;
        Canvas source(RandomBetween(random, 1, 70), RandomBetween(random, 1, 60));
        source.Randomize(random);
        if (round % 2) // long solid rows too
            source.FillRect(CVrRect(0, 0, source.storeSize.width, (source.storeSize.height + 1) / 2), kRed);
        const CVrPoint at(RandomBetween(random, -60, 60), RandomBetween(random, -50, 50));
        const CVrRect clipRect(RandomBetween(random, -20, 40), RandomBetween(random, -20, 30),
                               RandomBetween(random, -5, 70), RandomBetween(random, -5, 60));
        const int radius = RandomBetween(random, 0, 18);
        actual.BlendStore(clipRect, source, at, radius);
        slow::BlendStore(expected, clipRect, source, at, radius);
        ASSERT_EQ(actual.Copy(), expected.Copy()) << "round " << round;
    }
}

// --- Coverage, symbols and vector frames --------------------------------------------------------

TEST(DrawMono, IsClippedAtAllSidesAndAtTheClipHeight) {
    const std::vector<uint8_t> coverage(10 * 10, 255);
    for (const CVrPoint at : {CVrPoint(-4, -3), CVrPoint(15, 12), CVrPoint(5, 5), CVrPoint(100, 100),
                              CVrPoint(-100, 5), CVrPoint(INT32_MAX - 2, INT32_MIN)}) {
        Canvas canvas(20, 16);
        canvas.clip.height = 12;
        canvas.drawColor = kRed;
        canvas.DrawMono(coverage.data(), CVrSize(10, 10), at);
        for (int y = 0; y < 16; y++) {
            for (int x = 0; x < 20; x++) {
                const bool isInside = CVrRect(at, CVrSize(10, 10)).Contains(CVrPoint(x, y)) && y < 12;
                ASSERT_EQ(canvas.At(x, y), isInside ? kRed : 0xFF102030U) << x << "/" << y;
            }
        }
    }
}

TEST(DrawMono, AColourWithoutAlphaPaintsLikeAnOpaqueOne) {
    const uint8_t coverage[] = {255, 128, 3};
    Canvas canvas(3, 1, 0xFF000000);
    canvas.drawColor = 0x00FF8000;
    canvas.DrawMono(coverage, CVrSize(3, 1), CVrPoint());
    EXPECT_EQ(canvas.At(0, 0), 0x00FF8000U) << "stored as it is";
    EXPECT_EQ(canvas.At(1, 0), 0xFF934900U) << "128 boosted to 147";
    EXPECT_EQ(canvas.At(2, 0), 0xFF000000U);
}

TEST(DrawSvg, ANegativePositionIsReportedAndDrawsNothing) {
    LogCapture log;
    CVrGuiSvg2Img icon;
    Canvas canvas(8, 8);
    canvas.DrawSvg(icon, CVrPoint(-1, 0), kRed);
    canvas.DrawSvg(icon, CVrPoint(0, -7), kRed);
    EXPECT_TRUE(log.Has("CVrGuiFrameBuffer::DrawSvg: Outside pos -1/0"));
    EXPECT_TRUE(log.Has("Outside pos 0/-7"));
    canvas.DrawSvg(icon, CVrPoint(0, 0), kRed);
    EXPECT_TRUE(canvas.IsAll(0xFF102030));
}

TEST(DrawSvg, AColourSymbolKeepsItsColoursAndIsCutAtTheEdges) {
    static const char kSvg[] =
        "<svg width='10' height='10'><rect width='10' height='10' fill='#ff8000'/></svg>";
    CVrGuiSvg2Img icon;
    ASSERT_TRUE(icon.LoadAndRender(kSvg, 0, CVrRect(0, 0, 10, 10), false));
    Canvas canvas(12, 12);
    canvas.DrawSvg(icon, CVrPoint(6, 7), 0xFF0000FF);
    EXPECT_EQ(canvas.At(6, 7), 0xFFFF8000U);
    EXPECT_EQ(canvas.At(11, 11), 0xFFFF8000U);
    EXPECT_EQ(canvas.At(5, 7), 0xFF102030U);
}

class FixedSurface : public CVrVectorSurface {
public:
    void RenderFrame() override { renderings++; }
    CVrSize GetSurfaceSize() const override { return CVrSize(4, 2); }
    const uint32_t* GetSurfacePixels() const override { return pixels; }

    int renderings = 0;
    uint32_t pixels[8] = {0xFF123456, 0x80000000, 0x03FFFFFF, 0x04FFFFFF, 0xFF000000, 0, 0, 0};
};

TEST(DrawVectorFrame, TintsTheCurrentFrameByItsAlpha) {
    FixedSurface surface;
    Canvas canvas(6, 2, 0xFF000000);
    canvas.DrawVectorFrame(surface, CVrPoint(-1, 1), 0x00FF0000);
    EXPECT_EQ(surface.renderings, 1);
    EXPECT_EQ(canvas.At(0, 1), 0xFF800000U) << "the second column, the first lies outside";
    EXPECT_EQ(canvas.At(1, 1), 0xFF000000U) << "alpha 3 is skipped";
    EXPECT_EQ(canvas.At(2, 1), 0xFF040000U);
    canvas.DrawVectorFrame(surface, CVrPoint(0, 0), 0x80FFFFFF);
    EXPECT_EQ(canvas.At(0, 0), 0xFF808080U) << "255 * 128 / 255";
    EXPECT_EQ(canvas.At(0, 1), 0xFFBF8080U) << "the second row";
}

} // namespace
