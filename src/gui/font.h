// One font of the style sheet: one face at one pixel size, its glyphs as cached bitmaps and the measures of
// text.
//
// All sizes of a face share one copy of its TrueType file. The first use of any font loads all fonts of the
// list; a glyph is rasterized at its first use and kept. Outlines and metrics come from stb_truetype. GUI
// thread only.
#pragma once

#include "foundation/byte_array.h"
#include "foundation/geometry.h"
#include "foundation/map.h"
#include "foundation/object.h"
#include "foundation/ptr_array.h"
#include "foundation/string.h"

#include <cstdint>
#include <stb/stb_truetype.h>

// One cached glyph. Vertical positions count from the baseline.
struct CFontCacheData {
    CFontCacheData() = default;
    ~CFontCacheData();
    CFontCacheData(const CFontCacheData&) = delete;
    CFontCacheData& operator=(const CFontCacheData&) = delete;

    bool HasBitmap() const { return bitmap != nullptr; }

    uint32_t code = 0;         // code point
    uint8_t* bitmap = nullptr; // coverage, bitmapSize.width bytes a row, owned; null: nothing to draw
    CVrSize bitmapSize;
    int16_t rawAdvance = 0; // font units
    CVrSize glyphSize;      // of the bitmap box, pixels
    int16_t left = 0;       // from the pen to the first column of the bitmap
    int16_t below = 0;      // from the baseline up to the lower edge of the bitmap; negative: it hangs below
    int16_t advance = 0;    // pixels to the next pen position, with the kerning of the last look-up
};

class CVrGuiFont : public CVrObject {
public:
    // From this size on advances are cut rather than rounded: large text runs tighter.
    static constexpr int32_t kTightSize = 28;
    static constexpr int32_t kMaxSize = 255;

    CVrGuiFont() = default;
    ~CVrGuiFont() override;
    CVrGuiFont(const CVrGuiFont&) = delete;
    CVrGuiFont& operator=(const CVrGuiFont&) = delete;

    // The fonts that one EnsureLoaded loads together, each a CVrGuiFont, not owned. Null at start.
    static void SetFontList(const CVrxPtrArray* fonts);

    // The arrays that hold the two font files from now on: they are filled at the first use and must stay.
    // Null stands for arrays of this module, which are used at start.
    static void SetFontData(CVrxByteArray* regular, CVrxByteArray* boldFace);

    // Makes this font ready for `pixelSize` (1..kMaxSize) from a whole TrueType file, which must stay as long
    // as the font is used. `index` is the font's number in log lines. False for null or broken data or
    // without memory.
    bool Init(const CVrxByteArray* data, int32_t index, int32_t pixelSize);

    // Loads all fonts of the list, and this one, whose size is not the wanted one; nothing when this font is
    // ready.
    void EnsureLoaded();

    // The glyph, with `advance` for the case that `next` follows (0: nothing does). The advance is that of
    // the last call: use it before the next one. The very first look-up of a glyph ignores `next`. Null if
    // the font has no such glyph or the glyph is empty; the blank alone has a descriptor without a bitmap.
    const CFontCacheData* GetGlyphDsc(uint32_t code, uint32_t next);

    // The coverage of a glyph in the work buffer, rasterized and cached if it is not yet. Null as above.
    // Valid until the next call.
    const uint8_t* GetGlyphBitmap(uint32_t code);

    // Width and height in pixels of the first line of a UTF-8 text. The measure ends at a character without a
    // glyph.
    void MeasureText(CVrSize& out, const char* text);
    void MeasureText(CVrSize& out, const CVrxStringU& text) { MeasureText(out, text.CStr()); }

    // Frees bitmaps and buffer; the next EnsureLoaded loads again.
    void Unload();

    // Set by the style sheet.
    CVrxStringU name;
    int32_t size = 0; // wanted pixel size, 0: not to be loaded
    uint8_t bold = 0; // 1: the bold face

    // Set by Init, in pixels except the scale.
    uint8_t loadedSize = 0; // 0: not loaded
    int32_t ascent = 0;     // from the top of the line box to the baseline
    int32_t descent = 0;    // 0 or negative
    int32_t lineGap = 0;
    int32_t belowBase = 0; // minus descent
    int32_t lineHeight = 0;
    CFontCacheData space;
    float scale = 0; // pixels per font unit

private:
    struct KerningPair {
        uint32_t code = 0;
        uint32_t next = 0;
        int32_t kerning = 0; // font units
    };
    static constexpr uint32_t kKerningPairs = 256;

    bool IsReady() const { return loadedSize != 0 && m_glyphBuffer; }
    void LoadWanted(int32_t index);
    void ReadMetrics();
    bool FillGlyphDsc(CFontCacheData& glyph, uint32_t code) const;
    int32_t AdvanceOf(int32_t rawAdvance, int32_t kerning) const;
    int32_t KerningOf(uint32_t code, uint32_t next);
    CFontCacheData* AddGlyph(uint32_t code);
    bool Rasterize(CFontCacheData& glyph);

    CVrTypedMapIntToPtr<CFontCacheData> m_cache{true}; // by code point
    uint8_t* m_glyphBuffer = nullptr;                  // work buffer, owned
    uint32_t m_glyphBufferSize = 0;                    // bytes
    stbtt_fontinfo m_info = {};
    KerningPair m_kerningPairs[kKerningPairs]; // [hash of both code points]; what was looked up last
};
