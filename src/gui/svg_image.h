// A symbol: an SVG text, parsed and rasterized once at the size that its element wants.
//
// Nearly all symbols are mono: the bitmap is coverage alone, and the colour is chosen when it is drawn
// (CVrGuiFrameBuffer::DrawSvg), so that a change of state needs no new bitmap. nanosvg parses and rasterizes;
// one rasterizer and one scratch block serve the whole process. GUI thread only.
#pragma once

#include "foundation/geometry.h"

#include <cstdint>

struct NSVGimage;

class CVrGuiSvg2Img {
public:
    // Longest side of a bitmap in pixels; a larger one counts as out of memory.
    static constexpr int32_t kMaxSide = 2048;
    // Pictures of this size or smaller are rasterized in the shared scratch block.
    static constexpr uint32_t kScratchSide = 360;

    CVrGuiSvg2Img() = default;
    virtual ~CVrGuiSvg2Img();
    CVrGuiSvg2Img(const CVrGuiSvg2Img&) = delete;
    CVrGuiSvg2Img& operator=(const CVrGuiSvg2Img&) = delete;

    // Draws the parsed picture at the rectangle's size and lets the picture go; the bitmap fits the width, so
    // that a picture that is not square is cut or leaves a blank strip. At once true when such a bitmap
    // exists already. False without a picture or memory.
    virtual bool Render(const CVrRect& rect, bool wantMono);

    // Parse, then Render.
    virtual bool LoadAndRender(const char* data, uint32_t length, const CVrRect& rect, bool wantMono);

    // Reads an SVG text; length 0: up to its NUL. False, and parseFailed set, for an empty text and one that
    // is no SVG or whose numbers no picture can have.
    bool Parse(const char* data, uint32_t length);

    // The selected look of a line symbol, mono: what its closed lines surround is solid, and the lines are
    // holes in it. A symbol without closed lines looks as Render draws it.
    bool RenderFilled(const CVrRect& rect);

    void FreeBitmap();

    bool HasBitmap() const { return bitmap && bitmapSize[0] != 0 && bitmapSize[1] != 0; }
    CVrSize Size() const {
        return CVrSize(static_cast<int32_t>(bitmapSize[0]), static_cast<int32_t>(bitmapSize[1]));
    }

    uint8_t parseFailed = 0;
    uint8_t mono = 1;                // 1: a byte a pixel, coverage; 0: a pixel of the store, 4 bytes
    uint32_t bitmapSize[2] = {0, 0}; // width, height; 0 while there is no bitmap
    uint32_t bitmapBytes = 0;
    uint8_t* bitmap = nullptr; // owned
    float svgWidth = 0;        // of the parsed picture, in its own units
    float svgHeight = 0;
    NSVGimage* image = nullptr; // between Parse and Render, owned

private:
    void FreeImage();
    bool RenderMono(uint32_t width, uint32_t height);
    bool RenderColor(uint32_t width, uint32_t height);
    void Rasterize(uint8_t* rgba, uint32_t width, uint32_t height) const;
    void TakeBitmap(uint8_t* newBitmap, uint32_t width, uint32_t height, bool isMono);
};
