// The sample routines for AVX2: the same as for SSE2, with sixteen words in one register. All that stands
// between the pragmas runs only where the processor can do it; nothing shared may be instantiated there.
#include "media/h264/sample_routines.h"

#include <cstring>
#include <type_traits>

#if defined(__x86_64__)

#include <immintrin.h>

namespace h264 {

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

namespace {

constexpr const char* RoutinesName = "avx2";

#include "media/h264/sample_routines_words8.inl"

struct Words16 {
    __m256i v;

    static Words16 Set(i16 value) { return {_mm256_set1_epi16(value)}; }
    static Words16 WidenBytes(__m128i bytes) { return {_mm256_cvtepu8_epi16(bytes)}; }
    static Words16 Widen(const u8* p) {
        return WidenBytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    }
    // tc0 of the four segments of a luma edge, four samples each.
    static Words16 WidenSegments(const EdgeFilter& filter) {
        const __m128i pairs = Words8::WidenSegments(filter).v; // each twice
        return {_mm256_set_m128i(_mm_unpackhi_epi16(pairs, pairs), _mm_unpacklo_epi16(pairs, pairs))};
    }

    __m128i Narrow() const {
        return _mm_packus_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    }

    Words16 operator+(Words16 o) const { return {_mm256_add_epi16(v, o.v)}; }
    Words16 operator-(Words16 o) const { return {_mm256_sub_epi16(v, o.v)}; }
    Words16 operator&(Words16 o) const { return {_mm256_and_si256(v, o.v)}; }
    Words16 AddSaturated(Words16 o) const { return {_mm256_adds_epi16(v, o.v)}; }
    Words16 SubSaturated(Words16 o) const { return {_mm256_subs_epi16(v, o.v)}; }
    Words16 ShiftLeft(int bits) const { return {_mm256_slli_epi16(v, bits)}; }
    Words16 ShiftRight(int bits) const { return {_mm256_srai_epi16(v, bits)}; }
    Words16 Abs() const { return {_mm256_abs_epi16(v)}; }
    Words16 Clamp(Words16 limit) const {
        const __m256i lowest = _mm256_sub_epi16(_mm256_setzero_si256(), limit.v);
        return {_mm256_min_epi16(_mm256_max_epi16(v, lowest), limit.v)};
    }
    Words16 Below(Words16 o) const { return {_mm256_cmpgt_epi16(o.v, v)}; }
    Words16 Choose(Words16 yes, Words16 no) const { return {_mm256_blendv_epi8(no.v, yes.v, v)}; }
    bool NoneSet() const { return _mm256_testz_si256(v, v) != 0; }
};

#include "media/h264/sample_routines_vector.inl"

} // namespace

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

const SampleRoutines* Avx2Routines() {
    return __builtin_cpu_supports("avx2") ? &Table : nullptr;
}

} // namespace h264

#else

const h264::SampleRoutines* h264::Avx2Routines() {
    return nullptr;
}

#endif
