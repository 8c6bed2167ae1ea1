// The pixel loops on 256-bit registers, for processors that have AVX2.
#include "gui/pixel_ops_x86.h"

#if defined(__x86_64__)

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <immintrin.h>
#include <type_traits>

// From here on the compiler may use AVX2. Nothing that other files share may be defined below this line: the
// kernels and this file's own code stand in anonymous namespaces.
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

#include "gui/pixel_kernels.h"
#include "gui/pixel_sse2.h"

namespace {

struct Avx2 : CoverageBytes<uint64_t> {
    using Reg = __m256i;
    using Narrower = Sse2; // what takes over for rows that are too short

    static Reg Load(const uint32_t* p) { return _mm256_loadu_si256(reinterpret_cast<const Reg*>(p)); }
    static void Store(uint32_t* p, Reg r) { _mm256_storeu_si256(reinterpret_cast<Reg*>(p), r); }

    static Reg Widen(Bytes bytes) {
        return _mm256_cvtepu8_epi32(_mm_cvtsi64_si128(static_cast<long long>(bytes)));
    }

    static Reg Zero() { return _mm256_setzero_si256(); }
    static Reg Set32(uint32_t v) { return _mm256_set1_epi32(static_cast<int>(v)); }
    static Reg Set16(uint16_t v) { return _mm256_set1_epi16(static_cast<short>(v)); }

    static Reg And(Reg a, Reg b) { return _mm256_and_si256(a, b); }
    static Reg Or(Reg a, Reg b) { return _mm256_or_si256(a, b); }
    static Reg Select(Reg mask, Reg yes, Reg no) { return _mm256_blendv_epi8(no, yes, mask); }
    static bool AllSet(Reg mask) { return _mm256_movemask_epi8(mask) == -1; }
    static bool NoneSet(Reg mask) { return _mm256_movemask_epi8(mask) == 0; }

    static Reg Add16(Reg a, Reg b) { return _mm256_add_epi16(a, b); }
    static Reg Sub16(Reg a, Reg b) { return _mm256_sub_epi16(a, b); }
    static Reg Min16(Reg a, Reg b) { return _mm256_min_epi16(a, b); }
    static Reg Mul16(Reg a, Reg b) { return _mm256_mullo_epi16(a, b); }
    static Reg MulHigh16(Reg a, Reg b) { return _mm256_mulhi_epu16(a, b); }
    static Reg Shr16(Reg a, int bits) { return _mm256_srli_epi16(a, bits); }
    static Reg Shr32(Reg a, int bits) { return _mm256_srli_epi32(a, bits); }
    static Reg Shl32(Reg a, int bits) { return _mm256_slli_epi32(a, bits); }
    static Reg Greater32(Reg a, Reg b) { return _mm256_cmpgt_epi32(a, b); }

    // Unpacking and packing both stay within the two halves of a register, so that one undoes the other.
    static Reg UnpackLow8(Reg a, Reg b) { return _mm256_unpacklo_epi8(a, b); }
    static Reg UnpackHigh8(Reg a, Reg b) { return _mm256_unpackhi_epi8(a, b); }
    static Reg UnpackLow32(Reg a, Reg b) { return _mm256_unpacklo_epi32(a, b); }
    static Reg UnpackHigh32(Reg a, Reg b) { return _mm256_unpackhi_epi32(a, b); }
    static Reg Pack16(Reg low, Reg high) { return _mm256_packus_epi16(low, high); }
};

constexpr pixelops::Loops kAvx2Loops = Kernels<Avx2>::Table("avx2");

} // namespace

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

const pixelops::Loops* pixelops::Avx2Loops() {
    return __builtin_cpu_supports("avx2") ? &kAvx2Loops : nullptr;
}

#else

const pixelops::Loops* pixelops::Avx2Loops() {
    return nullptr;
}

#endif
