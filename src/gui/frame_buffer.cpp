// Sections: store; corner tables; fills; pictures; composition; coverage, symbols and vector frames; text.
#include "gui/frame_buffer.h"

#include "foundation/array.h"
#include "foundation/log.h"
#include "foundation/map.h"
#include "gui/font.h"
#include "gui/image.h"
#include "gui/pixel_ops.h"
#include "gui/svg_image.h"
#include "gui/utf8_reader.h"
#include "gui/vector_surface.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

using pixelops::BestLoops;
using pixelops::BlendPixel;

namespace {

constexpr uint32_t kRgbMask = 0x00FFFFFFU;
constexpr uint32_t kAlphaMask = 0xFF000000U;
constexpr uint32_t kWhiteRgb = 0x00FFFFFFU;
constexpr uint32_t kOpaque = 255;

uint32_t AlphaOf(uint32_t color) {
    return color >> 24;
}

// A colour that gives no alpha is opaque.
uint32_t InkAlpha(uint32_t color) {
    return AlphaOf(color) == 0 ? kOpaque : AlphaOf(color);
}

uint32_t WithAlpha(uint32_t color, uint32_t alpha) {
    return alpha << 24 | (color & kRgbMask);
}

} // namespace

// --- Store --------------------------------------------------------------------------------------

CVrGuiFrameBuffer::~CVrGuiFrameBuffer() {
    free(pixels);
}

void CVrGuiFrameBuffer::FreeMem() {
    free(pixels);
    pixels = nullptr;
    storeSize = CVrSize();
}

void CVrGuiFrameBuffer::InitMem(const CVrRect& rect) {
    if (pixels && storeSize == rect.Size())
        return;
    FreeMem();
    clip = CVrRect();
    if (rect.IsEmpty())
        return;
    const uint64_t bytes =
        uint64_t{static_cast<uint32_t>(rect.width)} * static_cast<uint32_t>(rect.height) * 4;
    if (bytes <= kMaxStoreBytes)
        pixels = static_cast<uint32_t*>(calloc(1, bytes));
    if (!pixels) {
        Log(LogState, "CVrGuiFrameBuffer::InitMem", "no memory %llu", static_cast<unsigned long long>(bytes));
        return;
    }
    storeSize = rect.Size();
}

int32_t CVrGuiFrameBuffer::DrawableHeight() const {
    return clip.height == 0 ? storeSize.height : std::clamp(clip.height, 0, storeSize.height);
}

bool CVrGuiFrameBuffer::Fits(const CVrRect& rect) const {
    return pixels && !rect.IsEmpty() && CVrRect(CVrPoint(), storeSize).Contains(rect);
}

CVrRect CVrGuiFrameBuffer::Visible(CVrPoint origin, const CVrSize& size) const {
    if (!pixels || size.IsEmpty())
        return CVrRect();
    return CVrRect(origin, size).Intersected(CVrRect(0, 0, storeSize.width, DrawableHeight()));
}

// --- Corner tables ------------------------------------------------------------------------------

namespace {

struct OwnCornerTables {
    CVrMapIntToPtr map;
    ~OwnCornerTables() { CVrGuiFrameBuffer::FreeCornerTables(map); }
} s_ownCornerTables;

CVrMapIntToPtr* s_cornerTables = &s_ownCornerTables.map;

// What GetCornerTable gives when memory ran out: no corner pixel is painted. Never written, so it costs no
// memory.
uint8_t s_emptyTable[(CVrGuiFrameBuffer::kMaxCornerRadius + 1) * (CVrGuiFrameBuffer::kMaxCornerRadius + 1)];

// Coverage by the squared distance from the centre in thousandths of the squared radius.
uint8_t CornerCoverage(int32_t distance) {
    static constexpr struct {
        int32_t below;
        uint8_t coverage;
    } kSteps[] = {{1000, 255}, {1010, 224}, {1025, 192}, {1035, 160}, {1045, 128}, {1052, 96}, {1060, 64}};
    for (const auto& step : kSteps) {
        if (distance < step.below)
            return step.coverage;
    }
    return 0;
}

void FillCornerTable(uint8_t* table, int32_t radius) {
    const double unit = radius * radius / 1000.0;
    for (int32_t row = 0; row <= radius; row++) {
        for (int32_t col = 0; col <= radius; col++) {
            const int32_t dy = radius - row;
            const int32_t dx = radius - col;
            *table++ = radius == 0 ? 255 : CornerCoverage(static_cast<int32_t>((dx * dx + dy * dy) / unit));
        }
    }
}

// The corners that a row of a rounded rectangle touches, as the rows of the corner table that hold their
// coverage.
struct RowCorners {
    RowCorners(const uint8_t* table, int32_t radius, uint32_t mask, int32_t row, const CVrSize& size) {
        const int32_t side = radius + 1;
        const bool isTop = row <= radius;
        const bool isBottom = row >= size.height - side;
        if (!isTop && !isBottom) {
            rightStart = size.width;
            return;
        }
        const uint8_t* top = isTop ? table + row * side : nullptr;
        const uint8_t* bottom = isBottom ? table + (size.height - 1 - row) * side : nullptr;
        const bool isTopLeft = top && (mask & CornerTopLeft);
        const bool isTopRight = top && (mask & CornerTopRight);
        left = isTopLeft ? top : mask & CornerBottomLeft ? bottom : nullptr;
        right = isTopRight ? top : mask & CornerBottomRight ? bottom : nullptr;

        leftEnd = left ? std::min(side, size.width) : 0;
        rightStart = right ? std::max(size.width - side, 0) : size.width;
        // Where both claim a pixel, top goes before bottom, and left before right.
        if (isTopRight && !isTopLeft)
            leftEnd = std::min(leftEnd, rightStart);
        else
            rightStart = std::max(rightStart, leftEnd);
    }

    const uint8_t* left = nullptr;  // coverage of columns 0 .. leftEnd - 1
    const uint8_t* right = nullptr; // coverage from the last column back to rightStart
    int32_t leftEnd = 0;
    int32_t rightStart = 0;
};

// Calls paint(column, coverage) for the corner pixels of a row.
template <typename Paint>
void ForCornerPixels(const RowCorners& corners, int32_t width, const Paint& paint) {
    for (int32_t col = 0; col < corners.leftEnd; col++)
        paint(col, corners.left[col]);
    for (int32_t col = corners.rightStart; col < width; col++)
        paint(col, corners.right[width - 1 - col]);
}

} // namespace

const uint8_t* CVrGuiFrameBuffer::GetCornerTable(int32_t radius) {
    radius = std::clamp(radius, 0, kMaxCornerRadius);
    if (void* table = s_cornerTables->Lookup(radius))
        return static_cast<const uint8_t*>(table);
    const size_t side = static_cast<size_t>(radius) + 1;
    auto* table = static_cast<uint8_t*>(malloc(side * side));
    if (!table)
        return s_emptyTable;
    FillCornerTable(table, radius);
    if (!s_cornerTables->SetAt(radius, table)) {
        free(table);
        return s_emptyTable;
    }
    return table;
}

void CVrGuiFrameBuffer::SetCornerTableMap(CVrMapIntToPtr* map) {
    s_cornerTables = map ? map : &s_ownCornerTables.map;
}

void CVrGuiFrameBuffer::FreeCornerTables(CVrMapIntToPtr& map) {
    for (void* table = map.GetFirst(); map.IsIterating(); table = map.GetNext())
        free(table);
    map.RemoveAll();
}

// --- Fills --------------------------------------------------------------------------------------

namespace {

// Channel and alpha at column i of a gradient over `width` columns: ((c2 - c1) * t >> 8) + c1 with t = i *
// 256 / width.
uint32_t GradientColor(uint32_t color, uint32_t color2, int32_t i, int32_t width) {
    const auto t = static_cast<int32_t>(int64_t{i} * 256 / width);
    uint32_t mixed = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto c1 = static_cast<int32_t>(color >> shift & 0xFF);
        const auto c2 = static_cast<int32_t>(color2 >> shift & 0xFF);
        mixed |= (static_cast<uint32_t>(((c2 - c1) * t >> 8) + c1) & 0xFF) << shift;
    }
    return mixed;
}

// The colour of a fill, column by column.
class FillColor {
public:
    explicit FillColor(uint32_t color) : m_color(color) {}
    FillColor(uint32_t color, uint32_t color2, int32_t width) : m_color(color) {
        m_columns.SetSize(static_cast<uint32_t>(width));
        for (uint32_t i = 0; i < m_columns.GetSize(); i++)
            m_columns[i] = GradientColor(color, color2, static_cast<int32_t>(i), width);
    }

    uint32_t At(int32_t col) const {
        return m_columns.IsEmpty() ? m_color : m_columns[static_cast<uint32_t>(col)];
    }

    // Paints columns first .. end - 1 of a row that begins at `row`.
    void PaintInner(uint32_t* row, int32_t first, int32_t end) const {
        if (first >= end)
            return;
        const auto count = static_cast<size_t>(end - first);
        if (!m_columns.IsEmpty())
            BestLoops().blendColors(row + first, &m_columns[static_cast<uint32_t>(first)], count);
        else if (AlphaOf(m_color) == kOpaque)
            BestLoops().fill(row + first, count, m_color);
        else
            BestLoops().blendColor(row + first, count, m_color, AlphaOf(m_color));
    }

private:
    uint32_t m_color;
    VrArray<uint32_t> m_columns; // empty: one colour for all
};

void PaintCornerPixel(uint32_t& dst, uint32_t coverage, uint32_t color, CornerAlpha cornerAlpha) {
    if (cornerAlpha == CornerAlpha::Write || dst == kUnpainted) {
        dst = WithAlpha(color, coverage);
        return;
    }
    const uint32_t alpha = AlphaOf(color);
    const uint32_t a = alpha < kOpaque ? coverage * alpha >> 8 : coverage;
    if (a != 0)
        dst = BlendPixel(dst, color, a);
}

} // namespace

void CVrGuiFrameBuffer::FillRect(const CVrRect& rect, uint32_t color) {
    if (!Fits(rect))
        return;
    const int32_t bottom = std::min(rect.Bottom(), DrawableHeight());
    for (int32_t y = rect.y; y < bottom; y++)
        BestLoops().fill(Row(y) + rect.x, static_cast<size_t>(rect.width), color);
}

void CVrGuiFrameBuffer::FillRoundRect(const CVrRect& rect, int32_t radius, uint32_t cornerMask,
                                      uint32_t color, CornerAlpha cornerAlpha, uint32_t color2,
                                      Gradient gradient) {
    if (color == kUnpainted) {
        FillRect(rect, color);
        return;
    }
    if (!Fits(rect))
        return;
    radius = std::clamp(radius, 0, kMaxCornerRadius);
    const uint8_t* table = GetCornerTable(radius);
    const FillColor fill =
        gradient == Gradient::Horizontal ? FillColor(color, color2, rect.width) : FillColor(color);
    const int32_t rows = std::min(rect.height, DrawableHeight() - rect.y);
    for (int32_t row = 0; row < rows; row++) {
        uint32_t* dst = Row(rect.y + row) + rect.x;
        const RowCorners corners(table, radius, cornerMask, row, rect.Size());
        fill.PaintInner(dst, corners.leftEnd, corners.rightStart);
        ForCornerPixels(corners, rect.width, [&](int32_t col, uint32_t coverage) {
            PaintCornerPixel(dst[col], coverage, fill.At(col), cornerAlpha);
        });
    }
}

// --- Pictures -----------------------------------------------------------------------------------

namespace {

uint32_t OpaquePixel(const uint8_t* p) {
    return kAlphaMask | static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[1]) << 8 | p[0];
}

void StoreOpaque(uint32_t* dst, const uint8_t* src, size_t count, size_t bytesPerPixel) {
    for (size_t i = 0; i < count; i++)
        dst[i] = OpaquePixel(src + i * bytesPerPixel);
}

} // namespace

void CVrGuiFrameBuffer::DrawRoundImage(const CVrRect& rect, int32_t radius, const CVrGuiImage* image) {
    radius = std::clamp(radius, 0, kMaxCornerRadius);
    const auto needed = static_cast<uint32_t>(3 * radius);
    if (!image || image->IsEmpty() || image->width < needed || image->height < needed || !Fits(rect))
        return;
    const CVrSize size(static_cast<int32_t>(std::min(static_cast<uint32_t>(rect.width), image->width)),
                       static_cast<int32_t>(std::min(static_cast<uint32_t>(rect.height), image->height)));
    const uint8_t* table = GetCornerTable(radius);
    const size_t step = image->BytesPerPixel();
    const int32_t rows = std::min(size.height, DrawableHeight() - rect.y);
    for (int32_t row = 0; row < rows; row++) {
        uint32_t* dst = Row(rect.y + row) + rect.x;
        const uint8_t* src = image->pixels + static_cast<size_t>(row) * image->stride;
        const RowCorners corners(table, radius, CornerAll, row, size);
        const bool isMiddle = corners.leftEnd == 0;
        if (isMiddle && step == 4) {
            memcpy(dst, src, static_cast<size_t>(size.width) * 4);
            continue;
        }
        const auto first = static_cast<size_t>(corners.leftEnd);
        if (corners.leftEnd < corners.rightStart)
            StoreOpaque(dst + first, src + first * step, static_cast<size_t>(corners.rightStart) - first,
                        step);
        ForCornerPixels(corners, size.width, [&](int32_t col, uint32_t coverage) {
            dst[col] = BlendPixel(dst[col], OpaquePixel(src + static_cast<size_t>(col) * step), coverage);
        });
    }
}

// --- Composition --------------------------------------------------------------------------------

namespace {

// How many pixels a rounded row of a composed store loses at each end.
int32_t RoundedInset(int32_t row, int32_t height, int32_t radius) {
    const int32_t dy = row < radius ? radius - 1 - row : row - (height - radius);
    if (dy < 0)
        return 0;
    int32_t inset = 0;
    while (inset < radius && (radius - 1 - inset) * (radius - 1 - inset) + dy * dy >= radius * radius)
        inset++;
    return inset;
}

void ComposeRow(uint32_t* dst, const uint32_t* src, size_t count) {
    if (BestLoops().isSolidRow(src, count))
        memcpy(dst, src, count * 4);
    else
        BestLoops().blendRow(dst, src, count);
}

} // namespace

void CVrGuiFrameBuffer::BlendStore(const CVrRect& clipRect, const CVrGuiFrameBuffer& source,
                                   CVrPoint position, int32_t radius) {
    if (!source.pixels)
        return;
    const CVrRect shown = Visible(position, source.storeSize).Intersected(clipRect);
    radius = std::clamp(radius, 0, std::min(shown.width, shown.height) / 2);
    for (int32_t row = 0; row < shown.height; row++) {
        const int32_t inset = RoundedInset(row, shown.height, radius);
        const int32_t x = shown.x + inset;
        const int32_t y = shown.y + row;
        ComposeRow(Row(y) + x, source.Row(y - position.y) + (x - position.x),
                   static_cast<size_t>(shown.width - 2 * inset));
    }
}

// --- Coverage, symbols and vector frames --------------------------------------------------------

void CVrGuiFrameBuffer::DrawMono(const uint8_t* coverage, const CVrSize& size, CVrPoint point) {
    const CVrRect shown = Visible(point, size);
    if (shown.IsEmpty())
        return;
    const uint8_t* first = coverage + int64_t{shown.y - point.y} * size.width + (shown.x - point.x);
    BestLoops().blendMono({Row(shown.y) + shown.x, static_cast<size_t>(storeSize.width), first,
                           static_cast<size_t>(size.width), static_cast<size_t>(shown.width),
                           static_cast<size_t>(shown.height)},
                          drawColor);
}

void CVrGuiFrameBuffer::DrawSvg(const CVrGuiSvg2Img& icon, CVrPoint point, uint32_t color) {
    if (point.x < 0 || point.y < 0) {
        Log(LogError, "CVrGuiFrameBuffer::DrawSvg", "Outside pos %d/%d", point.x, point.y);
        return;
    }
    drawColor = color;
    if (!icon.HasBitmap())
        return;
    const CVrSize size = icon.Size();
    if (icon.mono) {
        DrawMono(icon.bitmap, size, point);
        return;
    }
    const CVrRect shown = Visible(point, size);
    const auto* source = reinterpret_cast<const uint32_t*>(icon.bitmap);
    for (int32_t y = shown.y; y < shown.Bottom(); y++)
        ComposeRow(Row(y) + shown.x, source + int64_t{y - point.y} * size.width,
                   static_cast<size_t>(shown.width));
}

void CVrGuiFrameBuffer::DrawVectorFrame(CVrVectorSurface& vector, CVrPoint point, uint32_t color) {
    vector.RenderFrame();
    const CVrSize size = vector.GetSurfaceSize();
    const uint32_t* source = vector.GetSurfacePixels();
    if (!source)
        return;
    const CVrRect shown = Visible(point, size);
    for (int32_t y = shown.y; y < shown.Bottom(); y++) {
        const uint32_t* src = source + int64_t{y - point.y} * size.width + (shown.x - point.x);
        BestLoops().blendTint(Row(y) + shown.x, src, static_cast<size_t>(shown.width), color,
                              InkAlpha(color));
    }
}

// --- Text ---------------------------------------------------------------------------------------

void CVrGuiFrameBuffer::DrawText(CVrPoint point, CVrGuiFont& font, const char* text, uint32_t color,
                                 uint32_t fadeColor, int32_t maxWidth) {
    font.EnsureLoaded();
    drawColor = color;
    const int32_t baseline = foundation::SaturatedAdd(point.y, font.ascent);
    const int64_t limit = int64_t{point.x} + maxWidth;
    int64_t pen = point.x;
    Utf8Reader reader(text);
    while (!reader.IsAtEnd()) {
        const uint32_t code = reader.Next();
        if (code == '\n' || code == '\r')
            return;
        const CFontCacheData* glyph = font.GetGlyphDsc(code, reader.Peek());
        if (!glyph) {
            pen += font.loadedSize / 2;
            continue;
        }
        if (glyph->HasBitmap()) {
            const bool isCut = pen >= storeSize.width || pen + glyph->left + glyph->bitmapSize.width >= limit;
            if (isCut) {
                FadeTail(pen, point, maxWidth, font.loadedSize, fadeColor);
                return;
            }
            DrawGlyph(*glyph, CVrPoint(foundation::SaturateToInt32(pen), baseline));
        }
        pen += glyph->advance;
    }
}

void CVrGuiFrameBuffer::DrawGlyph(const CFontCacheData& glyph, CVrPoint pen) {
    DrawMono(glyph.bitmap, glyph.bitmapSize, pen.Moved(glyph.left, -glyph.below - glyph.bitmapSize.height));
}

// The tail of a line that was cut at the pen dissolves: from a quarter of the line's width before the pen up
// to point.x + maxWidth.
void CVrGuiFrameBuffer::FadeTail(int64_t pen, CVrPoint point, int32_t maxWidth, int32_t height,
                                 uint32_t fadeColor) {
    const int32_t start = foundation::SaturateToInt32(pen - maxWidth / 4);
    const CVrRect box = CVrRect::FromEdges(start, point.y, foundation::SaturatedAdd(point.x, maxWidth),
                                           foundation::SaturatedAdd(point.y, height));
    if (!Fits(box))
        return;
    if ((fadeColor & kRgbMask) == kWhiteRgb) {
        FillRect(box, kUnpainted);
        return;
    }
    const uint32_t clear = WithAlpha(fadeColor, 0);
    const int32_t bottom = std::min(box.Bottom(), DrawableHeight());
    for (int32_t y = box.y; y < bottom; y++) {
        uint32_t* row = Row(y) + box.x;
        for (int32_t i = 0; i < box.width; i++) {
            const uint32_t color = GradientColor(clear, fadeColor, i, box.width);
            row[i] = row[i] == kUnpainted ? color : BlendPixel(row[i], color, AlphaOf(color));
        }
    }
}
