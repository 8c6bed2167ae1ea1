// Eight signed words in one SSE register; the operations that sample_routines_vector.inl is written in.

struct Words8 {
    __m128i v;

    static Words8 Set(i16 value) { return {_mm_set1_epi16(value)}; }
    static Words8 WidenBytes(__m128i low) { return {_mm_unpacklo_epi8(low, _mm_setzero_si128())}; }
    static Words8 Widen(const u8* p) { return WidenBytes(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))); }
    // tc0 of the four segments of a chroma edge, two samples each.
    static Words8 WidenSegments(const EdgeFilter& filter) {
        i32 word;
        std::memcpy(&word, filter.tc0, sizeof word);
        const __m128i bytes = _mm_cvtsi32_si128(word);
        const __m128i twice = _mm_unpacklo_epi8(bytes, bytes);
        return {_mm_srai_epi16(_mm_unpacklo_epi8(twice, twice), 8)};
    }

    // To bytes, clipped to 0..255, in the low half.
    __m128i Narrow() const { return _mm_packus_epi16(v, v); }

    Words8 operator+(Words8 o) const { return {_mm_add_epi16(v, o.v)}; }
    Words8 operator-(Words8 o) const { return {_mm_sub_epi16(v, o.v)}; }
    Words8 operator*(Words8 o) const { return {_mm_mullo_epi16(v, o.v)}; }
    Words8 operator&(Words8 o) const { return {_mm_and_si128(v, o.v)}; }
    Words8 AddSaturated(Words8 o) const { return {_mm_adds_epi16(v, o.v)}; }
    Words8 SubSaturated(Words8 o) const { return {_mm_subs_epi16(v, o.v)}; }
    Words8 ShiftLeft(int bits) const { return {_mm_slli_epi16(v, bits)}; }
    Words8 ShiftRight(int bits) const { return {_mm_srai_epi16(v, bits)}; }
    Words8 Abs() const { return {_mm_max_epi16(v, _mm_sub_epi16(_mm_setzero_si128(), v))}; }
    Words8 Clamp(Words8 limit) const {
        const __m128i lowest = _mm_sub_epi16(_mm_setzero_si128(), limit.v);
        return {_mm_min_epi16(_mm_max_epi16(v, lowest), limit.v)};
    }
    // Masks: -1 where true.
    Words8 Below(Words8 o) const { return {_mm_cmpgt_epi16(o.v, v)}; }
    Words8 Choose(Words8 yes, Words8 no) const {
        return {_mm_or_si128(_mm_and_si128(v, yes.v), _mm_andnot_si128(v, no.v))};
    }
    bool NoneSet() const { return _mm_movemask_epi8(v) == 0; }
};
