// The sample routines for SSE2, which every x86-64 processor has.
#include "media/h264/sample_routines.h"

#include <cstring>
#include <type_traits>

#if defined(__x86_64__)

#include <emmintrin.h>

namespace h264 {

namespace {

constexpr const char* RoutinesName = "sse2";

#include "media/h264/sample_routines_words8.inl"

// Sixteen words in two registers.
struct Words16 {
    Words8 lo, hi;

    static Words16 Set(i16 value) { return {Words8::Set(value), Words8::Set(value)}; }
    static Words16 WidenBytes(__m128i bytes) {
        return {Words8::WidenBytes(bytes), {_mm_unpackhi_epi8(bytes, _mm_setzero_si128())}};
    }
    static Words16 Widen(const u8* p) {
        return WidenBytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    }
    // tc0 of the four segments of a luma edge, four samples each.
    static Words16 WidenSegments(const EdgeFilter& filter) {
        const __m128i pairs = Words8::WidenSegments(filter).v; // each twice
        return {{_mm_unpacklo_epi16(pairs, pairs)}, {_mm_unpackhi_epi16(pairs, pairs)}};
    }

    __m128i Narrow() const { return _mm_packus_epi16(lo.v, hi.v); }

    Words16 operator+(Words16 o) const { return {lo + o.lo, hi + o.hi}; }
    Words16 operator-(Words16 o) const { return {lo - o.lo, hi - o.hi}; }
    Words16 operator&(Words16 o) const { return {lo & o.lo, hi & o.hi}; }
    Words16 AddSaturated(Words16 o) const { return {lo.AddSaturated(o.lo), hi.AddSaturated(o.hi)}; }
    Words16 SubSaturated(Words16 o) const { return {lo.SubSaturated(o.lo), hi.SubSaturated(o.hi)}; }
    Words16 ShiftLeft(int bits) const { return {lo.ShiftLeft(bits), hi.ShiftLeft(bits)}; }
    Words16 ShiftRight(int bits) const { return {lo.ShiftRight(bits), hi.ShiftRight(bits)}; }
    Words16 Abs() const { return {lo.Abs(), hi.Abs()}; }
    Words16 Clamp(Words16 limit) const { return {lo.Clamp(limit.lo), hi.Clamp(limit.hi)}; }
    Words16 Below(Words16 o) const { return {lo.Below(o.lo), hi.Below(o.hi)}; }
    Words16 Choose(Words16 yes, Words16 no) const {
        return {lo.Choose(yes.lo, no.lo), hi.Choose(yes.hi, no.hi)};
    }
    bool NoneSet() const { return lo.NoneSet() && hi.NoneSet(); }
};

#include "media/h264/sample_routines_vector.inl"

} // namespace

const SampleRoutines* Sse2Routines() {
    return &Table;
}

} // namespace h264

#else

const h264::SampleRoutines* h264::Sse2Routines() {
    return nullptr;
}

#endif
