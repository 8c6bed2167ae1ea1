// The colour conversion for SSE2, which every x86-64 processor has.
#include "media/colour_convert.h"

#if defined(__x86_64__)

#include <cstring>
#include <emmintrin.h>

#include "media/colour_convert_kernels.h"

namespace {

struct Sse2 {
    using Reg = __m128i;
    static constexpr uint32_t kWords = 8;

    static Reg Widen(const uint8_t* p) {
        return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const Reg*>(p)), Zero());
    }
    // Half as many samples, each twice.
    static Reg WidenTwice(const uint8_t* p) {
        int word = 0;
        memcpy(&word, p, sizeof word);
        const Reg bytes = _mm_cvtsi32_si128(word);
        return _mm_unpacklo_epi8(_mm_unpacklo_epi8(bytes, bytes), Zero());
    }
    // The pixels of one lane of `a`, then those of `b`; those of the next lane `distance` pixels further on.
    static void StoreLanes(uint32_t* out, size_t /*distance*/, Reg a, Reg b) {
        _mm_storeu_si128(reinterpret_cast<Reg*>(out), a);
        _mm_storeu_si128(reinterpret_cast<Reg*>(out + 4), b);
    }

    static Reg Zero() { return _mm_setzero_si128(); }
    static Reg Set16(int16_t value) { return _mm_set1_epi16(value); }
    static Reg Add16(Reg a, Reg b) { return _mm_add_epi16(a, b); }
    static Reg Sub16(Reg a, Reg b) { return _mm_sub_epi16(a, b); }
    static Reg MulHigh16(Reg a, Reg b) { return _mm_mulhi_epi16(a, b); }
    static Reg Sign16(Reg a) { return _mm_srai_epi16(a, 15); }
    static Reg Narrow(Reg a, Reg b) { return _mm_packus_epi16(a, b); } // clamps to 0..255
    static Reg UnpackLow8(Reg a, Reg b) { return _mm_unpacklo_epi8(a, b); }
    static Reg UnpackHigh8(Reg a, Reg b) { return _mm_unpackhi_epi8(a, b); }
    static Reg UnpackLow16(Reg a, Reg b) { return _mm_unpacklo_epi16(a, b); }
    static Reg UnpackHigh16(Reg a, Reg b) { return _mm_unpackhi_epi16(a, b); }
    static Reg UnpackLow32(Reg a, Reg b) { return _mm_unpacklo_epi32(a, b); }
    static Reg UnpackHigh32(Reg a, Reg b) { return _mm_unpackhi_epi32(a, b); }
};

constexpr colour::Routines kSse2 = Kernels<Sse2>::Table("sse2");

} // namespace

const colour::Routines* colour::Sse2Routines() {
    return &kSse2;
}

#else

const colour::Routines* colour::Sse2Routines() {
    return nullptr;
}

#endif
