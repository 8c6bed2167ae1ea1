// The colour conversion for AVX2. All that stands between the pragmas runs only where the processor can do it;
// nothing that other files share may be defined there.
#include "media/colour_convert.h"

#if defined(__x86_64__)

#include <immintrin.h>

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

#include "media/colour_convert_kernels.h"

namespace {

struct Avx2 {
    using Reg = __m256i;
    static constexpr uint32_t kWords = 16;

    static Reg Widen(const uint8_t* p) {
        return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    }
    // Half as many samples, each twice.
    static Reg WidenTwice(const uint8_t* p) {
        const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        return _mm256_cvtepu8_epi16(_mm_unpacklo_epi8(bytes, bytes));
    }
    // The pixels of one lane of `a`, then those of `b`; those of the next lane `distance` pixels further on.
    static void StoreLanes(uint32_t* out, size_t distance, Reg a, Reg b) {
        _mm256_storeu_si256(reinterpret_cast<Reg*>(out), _mm256_permute2x128_si256(a, b, 0x20));
        _mm256_storeu_si256(reinterpret_cast<Reg*>(out + distance), _mm256_permute2x128_si256(a, b, 0x31));
    }

    static Reg Zero() { return _mm256_setzero_si256(); }
    static Reg Set16(int16_t value) { return _mm256_set1_epi16(value); }
    static Reg Add16(Reg a, Reg b) { return _mm256_add_epi16(a, b); }
    static Reg Sub16(Reg a, Reg b) { return _mm256_sub_epi16(a, b); }
    static Reg MulHigh16(Reg a, Reg b) { return _mm256_mulhi_epi16(a, b); }
    static Reg Sign16(Reg a) { return _mm256_srai_epi16(a, 15); }
    // These stay within the two lanes of a register.
    static Reg Narrow(Reg a, Reg b) { return _mm256_packus_epi16(a, b); } // clamps to 0..255
    static Reg UnpackLow8(Reg a, Reg b) { return _mm256_unpacklo_epi8(a, b); }
    static Reg UnpackHigh8(Reg a, Reg b) { return _mm256_unpackhi_epi8(a, b); }
    static Reg UnpackLow16(Reg a, Reg b) { return _mm256_unpacklo_epi16(a, b); }
    static Reg UnpackHigh16(Reg a, Reg b) { return _mm256_unpackhi_epi16(a, b); }
    static Reg UnpackLow32(Reg a, Reg b) { return _mm256_unpacklo_epi32(a, b); }
    static Reg UnpackHigh32(Reg a, Reg b) { return _mm256_unpackhi_epi32(a, b); }
};

constexpr colour::Routines kAvx2 = Kernels<Avx2>::Table("avx2");

} // namespace

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

const colour::Routines* colour::Avx2Routines() {
    return __builtin_cpu_supports("avx2") ? &kAvx2 : nullptr;
}

#else

const colour::Routines* colour::Avx2Routines() {
    return nullptr;
}

#endif
