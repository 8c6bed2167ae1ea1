// The 128-bit register type of gui/pixel_kernels.h. In an anonymous namespace for the reason given there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace {

// Coverage of as many pixels as a register holds, the first in the lowest byte.
template <class Word>
struct CoverageBytes {
    using Bytes = Word;
    static constexpr size_t kPixels = sizeof(Word);

    static Bytes LoadBytes(const uint8_t* p) {
        Bytes bytes = 0;
        memcpy(&bytes, p, sizeof bytes);
        return bytes;
    }
    static bool AreZero(Bytes bytes) { return bytes == 0; }
    static Bytes WithoutFirst(Bytes bytes, size_t count) { return bytes & ~Bytes{0} << (8 * count); }
};

struct Sse2 : CoverageBytes<uint32_t> {
    using Reg = __m128i;
    using Narrower = Sse2; // what takes over for rows that are too short

    static Reg Load(const uint32_t* p) { return _mm_loadu_si128(reinterpret_cast<const Reg*>(p)); }
    static void Store(uint32_t* p, Reg r) { _mm_storeu_si128(reinterpret_cast<Reg*>(p), r); }

    static Reg Widen(Bytes bytes) {
        const Reg packed = _mm_cvtsi32_si128(static_cast<int>(bytes));
        return _mm_unpacklo_epi16(_mm_unpacklo_epi8(packed, Zero()), Zero());
    }

    static Reg Zero() { return _mm_setzero_si128(); }
    static Reg Set32(uint32_t v) { return _mm_set1_epi32(static_cast<int>(v)); }
    static Reg Set16(uint16_t v) { return _mm_set1_epi16(static_cast<short>(v)); }

    static Reg And(Reg a, Reg b) { return _mm_and_si128(a, b); }
    static Reg Or(Reg a, Reg b) { return _mm_or_si128(a, b); }
    static Reg Select(Reg mask, Reg yes, Reg no) { return Or(And(mask, yes), _mm_andnot_si128(mask, no)); }
    static bool AllSet(Reg mask) { return _mm_movemask_epi8(mask) == 0xFFFF; }
    static bool NoneSet(Reg mask) { return _mm_movemask_epi8(mask) == 0; }

    static Reg Add16(Reg a, Reg b) { return _mm_add_epi16(a, b); }
    static Reg Sub16(Reg a, Reg b) { return _mm_sub_epi16(a, b); }
    static Reg Min16(Reg a, Reg b) { return _mm_min_epi16(a, b); }
    static Reg Mul16(Reg a, Reg b) { return _mm_mullo_epi16(a, b); }
    static Reg MulHigh16(Reg a, Reg b) { return _mm_mulhi_epu16(a, b); }
    static Reg Shr16(Reg a, int bits) { return _mm_srli_epi16(a, bits); }
    static Reg Shr32(Reg a, int bits) { return _mm_srli_epi32(a, bits); }
    static Reg Shl32(Reg a, int bits) { return _mm_slli_epi32(a, bits); }
    static Reg Greater32(Reg a, Reg b) { return _mm_cmpgt_epi32(a, b); }

    static Reg UnpackLow8(Reg a, Reg b) { return _mm_unpacklo_epi8(a, b); }
    static Reg UnpackHigh8(Reg a, Reg b) { return _mm_unpackhi_epi8(a, b); }
    static Reg UnpackLow32(Reg a, Reg b) { return _mm_unpacklo_epi32(a, b); }
    static Reg UnpackHigh32(Reg a, Reg b) { return _mm_unpackhi_epi32(a, b); }
    static Reg Pack16(Reg low, Reg high) { return _mm_packus_epi16(low, high); }
};

} // namespace
