// The drawing loops as one would write them first: one pixel after the other, the rules word by word. The
// tests compare the fast loops with these on random data, and the benchmarks measure against them.
#pragma once

#include <cstddef>
#include <cstdint>

// Keeps the compiler from turning a plain loop into a vector loop.
#if defined(__clang__)
#define PLAIN_LOOP
#define PLAIN_FOR _Pragma("clang loop vectorize(disable) interleave(disable) unroll(disable)") for
#else
#define PLAIN_LOOP                                                                                           \
    __attribute__((noinline, optimize("no-tree-vectorize", "no-tree-loop-distribute-patterns")))
#define PLAIN_FOR for
#endif

namespace plain {

inline uint32_t Channel(uint32_t pixel, int shift) {
    return pixel >> shift & 0xFF;
}

inline uint32_t Blend(uint32_t dst, uint32_t src, uint32_t a) {
    uint32_t result = dst & 0xFF000000;
    for (int shift = 0; shift < 24; shift += 8)
        result |= (Channel(src, shift) * a + Channel(dst, shift) * (255 - a)) / 255 << shift;
    return result;
}

PLAIN_LOOP inline void Fill(uint32_t* dst, size_t count, uint32_t color) {
    PLAIN_FOR(size_t i = 0; i < count; i++) dst[i] = color;
}

PLAIN_LOOP inline void BlendColor(uint32_t* dst, size_t count, uint32_t color, uint32_t a) {
    PLAIN_FOR(size_t i = 0; i < count; i++) dst[i] = Blend(dst[i], color, a);
}

PLAIN_LOOP inline void BlendColors(uint32_t* dst, const uint32_t* src, size_t count) {
    PLAIN_FOR(size_t i = 0; i < count; i++) {
        if (src[i] >> 24 == 255)
            dst[i] = src[i];
        else
            dst[i] = Blend(dst[i], src[i], src[i] >> 24);
    }
}

PLAIN_LOOP inline void BlendRow(uint32_t* dst, const uint32_t* src, size_t count) {
    PLAIN_FOR(size_t i = 0; i < count; i++) {
        const uint32_t a = src[i] >> 24;
        if (a >= 252)
            dst[i] = src[i];
        else if (a >= 4)
            dst[i] = Blend(dst[i], src[i], a);
    }
}

PLAIN_LOOP inline void BlendMono(uint32_t* dst, const uint8_t* coverage, size_t count, uint32_t color) {
    const uint32_t alpha = color >> 24;
    PLAIN_FOR(size_t i = 0; i < count; i++) {
        uint32_t c = coverage[i];
        if (c >= 4)
            c = c * 115 / 100 < 255 ? c * 115 / 100 : 255;
        if (alpha >= 1 && alpha <= 254)
            c = (alpha * c + 127) / 255;
        if (c >= 240)
            dst[i] = color;
        else if (c >= 4)
            dst[i] = Blend(dst[i], color, c);
    }
}

PLAIN_LOOP inline void BlendTint(uint32_t* dst, const uint32_t* src, size_t count, uint32_t color,
                                 uint32_t a) {
    PLAIN_FOR(size_t i = 0; i < count; i++) {
        if (src[i] >> 24 > 3)
            dst[i] = Blend(dst[i], color, a * (src[i] >> 24) / 255);
    }
}

} // namespace plain
