// The inverse transform on 8 lanes of float and the colour conversion on 16-bit lanes. Same results as the
// plain routines, bit for bit: tests/media compares them on random data.
#include "media/jpeg/kernels_avx2.h"

#ifdef WALLSLATE_JPEG_AVX2

#include <cstring>
#include <immintrin.h>

#define WALLSLATE_LANES_TARGET __attribute__((target("avx2")))
#include "media/jpeg/inverse_pass.h"

#define AVX2 WALLSLATE_LANES_TARGET

namespace jpeg {

namespace {

struct FloatLanes {
    using Vector = __m256;
};

// --- Inverse transform ---

AVX2 inline __m256 LoadScaled(const int16_t* coefficients, const uint32_t* table, __m256 step) {
    const __m128i narrow = _mm_loadu_si128(reinterpret_cast<const __m128i*>(coefficients));
    const __m256i factor = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(table));
    const __m256 value = _mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(narrow));
    return _mm256_mul_ps(value, _mm256_mul_ps(_mm256_cvtepi32_ps(factor), step));
}

// Rows become columns, 8 x 8.
AVX2 inline void Transpose(__m256* x) {
    __m256 pair[8];
    __m256 quad[8];
    for (int i = 0; i < 8; i += 2) {
        pair[i] = _mm256_unpacklo_ps(x[i], x[i + 1]);
        pair[i + 1] = _mm256_unpackhi_ps(x[i], x[i + 1]);
    }
    for (int i = 0; i < 8; i += 4) {
        quad[i] = _mm256_shuffle_ps(pair[i], pair[i + 2], 0x44);
        quad[i + 1] = _mm256_shuffle_ps(pair[i], pair[i + 2], 0xEE);
        quad[i + 2] = _mm256_shuffle_ps(pair[i + 1], pair[i + 3], 0x44);
        quad[i + 3] = _mm256_shuffle_ps(pair[i + 1], pair[i + 3], 0xEE);
    }
    for (int i = 0; i < 4; ++i) {
        x[i] = _mm256_permute2f128_ps(quad[i], quad[i + 4], 0x20);
        x[i + 4] = _mm256_permute2f128_ps(quad[i], quad[i + 4], 0x31);
    }
}

// Four rows to 32 bytes: packing works within 128-bit halves, so the halves are put in order at the end.
AVX2 inline void StoreFourRows(const __m256* rows, uint8_t* samples) {
    const __m256i low = _mm256_packs_epi32(_mm256_cvttps_epi32(rows[0]), _mm256_cvttps_epi32(rows[1]));
    const __m256i high = _mm256_packs_epi32(_mm256_cvttps_epi32(rows[2]), _mm256_cvttps_epi32(rows[3]));
    const __m256i bytes = _mm256_packus_epi16(low, high);
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(samples), _mm256_permutevar8x32_epi32(bytes, order));
}

// --- Colour ---

// What 8 pairs of chroma samples add to luma, 16 bits each.
struct ChromaShift {
    __m128i blue, green, red;
};

// x / 1024, truncated toward 0, of 8 values; to 16 bits.
AVX2 inline __m128i DivideBy1024(__m256i x) {
    const __m256i roundUp = _mm256_srli_epi32(_mm256_srai_epi32(x, 31), 22); // 1023 where negative
    const __m256i quotient = _mm256_srai_epi32(_mm256_add_epi32(x, roundUp), 10);
    return _mm_packs_epi32(_mm256_castsi256_si128(quotient), _mm256_extracti128_si256(quotient, 1));
}

AVX2 inline __m128i LoadCentred(const uint8_t* chroma) {
    const __m128i wide = _mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(chroma)));
    return _mm_sub_epi16(wide, _mm_set1_epi16(128));
}

AVX2 inline ChromaShift ShiftOf(const uint8_t* cb, const uint8_t* cr) {
    const __m128i blue = LoadCentred(cb);
    const __m128i red = LoadCentred(cr);
    // Each 32-bit lane holds a pair (Cb, Cr), which multiply-add turns into one weighted sum.
    const __m256i pairs = _mm256_set_m128i(_mm_unpackhi_epi16(blue, red), _mm_unpacklo_epi16(blue, red));
    const __m256i weightBlue = _mm256_set1_epi32(1814);
    const __m256i weightGreen = _mm256_set1_epi32(731 << 16 | 352);
    const __m256i weightRed = _mm256_set1_epi32(1435 << 16);
    const __m128i green = DivideBy1024(_mm256_madd_epi16(pairs, weightGreen));
    return {DivideBy1024(_mm256_madd_epi16(pairs, weightBlue)), _mm_sub_epi16(_mm_setzero_si128(), green),
            DivideBy1024(_mm256_madd_epi16(pairs, weightRed))};
}

AVX2 inline __m128i LoadLuma(const uint8_t* luma) {
    return _mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(luma)));
}

// Byte sources of the three 16-byte pieces of 16 pixels: piece p takes its bytes of channel c from pixel
// order.
AVX2 inline __m128i Pick(__m128i channel, int first, int phase) {
    // Byte i of the piece belongs to this channel when i % 3 == phase; it is then pixel first + i / 3.
    alignas(16) int8_t order[16];
    for (int i = 0; i < 16; ++i)
        order[i] = static_cast<int8_t>(i % 3 == phase ? first + (i - phase) / 3 : -1);
    return _mm_shuffle_epi8(channel, _mm_load_si128(reinterpret_cast<const __m128i*>(order)));
}

AVX2 inline __m128i Weave(__m128i a, int firstA, int phaseA, __m128i b, int firstB, int phaseB, __m128i c,
                          int firstC, int phaseC) {
    return _mm_or_si128(_mm_or_si128(Pick(a, firstA, phaseA), Pick(b, firstB, phaseB)),
                        Pick(c, firstC, phaseC));
}

// 48 bytes blue, green, red from 16 of each. A piece of 16 bytes begins with blue, red or green by turns.
AVX2 inline void StorePixels16(__m128i blue, __m128i green, __m128i red, uint8_t* target) {
    auto* out = reinterpret_cast<__m128i*>(target);
    _mm_storeu_si128(out, Weave(blue, 0, 0, green, 0, 1, red, 0, 2));
    _mm_storeu_si128(out + 1, Weave(green, 5, 0, red, 5, 1, blue, 6, 2));
    _mm_storeu_si128(out + 2, Weave(red, 10, 0, blue, 11, 1, green, 11, 2));
}

AVX2 inline void StorePixels8(__m128i blue, __m128i green, __m128i red, uint8_t* target) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(target), Weave(blue, 0, 0, green, 0, 1, red, 0, 2));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(target + 16), Weave(green, 5, 0, red, 5, 1, blue, 6, 2));
}

// Each chroma value for two pixels.
AVX2 inline __m128i Channel16(__m128i left, __m128i right, __m128i shift) {
    return _mm_packus_epi16(_mm_add_epi16(left, _mm_unpacklo_epi16(shift, shift)),
                            _mm_add_epi16(right, _mm_unpackhi_epi16(shift, shift)));
}

AVX2 inline void ConvertRow16(const uint8_t* luma, const ChromaShift& shift, uint8_t* target) {
    const __m128i left = LoadLuma(luma);
    const __m128i right = LoadLuma(luma + kBlockSize);
    StorePixels16(Channel16(left, right, shift.blue), Channel16(left, right, shift.green),
                  Channel16(left, right, shift.red), target);
}

AVX2 inline void ConvertRow8(const uint8_t* luma, const ChromaShift& shift, uint8_t* target) {
    const __m128i wide = LoadLuma(luma);
    const auto channel = [wide](__m128i add) AVX2 {
        const __m128i sum = _mm_add_epi16(wide, add);
        return _mm_packus_epi16(sum, sum);
    };
    StorePixels8(channel(shift.blue), channel(shift.green), channel(shift.red), target);
}

} // namespace

AVX2 void InverseDctAvx2(const int16_t* coefficients, const uint32_t* table, uint8_t* samples) {
    const __m256 step = _mm256_set1_ps(kTableStep);
    __m256 x[8];
    for (uint32_t u = 0; u < kBlockEdge; ++u)
        x[u] = LoadScaled(coefficients + u * kBlockEdge, table + u * kBlockEdge, step);
    x[0] = _mm256_add_ps(x[0], _mm256_setr_ps(kLevelShift, 0, 0, 0, 0, 0, 0, 0));
    InversePass<FloatLanes>(x);
    Transpose(x);
    InversePass<FloatLanes>(x);
    StoreFourRows(x, samples);
    StoreFourRows(x + 4, samples + kBlockSize / 2);
}

AVX2 void ConvertMcuAvx2(const uint8_t* blocks, McuShape shape, uint8_t* target, size_t pitch) {
    const uint8_t* cb = blocks + shape.LumaBlocks() * kBlockSize;
    for (uint32_t y = 0; y < shape.Height(); y += shape.down, cb += kBlockEdge) {
        const ChromaShift shift = ShiftOf(cb, cb + kBlockSize);
        for (uint32_t i = 0; i < shape.down; ++i, target += pitch) {
            const uint32_t row = y + i;
            const uint8_t* luma =
                blocks + (row / kBlockEdge) * shape.across * kBlockSize + (row % kBlockEdge) * kBlockEdge;
            if (shape.across == 2)
                ConvertRow16(luma, shift, target);
            else
                ConvertRow8(luma, shift, target);
        }
    }
}

} // namespace jpeg

#endif
