// A pixel store with the software drawing operations: fills, pictures, symbols, text, and the composition of
// one store over another. Second base of every element (gui/element.h); the element's own part is to find the
// store that it paints in (GetRenderTarget).
//
// A pixel is one word 0xAARRGGBB, rows run from top to bottom, each directly behind the one before. The word
// kUnpainted (0x00FFFFFF) marks a pixel on which nothing was painted; an opaque white is 0xFFFFFFFF. Blends
// divide by 255 with truncation and keep the alpha byte of the destination. What cannot be drawn is skipped
// without a word.
//
// Positions are pixels relative to the store. Drawing belongs to the GUI thread.
#pragma once

#include "foundation/geometry.h"

#include <cstdint>

class CVrGuiFont;
class CVrGuiSvg2Img;
class CVrMapIntToPtr;
class CVrVectorSurface;
struct CFontCacheData;
struct CVrGuiImage;

// A pixel on which nothing was painted; as a colour it erases.
constexpr uint32_t kUnpainted = 0x00FFFFFFU;

// Bits of a corner mask.
enum CornerMask : uint32_t {
    CornerNone = 0,
    CornerTopLeft = 1,
    CornerTopRight = 2,
    CornerBottomLeft = 4,
    CornerBottomRight = 8,
    CornerAll = 15,
};

// What a rounded fill does with its corner pixels: Blend mixes them into what is there, Write stores coverage
// as alpha, so that the corners of an element's own store stay transparent until the store is composed.
enum class CornerAlpha { Blend, Write };

// Whether a fill runs from `color` at the left to `color2` at the right.
enum class Gradient { None, Horizontal };

class CVrGuiFrameBuffer {
public:
    // Largest store in bytes; a larger one counts as out of memory.
    static constexpr uint64_t kMaxStoreBytes = uint64_t{1} << 30;
    // Largest radius of a corner table; what lies above is cut to it.
    static constexpr int32_t kMaxCornerRadius = 1024;

    CVrGuiFrameBuffer() = default;
    ~CVrGuiFrameBuffer();
    CVrGuiFrameBuffer(const CVrGuiFrameBuffer&) = delete;
    CVrGuiFrameBuffer& operator=(const CVrGuiFrameBuffer&) = delete;

    // Gives this a store of the rectangle's size, all zero, and clears the clip; a store of the same size is
    // kept as it is, its pixels and the clip included. An empty size frees the store. Without memory there is
    // no store afterwards, and one line in the log.
    void InitMem(const CVrRect& rect);

    // Frees the store.
    void FreeMem();

    bool HasStore() const { return pixels != nullptr; }

    // Row y of the store, 0 <= y < storeSize.height.
    uint32_t* Row(int32_t y) { return pixels + static_cast<int64_t>(y) * storeSize.width; }
    const uint32_t* Row(int32_t y) const { return pixels + static_cast<int64_t>(y) * storeSize.width; }

    // First row that drawing leaves alone: the clip height where one is set, at most the store's height.
    int32_t DrawableHeight() const;

    // True when the rectangle has a size and lies wholly within the store: fills draw nothing otherwise.
    bool Fits(const CVrRect& rect) const;

    // The coverage of a top left corner as (radius + 1) rows of (radius + 1) bytes; entry (row, col) belongs
    // to the pixel (radius - row, radius - col) away from the centre of the circle. Shared, computed once,
    // never null.
    static const uint8_t* GetCornerTable(int32_t radius);

    // The map that holds the corner tables from now on; its owner outlives the drawing and frees the tables
    // (FreeCornerTables). Null stands for a map of this module, which is the one at start.
    static void SetCornerTableMap(CVrMapIntToPtr* map);
    static void FreeCornerTables(CVrMapIntToPtr& map);

    // Stores `color` in each pixel, alpha included.
    void FillRect(const CVrRect& rect, uint32_t color);

    // Fills with rounded corners. A colour with alpha 255 is stored, another one blended; kUnpainted erases.
    // With a gradient the colours between are worked out for each column. Where corners overlap, the first in
    // the order of the mask's bits counts.
    void FillRoundRect(const CVrRect& rect, int32_t radius, uint32_t cornerMask, uint32_t color,
                       CornerAlpha cornerAlpha = CornerAlpha::Blend, uint32_t color2 = 0,
                       Gradient gradient = Gradient::None);

    // A picture with rounded corners at the rectangle's place; the size is cut to the picture's. Nothing if
    // the picture is null or smaller than three radii in one axis.
    void DrawRoundImage(const CVrRect& rect, int32_t radius, const CVrGuiImage* image);

    // One line of UTF-8 text; `point` is the top left corner of the line box. It ends at the first line feed,
    // carriage return or NUL. A line that would reach point.x + maxWidth is cut, and its tail fades into
    // `fadeColor`, or is erased if the colour is a white (RGB part 0xFFFFFF).
    void DrawText(CVrPoint point, CVrGuiFont& font, const char* text, uint32_t color, uint32_t fadeColor,
                  int32_t maxWidth);

    // Composes `source`, whose top left corner lies at `position` of this store, as far as it lies within
    // clipRect. The part that shows has round corners of `radius`; pixels outside them are left alone.
    void BlendStore(const CVrRect& clipRect, const CVrGuiFrameBuffer& source, CVrPoint position,
                    int32_t radius);

    // A symbol: its coverage in `color` if it is mono, its own colours otherwise.
    void DrawSvg(const CVrGuiSvg2Img& icon, CVrPoint point, uint32_t color);

    // The current picture of a vector animation, tinted; a colour below 0x01000000 counts as opaque.
    void DrawVectorFrame(CVrVectorSurface& vector, CVrPoint point, uint32_t color);

    // 8-bit coverage, size.width bytes a row, in drawColor.
    void DrawMono(const uint8_t* coverage, const CVrSize& size, CVrPoint point);

    CVrSize storeSize;          // 0 while there is no store
    CVrRect clip;               // only the height counts: not 0, and drawing stops at that row
    uint32_t* pixels = nullptr; // the store, from malloc's family, owned
    uint32_t drawColor = 0;     // of DrawMono

private:
    // The part of a rectangle at `origin` that drawing may touch, in coordinates of the store.
    CVrRect Visible(CVrPoint origin, const CVrSize& size) const;
    void DrawGlyph(const CFontCacheData& glyph, CVrPoint pen);
    void FadeTail(int64_t pen, CVrPoint point, int32_t maxWidth, int32_t height, uint32_t fadeColor);
};
