// The inner loops of drawing: rows of 32-bit pixels, 0xAARRGGBB.
//
// Every loop exists in up to three forms with bit-equal results: a portable one, one for SSE2 and one for
// AVX2; the processor decides once which table of loops the process uses. The rule that all of them share is
//     result = (source * a + destination * (255 - a)) / 255      per channel, truncated,
// and a blend never changes the alpha byte of its destination. Rectangles, clipping and the meaning of the
// loops' arguments are the frame buffer's business (gui/frame_buffer.h).
#pragma once

#include <cstddef>
#include <cstdint>

namespace pixelops {

// A source pixel whose alpha is up to this value leaves its destination alone.
constexpr uint32_t kInvisibleAlpha = 3;
// A source pixel of a store whose alpha reaches this value is copied whole.
constexpr uint32_t kSolidAlpha = 252;
// A coverage value of a mono bitmap that reaches this value paints the colour whole.
constexpr uint32_t kSolidCoverage = 240;
// Thin strokes of anti-aliased bitmaps gain this many percent of coverage.
constexpr uint32_t kCoverageBoostPercent = 115;

// Coverage and the pixels that it is painted on. Glyphs are small: a call for each row would cost as much as
// the row.
struct CoverageBlock {
    uint32_t* dst;           // top left pixel
    size_t dstStride;        // pixels from one row to the next
    const uint8_t* coverage; // top left byte
    size_t coverageStride;   // bytes from one row to the next
    size_t width;
    size_t height;
};

// One table of loops. Counts are pixels, source and destination do not overlap, nothing needs alignment.
struct Loops {
    const char* name;

    // Stores `color` in each pixel.
    void (*fill)(uint32_t* dst, size_t count, uint32_t color);

    // Blends `color` over each pixel with the one alpha `a`, 0..255.
    void (*blendColor)(uint32_t* dst, size_t count, uint32_t color, uint32_t a);

    // Blends each pixel of `src` by its own alpha; alpha 255 stores it whole. For rows of a colour gradient.
    void (*blendColors)(uint32_t* dst, const uint32_t* src, size_t count);

    // Composes a row of another store: alpha from kSolidAlpha stores the pixel whole, alpha up to
    // kInvisibleAlpha skips it, what lies between is blended.
    void (*blendRow)(uint32_t* dst, const uint32_t* src, size_t count);

    // True when blendRow would store all pixels of `src` whole.
    bool (*isSolidRow)(const uint32_t* src, size_t count);

    // Paints a block of 8-bit coverage in `color`. Coverage is boosted, scaled by the alpha of the colour
    // where that lies in 1..254, and then stored, blended or skipped by kSolidCoverage and kInvisibleAlpha.
    void (*blendMono)(const CoverageBlock& block, uint32_t color);

    // Blends `color` over each pixel with alpha `a` (0..255) times the alpha of `src` divided by 255; source
    // alpha up to kInvisibleAlpha skips the pixel.
    void (*blendTint)(uint32_t* dst, const uint32_t* src, size_t count, uint32_t color, uint32_t a);
};

enum class Level { Portable, Sse2, Avx2 };

// The loops of one level, or null when this build or this processor lacks it.
const Loops* LoopsFor(Level level);

// The fastest loops that this processor runs.
const Loops& BestLoops();

// One pixel blended with alpha a, 0..255: (color * a + dst * (255 - a)) / 255 in each channel, for the few
// pixels that are not part of a row. Red and blue share a word, each in 16 bits; x / 255 truncated equals (x
// + 1 + x / 256) / 256 for all x below 65,535, and the sums stay below 65,536, so that neither carries into
// the other.
inline uint32_t BlendPixel(uint32_t dst, uint32_t color, uint32_t a) {
    constexpr uint32_t kRedBlue = 0x00FF00FFU;
    const uint32_t rest = 255 - a;
    const uint32_t redBlue = (color & kRedBlue) * a + (dst & kRedBlue) * rest;
    const uint32_t green = (color >> 8 & 0xFF) * a + (dst >> 8 & 0xFF) * rest;
    const uint32_t mixedRedBlue = (redBlue + 0x00010001U + (redBlue >> 8 & kRedBlue)) >> 8 & kRedBlue;
    const uint32_t mixedGreen = (green + 1 + (green >> 8)) >> 8;
    return (dst & 0xFF000000U) | mixedRedBlue | mixedGreen << 8;
}

} // namespace pixelops
