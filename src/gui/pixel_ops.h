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

    // Paints a row of 8-bit coverage in `color`. Coverage is boosted, scaled by the alpha of the colour where
    // that lies in 1..254, and then stored, blended or skipped by kSolidCoverage and kInvisibleAlpha.
    void (*blendMono)(uint32_t* dst, const uint8_t* coverage, size_t count, uint32_t color);

    // Blends `color` over each pixel with alpha `a` (0..255) times the alpha of `src` divided by 255; source
    // alpha up to kInvisibleAlpha skips the pixel.
    void (*blendTint)(uint32_t* dst, const uint32_t* src, size_t count, uint32_t color, uint32_t a);
};

enum class Level { Portable, Sse2, Avx2 };

// The loops of one level, or null when this build or this processor lacks it.
const Loops* LoopsFor(Level level);

// The fastest loops that this processor runs.
const Loops& BestLoops();

// One pixel blended with alpha a, 0..255: the plain formula, for the few pixels that are not part of a row.
inline uint32_t BlendPixel(uint32_t dst, uint32_t color, uint32_t a) {
    auto channel = [=](uint32_t shift) {
        return (((color >> shift & 0xFF) * a + (dst >> shift & 0xFF) * (255 - a)) / 255) << shift;
    };
    return (dst & 0xFF000000U) | channel(16) | channel(8) | channel(0);
}

} // namespace pixelops
