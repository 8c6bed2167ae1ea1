#include "gui/font.h"

#include "foundation/files.h"
#include "foundation/log.h"
#include "gui/utf8_reader.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr uint32_t kBlank = ' ';
constexpr uint32_t kLineFeed = '\n';
constexpr uint32_t kCarriageReturn = '\r';

// How far a curve may run from the lines that replace it, in pixels: the value that stb_truetype itself uses.
constexpr float kFlatness = 0.35F;

const CVrxPtrArray* s_fontList = nullptr;
CVrxByteArray s_ownFontData[2];
CVrxByteArray* s_fontData[2] = {&s_ownFontData[0], &s_ownFontData[1]}; // [bold]

uint32_t ReadU16(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) << 8 | p[1];
}

uint32_t ReadU32(const uint8_t* p) {
    return ReadU16(p) << 16 | ReadU16(p + 2);
}

// stb_truetype trusts the offsets of a font file: this looks whether all its tables lie within the data.
bool IsFontFileWhole(const CVrxByteArray& data) {
    constexpr uint32_t kHeaderSize = 12;
    constexpr uint32_t kRecordSize = 16; // tag, checksum, offset, length
    if (data.GetSize() < kHeaderSize)
        return false;
    const uint32_t tables = ReadU16(data.GetData() + 4);
    if (tables == 0 || data.GetSize() < kHeaderSize + tables * kRecordSize)
        return false;
    for (uint32_t i = 0; i < tables; i++) {
        const uint8_t* record = data.GetData() + kHeaderSize + i * kRecordSize;
        if (uint64_t{ReadU32(record + 8)} + ReadU32(record + 12) > data.GetSize())
            return false;
    }
    return true;
}

// A code point as text for the log; nothing for NUL, "?" for what is no character.
struct CharacterText {
    char bytes[5] = {};

    explicit CharacterText(uint32_t code) {
        const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
        if (isSurrogate || code > 0x10FFFF)
            bytes[0] = '?';
        else if (code < 0x80)
            bytes[0] = static_cast<char>(code);
        else
            Encode(code, code < 0x800 ? 2 : code < 0x10000 ? 3 : 4);
    }

private:
    void Encode(uint32_t code, int length) {
        for (int i = length - 1; i > 0; i--, code >>= 6)
            bytes[i] = static_cast<char>(0x80 | (code & 0x3F));
        bytes[0] = static_cast<char>((0xF00U >> length & 0xFF) | code);
    }
};

// Size of a scaled metric: half a pixel is added, then the fraction dropped, also below zero.
int32_t ScaledMetric(int raw, float scale) {
    return static_cast<int32_t>(static_cast<float>(raw) * scale + 0.5F);
}

} // namespace

CFontCacheData::~CFontCacheData() {
    free(bitmap);
}

CVrGuiFont::~CVrGuiFont() {
    Unload();
}

void CVrGuiFont::SetFontList(const CVrxPtrArray* fonts) {
    s_fontList = fonts;
}

void CVrGuiFont::SetFontData(CVrxByteArray* regular, CVrxByteArray* boldFace) {
    s_fontData[0] = regular ? regular : &s_ownFontData[0];
    s_fontData[1] = boldFace ? boldFace : &s_ownFontData[1];
}

void CVrGuiFont::Unload() {
    free(m_glyphBuffer);
    m_glyphBuffer = nullptr;
    m_glyphBufferSize = 0;
    m_cache.Clear();
    loadedSize = 0;
}

void CVrGuiFont::EnsureLoaded() {
    if (IsReady())
        return;
    const uint32_t count = s_fontList ? s_fontList->GetSize() : 0;
    for (uint32_t i = 0; i < count; i++) {
        if (auto* font = static_cast<CVrGuiFont*>((*s_fontList)[i]))
            font->LoadWanted(static_cast<int32_t>(i));
    }
    LoadWanted(static_cast<int32_t>(count)); // Does nothing for a font of the list.
}

void CVrGuiFont::LoadWanted(int32_t index) {
    if (loadedSize == size)
        return;
    Unload();
    if (size < 1 || size > kMaxSize)
        return;
    CVrxByteArray* data = s_fontData[bold ? 1 : 0];
    if (data->IsEmpty())
        LoadResourceData(bold ? ResourceFontBold : ResourceFontRegular, *data);
    // A font that failed counts as loaded, so that it fails once and not at every use.
    if (!Init(data->IsEmpty() ? nullptr : data, index, size))
        loadedSize = static_cast<uint8_t>(size);
}

bool CVrGuiFont::Init(const CVrxByteArray* data, int32_t index, int32_t pixelSize) {
    Unload();
    if (data && pixelSize >= 1 && pixelSize <= kMaxSize) {
        loadedSize = static_cast<uint8_t>(pixelSize);
        Log(LogEvent, "CVrGuiFont::Init", "Load font %d", index);
    }
    if (loadedSize == 0 || !IsFontFileWhole(*data) || !stbtt_InitFont(&m_info, data->GetData(), 0)) {
        Log(LogError, "CVrGuiFont::Init", "Load font failed %d", index);
        return false;
    }
    m_glyphBufferSize = static_cast<uint32_t>(pixelSize * pixelSize * 4);
    Log(LogTrace, "CVrGuiFont::Init", "Allocating font buffer size %u bytes", m_glyphBufferSize);
    m_glyphBuffer = static_cast<uint8_t*>(calloc(m_glyphBufferSize, 1));
    if (!m_glyphBuffer) {
        Log(LogError, "CVrGuiFont::Init", "Failed to allocate font buffer %d",
            static_cast<int>(m_glyphBufferSize));
        return false;
    }
    ReadMetrics();
    return true;
}

void CVrGuiFont::ReadMetrics() {
    for (KerningPair& pair : m_kerningPairs)
        pair = {};
    int rawAscent = 0;
    int rawDescent = 0;
    int rawLineGap = 0;
    stbtt_GetFontVMetrics(&m_info, &rawAscent, &rawDescent, &rawLineGap);
    const int rawHeight = rawAscent - rawDescent;
    scale = rawHeight > 0 ? static_cast<float>(loadedSize) / static_cast<float>(rawHeight) : 0.0F;
    ascent = ScaledMetric(rawAscent, scale);
    descent = ScaledMetric(rawDescent, scale);
    lineGap = ScaledMetric(rawLineGap, scale);
    belowBase = -descent;
    lineHeight = ascent - descent;
    space.advance = 0;
    FillGlyphDsc(space, kBlank);
    Log(LogEvent, "CVrGuiFont::Init", "Font size %u A:%d D:%d G:%d B:%d H:%d Scale %.2f", loadedSize, ascent,
        descent, lineGap, belowBase, lineHeight, static_cast<double>(scale));
}

bool CVrGuiFont::FillGlyphDsc(CFontCacheData& glyph, uint32_t code) const {
    const int index = stbtt_FindGlyphIndex(&m_info, static_cast<int>(code));
    if (index == 0) {
        Log(LogTrace, "CVrGuiFont::GetGlyphDsc", "UC not found %08x", code);
        return false;
    }
    int rawAdvance = 0;
    int leftSideBearing = 0;
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    stbtt_GetGlyphHMetrics(&m_info, index, &rawAdvance, &leftSideBearing);
    stbtt_GetGlyphBitmapBox(&m_info, index, scale, scale, &x0, &y0, &x1, &y1);
    glyph.code = code;
    glyph.rawAdvance = static_cast<int16_t>(rawAdvance);
    glyph.advance = static_cast<int16_t>(AdvanceOf(rawAdvance, 0));
    Log(LogTrace, "CVrGuiFont::FillGlyphDsc", "CA %08X %s %s %.2f %.2f %.2f", code, CharacterText(code).bytes,
        CharacterText(0).bytes, 0.0, double(scale) * leftSideBearing, double(scale) * rawAdvance);
    glyph.glyphSize = CVrSize(x1 - x0, y1 - y0);
    glyph.left = static_cast<int16_t>(x0);
    glyph.below = static_cast<int16_t>(-y1);
    Log(LogTrace, "CVrGuiFont::FillGlyphDsc", "UC %08X %d %d %d %d   %d", code, glyph.left, glyph.below,
        glyph.glyphSize.width, glyph.glyphSize.height, glyph.rawAdvance);
    return true;
}

int32_t CVrGuiFont::AdvanceOf(int32_t rawAdvance, int32_t kerning) const {
    const int32_t units = rawAdvance + kerning;
    const float x = static_cast<float>(units) * scale;
    if (loadedSize < kTightSize)
        return static_cast<int32_t>(std::lround(x));
    return static_cast<int32_t>(units < 0 ? x - 0.7F : x + 0.3F);
}

int32_t CVrGuiFont::KerningOf(uint32_t code, uint32_t next) {
    if (next == 0 || next == kBlank)
        return 0;
    // Searching the font's pair tables takes longer than drawing the glyph; labels repeat the same few pairs.
    KerningPair& pair = m_kerningPairs[(code * 31 + next) % kKerningPairs];
    if (pair.code != code || pair.next != next) {
        const int kerning =
            stbtt_GetCodepointKernAdvance(&m_info, static_cast<int>(code), static_cast<int>(next));
        pair = {code, next, kerning};
    }
    return pair.kerning;
}

const CFontCacheData* CVrGuiFont::GetGlyphDsc(uint32_t code, uint32_t next) {
    if (code == kBlank)
        return &space;
    CFontCacheData* glyph = m_cache.Lookup(static_cast<int32_t>(code));
    if (!glyph) {
        glyph = AddGlyph(code);
        next = 0;
    }
    if (!glyph)
        return nullptr;
    glyph->advance = static_cast<int16_t>(AdvanceOf(glyph->rawAdvance, KerningOf(code, next)));
    return glyph;
}

const uint8_t* CVrGuiFont::GetGlyphBitmap(uint32_t code) {
    EnsureLoaded();
    if (!m_glyphBuffer)
        return nullptr;
    const CFontCacheData* glyph = m_cache.Lookup(static_cast<int32_t>(code));
    if (!glyph)
        glyph = AddGlyph(code);
    if (!glyph || !glyph->HasBitmap())
        return nullptr;
    memcpy(m_glyphBuffer, glyph->bitmap,
           static_cast<size_t>(glyph->bitmapSize.width) * glyph->bitmapSize.height);
    return m_glyphBuffer;
}

// Null when the font has no such glyph, when it is empty, or without memory. A glyph that is too large for
// the work buffer is kept without a bitmap: it takes its place in the line, and is reported once.
CFontCacheData* CVrGuiFont::AddGlyph(uint32_t code) {
    EnsureLoaded();
    if (!m_glyphBuffer || scale == 0.0F)
        return nullptr;
    auto* glyph = new (std::nothrow) CFontCacheData;
    if (glyph && FillGlyphDsc(*glyph, code) && !glyph->glyphSize.IsEmpty() && Rasterize(*glyph) &&
        m_cache.SetAt(static_cast<int32_t>(code), glyph))
        return glyph;
    delete glyph;
    return nullptr;
}

bool CVrGuiFont::Rasterize(CFontCacheData& glyph) {
    const int width = glyph.glyphSize.width;
    const int height = glyph.glyphSize.height;
    const uint64_t bytes = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
    if (bytes > m_glyphBufferSize) {
        Log(LogError, "CVrGuiFont::GetGlyphBitmap", "Buffer too small %08X %s %d*%d > %d", glyph.code,
            CharacterText(glyph.code).bytes, width, height, static_cast<int>(m_glyphBufferSize));
        return true;
    }
    glyph.bitmap = static_cast<uint8_t*>(malloc(bytes));
    if (!glyph.bitmap)
        return false;

    memset(m_glyphBuffer, 0, m_glyphBufferSize);
    const int index = stbtt_FindGlyphIndex(&m_info, static_cast<int>(glyph.code));
    stbtt_vertex* outline = nullptr;
    const int corners = stbtt_GetGlyphShape(&m_info, index, &outline);
    stbtt__bitmap target = {width, height, width, m_glyphBuffer};
    const int top = -glyph.below - height;
    stbtt_Rasterize(&target, kFlatness, outline, corners, scale, scale, 0, 0, glyph.left, top, 1, nullptr);
    stbtt_FreeShape(&m_info, outline);

    memcpy(glyph.bitmap, m_glyphBuffer, bytes);
    glyph.bitmapSize = glyph.glyphSize;
    return true;
}

void CVrGuiFont::MeasureText(CVrSize& out, const char* text) {
    EnsureLoaded();
    int64_t width = 0;
    Utf8Reader reader(text);
    while (!reader.IsAtEnd()) {
        const uint32_t code = reader.Next();
        if (code == 0 || code == kLineFeed || code == kCarriageReturn)
            break;
        const CFontCacheData* glyph = GetGlyphDsc(code, reader.Peek());
        if (!glyph)
            break;
        width += glyph->advance;
    }
    out = CVrSize(foundation::SaturateToInt32(width), loadedSize);
}
