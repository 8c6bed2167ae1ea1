// The sample routines over vectors of 16-bit words, for x86. Included by one file for each instruction set, which
// defines before, in an anonymous namespace:
//
//     Words8    eight signed words, one for each of eight samples
//     Words16   sixteen of them
//
// Both have the same operations, so that each routine is written once. Widths of 4 run in Words8 and store half.
// All reading past a block stays within the slack behind each picture.
//
// Sections: bytes, luma interpolation, chroma interpolation, residual, deblocking.

// ---- Bytes -----------------------------------------------------------------------------------------------------

inline __m128i LoadBytes4(const u8* p) {
    i32 word;
    std::memcpy(&word, p, sizeof word);
    return _mm_cvtsi32_si128(word);
}
inline void StoreBytes4(u8* p, __m128i bytes) {
    const i32 word = _mm_cvtsi128_si32(bytes);
    std::memcpy(p, &word, sizeof word);
}
inline __m128i LoadBytes8(const u8* p) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}
inline void StoreBytes8(u8* p, __m128i bytes) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), bytes);
}
inline __m128i LoadBytes16(const u8* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void StoreBytes16(u8* p, __m128i bytes) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), bytes);
}

template <u32 Width>
inline void StoreBytes(u8* p, __m128i bytes) {
    if constexpr (Width == 2) {
        const u16 pair = static_cast<u16>(_mm_cvtsi128_si32(bytes));
        std::memcpy(p, &pair, sizeof pair);
    } else if constexpr (Width == 4) {
        StoreBytes4(p, bytes);
    } else if constexpr (Width == 8) {
        StoreBytes8(p, bytes);
    } else {
        StoreBytes16(p, bytes);
    }
}

template <u32 Width>
using WordsOf = std::conditional_t<Width == 16, Words16, Words8>;

template <u32 Width>
inline __m128i LoadSamples(const u8* p) {
    if constexpr (Width == 16)
        return LoadBytes16(p);
    else
        return LoadBytes8(p);
}

// ---- 8.4.2.2.1 Luma sample interpolation -----------------------------------------------------------------------

// Taps 1, -5, 20, 20, -5, 1 from the sums of the outer, the middle and the inner pair.
template <class Words>
inline Words SixTap(Words outer, Words middle, Words inner) {
    const Words t = inner.ShiftLeft(2) - middle; // 20 inner - 5 middle = 5 (4 inner - middle)
    return outer + t.ShiftLeft(2) + t;
}

template <class Words>
inline Words AcrossTap(const u8* p) {
    return SixTap(Words::Widen(p - 2) + Words::Widen(p + 3), Words::Widen(p - 1) + Words::Widen(p + 2),
                  Words::Widen(p) + Words::Widen(p + 1));
}

template <class Words>
inline __m128i RoundHalf(Words tap) {
    return (tap + Words::Set(16)).ShiftRight(5).Narrow();
}

// Taps over words that are tap results themselves, (outer - 5 middle + 20 inner + 512) >> 10, within 16 bits:
// dividing by 16 in two steps is exact, since floors nest, and where the saturating additions saturate, the
// result is clipped anyway.
template <class Words>
inline __m128i RoundCentre(Words outer, Words middle, Words inner) {
    const Words sixteenth = (outer - middle).ShiftRight(2).SubSaturated(middle).AddSaturated(inner).ShiftRight(2);
    return (sixteenth + inner + Words::Set(32)).ShiftRight(6).Narrow();
}

// Six consecutive rows of words, the window that vertical taps slide down.
template <class Words>
struct RowWindow {
    Words row[6];

    Words Outer() const { return row[0] + row[5]; }
    Words Middle() const { return row[1] + row[4]; }
    Words Inner() const { return row[2] + row[3]; }
    void Slide(Words next) {
        for (u32 i = 0; i < 5; ++i)
            row[i] = row[i + 1];
        row[5] = next;
    }
};

template <u32 Width>
void CopySamples(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 height) {
    for (u32 y = 0; y < height; ++y, dst += dstStride, src += srcStride)
        StoreBytes<Width>(dst, LoadSamples<Width>(src));
}

// a, b, c
template <u32 Width, u32 xFrac>
void InterAcross(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 height) {
    for (u32 y = 0; y < height; ++y, dst += dstStride, src += srcStride) {
        __m128i bytes = RoundHalf(AcrossTap<WordsOf<Width>>(src));
        if constexpr (xFrac != 2)
            bytes = _mm_avg_epu8(bytes, LoadSamples<Width>(src + (xFrac == 3 ? 1 : 0)));
        StoreBytes<Width>(dst, bytes);
    }
}

template <class Words>
inline RowWindow<Words> WindowAbove(const u8* src, ptrdiff_t stride) {
    RowWindow<Words> window;
    for (ptrdiff_t i = 0; i < 5; ++i)
        window.row[i + 1] = Words::Widen(src + (i - 2) * stride);
    return window; // Slide() brings in the sixth
}

// d, h, n: full samples only; e, g, p, r: with the half samples across.
template <u32 Width, u32 xFrac, u32 yFrac>
void InterDown(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 height) {
    using Words = WordsOf<Width>;
    const u8* const column = src + (xFrac == 3 ? 1 : 0);
    const u8* across = src + (yFrac == 3 ? srcStride : 0);
    RowWindow<Words> window = WindowAbove<Words>(column, srcStride);
    const u8* next = column + 3 * srcStride;
    for (u32 y = 0; y < height; ++y, dst += dstStride, next += srcStride, across += srcStride) {
        window.Slide(Words::Widen(next));
        __m128i bytes = RoundHalf(SixTap(window.Outer(), window.Middle(), window.Inner()));
        if constexpr (xFrac != 0)
            bytes = _mm_avg_epu8(bytes, RoundHalf(AcrossTap<Words>(across)));
        else if constexpr (yFrac != 2)
            bytes = _mm_avg_epu8(bytes, LoadSamples<Width>(across));
        StoreBytes<Width>(dst, bytes);
    }
}

// j; f and q, which lie between j and a half sample across.
template <u32 Width, u32 yFrac>
void InterCentre(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 height) {
    using Words = WordsOf<Width>;
    RowWindow<Words> window;
    for (ptrdiff_t i = 0; i < 5; ++i)
        window.row[i + 1] = AcrossTap<Words>(src + (i - 2) * srcStride);
    const u8* next = src + 3 * srcStride;
    for (u32 y = 0; y < height; ++y, dst += dstStride, next += srcStride) {
        window.Slide(AcrossTap<Words>(next));
        __m128i bytes = RoundCentre(window.Outer(), window.Middle(), window.Inner());
        if constexpr (yFrac != 2)
            bytes = _mm_avg_epu8(bytes, RoundHalf(window.row[yFrac == 3 ? 3 : 2]));
        StoreBytes<Width>(dst, bytes);
    }
}

// i and k, which lie between j and a half sample down.
template <u32 Width, u32 xFrac>
void InterCentreBeside(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 height) {
    using Words = WordsOf<Width>;
    const u8* const column = src + (xFrac == 3 ? 1 : 0);
    RowWindow<Words> centre;
    for (ptrdiff_t i = 0; i < 5; ++i)
        centre.row[i + 1] = AcrossTap<Words>(src + (i - 2) * srcStride);
    RowWindow<Words> beside = WindowAbove<Words>(column, srcStride);
    ptrdiff_t next = 3 * srcStride;
    for (u32 y = 0; y < height; ++y, dst += dstStride, next += srcStride) {
        centre.Slide(AcrossTap<Words>(src + next));
        beside.Slide(Words::Widen(column + next));
        const __m128i j = RoundCentre(centre.Outer(), centre.Middle(), centre.Inner());
        const __m128i half = RoundHalf(SixTap(beside.Outer(), beside.Middle(), beside.Inner()));
        StoreBytes<Width>(dst, _mm_avg_epu8(j, half));
    }
}

template <u32 Width, u32 xFrac, u32 yFrac>
void InterColumns(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 height) {
    if constexpr (xFrac == 0 && yFrac == 0)
        CopySamples<Width>(dst, dstStride, src, srcStride, height);
    else if constexpr (yFrac == 0)
        InterAcross<Width, xFrac>(dst, dstStride, src, srcStride, height);
    else if constexpr (xFrac == 2)
        InterCentre<Width, yFrac>(dst, dstStride, src, srcStride, height);
    else if constexpr (xFrac != 0 && yFrac == 2)
        InterCentreBeside<Width, xFrac>(dst, dstStride, src, srcStride, height);
    else
        InterDown<Width, xFrac, yFrac>(dst, dstStride, src, srcStride, height);
}

template <u32 xFrac, u32 yFrac>
void LumaInter(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 width, u32 height) {
    if (width == 16)
        InterColumns<16, xFrac, yFrac>(dst, dstStride, src, srcStride, height);
    else if (width == 8)
        InterColumns<8, xFrac, yFrac>(dst, dstStride, src, srcStride, height);
    else
        InterColumns<4, xFrac, yFrac>(dst, dstStride, src, srcStride, height);
}

// ---- 8.4.2.2.2 Chroma sample interpolation ---------------------------------------------------------------------

// Weights first across, then down: nothing is rounded in between, so the order does not matter.
template <u32 Width>
void ChromaColumns(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 height, u32 xFrac,
                   u32 yFrac) {
    const Words8 left = Words8::Set(static_cast<i16>(8 - xFrac)), right = Words8::Set(static_cast<i16>(xFrac));
    const Words8 upper = Words8::Set(static_cast<i16>(8 - yFrac)), lower = Words8::Set(static_cast<i16>(yFrac));
    const Words8 half = Words8::Set(32);
    const auto across = [&](const u8* p) { return Words8::Widen(p) * left + Words8::Widen(p + 1) * right; };
    Words8 above = across(src);
    for (u32 y = 0; y < height; ++y, dst += dstStride) {
        src += srcStride;
        const Words8 below = across(src);
        StoreBytes<Width>(dst, (above * upper + below * lower + half).ShiftRight(6).Narrow());
        above = below;
    }
}

void ChromaInter(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 width, u32 height, u32 xFrac,
                 u32 yFrac) {
    if (width == 8 && (xFrac | yFrac) == 0)
        CopySamples<8>(dst, dstStride, src, srcStride, height);
    else if (width == 8)
        ChromaColumns<8>(dst, dstStride, src, srcStride, height, xFrac, yFrac);
    else if (width == 4)
        ChromaColumns<4>(dst, dstStride, src, srcStride, height, xFrac, yFrac);
    else
        ChromaColumns<2>(dst, dstStride, src, srcStride, height, xFrac, yFrac);
}

// ---- 8.5.12.2 Residual -----------------------------------------------------------------------------------------

// Four vectors of four 32-bit values: coefficients of a broken stream do not fit 16 bits.
struct Rows4 {
    __m128i row[4];

    // One dimension of the transform, across the vectors.
    void Transform() {
        const __m128i e = _mm_add_epi32(row[0], row[2]), f = _mm_sub_epi32(row[0], row[2]);
        const __m128i g = _mm_sub_epi32(_mm_srai_epi32(row[1], 1), row[3]);
        const __m128i h = _mm_add_epi32(row[1], _mm_srai_epi32(row[3], 1));
        row[0] = _mm_add_epi32(e, h);
        row[1] = _mm_add_epi32(f, g);
        row[2] = _mm_sub_epi32(f, g);
        row[3] = _mm_sub_epi32(e, h);
    }

    void Transpose() {
        const __m128i a = _mm_unpacklo_epi32(row[0], row[1]), b = _mm_unpackhi_epi32(row[0], row[1]);
        const __m128i c = _mm_unpacklo_epi32(row[2], row[3]), d = _mm_unpackhi_epi32(row[2], row[3]);
        row[0] = _mm_unpacklo_epi64(a, c);
        row[1] = _mm_unpackhi_epi64(a, c);
        row[2] = _mm_unpacklo_epi64(b, d);
        row[3] = _mm_unpackhi_epi64(b, d);
    }
};

// 0 <= value - MinResidual < 1024 for all values: their bits above the tenth are clear.
inline bool AllInResidualRange(const Rows4& residual) {
    const __m128i lowest = _mm_set1_epi32(-MinResidual);
    __m128i bits = _mm_setzero_si128();
    for (const __m128i& row : residual.row)
        bits = _mm_or_si128(bits, _mm_add_epi32(row, lowest));
    const __m128i high = _mm_srli_epi32(bits, 10);
    return _mm_movemask_epi8(_mm_cmpeq_epi32(high, _mm_setzero_si128())) == 0xFFFF;
}

bool AddResidual(u8* dst, ptrdiff_t stride, i32* coefficients) {
    __m128i* const columns = reinterpret_cast<__m128i*>(coefficients);
    const __m128i zero = _mm_setzero_si128();
    Rows4 block;
    for (u32 i = 0; i < 4; ++i) {
        block.row[i] = _mm_load_si128(columns + i);
        _mm_store_si128(columns + i, zero);
    }
    block.Transform(); // along the rows of the matrix
    block.Transpose();
    block.Transform(); // along its columns
    for (__m128i& row : block.row)
        row = _mm_srai_epi32(_mm_add_epi32(row, _mm_set1_epi32(32)), 6);
    for (u32 i = 0; i < 4; i += 2) {
        const __m128i residual = _mm_packs_epi32(block.row[i], block.row[i + 1]);
        const __m128i samples = _mm_unpacklo_epi8(_mm_unpacklo_epi32(LoadBytes4(dst), LoadBytes4(dst + stride)), zero);
        const __m128i sum = _mm_packus_epi16(_mm_add_epi16(samples, residual), zero);
        StoreBytes4(dst, sum);
        StoreBytes4(dst + stride, _mm_srli_si128(sum, 4));
        dst += 2 * stride;
    }
    return AllInResidualRange(block);
}

inline i32 Clip255(i32 value) {
    return value < 0 ? 0 : value > 255 ? 255 : value;
}

bool AddDcResidual(u8* dst, ptrdiff_t stride, i32* coefficients) {
    const i32 residual = (coefficients[0] + 32) >> 6;
    coefficients[0] = 0;
    const __m128i up = _mm_set1_epi8(static_cast<char>(Clip255(residual)));
    const __m128i down = _mm_set1_epi8(static_cast<char>(Clip255(-residual)));
    for (u32 y = 0; y < 4; ++y, dst += stride)
        StoreBytes4(dst, _mm_subs_epu8(_mm_adds_epu8(LoadBytes4(dst), up), down));
    return residual >= MinResidual && residual <= MaxResidual;
}

// ---- 8.7.2 Deblocking ------------------------------------------------------------------------------------------

// The samples on both sides of an edge, p3..p0 | q0..q3, as vectors along the edge.
template <class Words>
struct EdgeSamples {
    Words p3, p2, p1, p0, q0, q1, q2, q3;

    // filterSamplesFlag without the bS.
    Words SmallSteps(Words alpha, Words beta) const {
        return (p0 - q0).Abs().Below(alpha) & (p1 - p0).Abs().Below(beta) & (q1 - q0).Abs().Below(beta);
    }
};

// 8.7.2.3, bS below 4; `tc0` is -1 where bS is 0. False when nothing changes.
template <bool IsLuma, class Words>
inline bool FilterNormal(EdgeSamples<Words>* s, Words tc0, const EdgeFilter& filter) {
    const Words beta = Words::Set(static_cast<i16>(filter.beta));
    const Words active = s->SmallSteps(Words::Set(static_cast<i16>(filter.alpha)), beta) &
                         Words::Set(-1).Below(tc0);
    if (active.NoneSet())
        return false;
    const Words limit = tc0 & active; // 0 where nothing may change
    Words tc = tc0 + Words::Set(1);
    if constexpr (IsLuma) {
        const Words smoothP = (s->p2 - s->p0).Abs().Below(beta) & active;
        const Words smoothQ = (s->q2 - s->q0).Abs().Below(beta) & active;
        tc = limit - smoothP - smoothQ; // masks are -1
        const Words middle = (s->p0 + s->q0 + Words::Set(1)).ShiftRight(1);
        const Words stepP = (s->p2 + middle - s->p1 - s->p1).ShiftRight(1).Clamp(limit) & smoothP;
        const Words stepQ = (s->q2 + middle - s->q1 - s->q1).ShiftRight(1).Clamp(limit) & smoothQ;
        const Words delta =
            ((s->q0 - s->p0).ShiftLeft(2) + s->p1 - s->q1 + Words::Set(4)).ShiftRight(3).Clamp(tc);
        s->p1 = s->p1 + stepP;
        s->q1 = s->q1 + stepQ;
        s->p0 = s->p0 + delta;
        s->q0 = s->q0 - delta;
    } else {
        const Words delta =
            ((s->q0 - s->p0).ShiftLeft(2) + s->p1 - s->q1 + Words::Set(4)).ShiftRight(3).Clamp(tc & active);
        s->p0 = s->p0 + delta;
        s->q0 = s->q0 - delta;
    }
    return true;
}

// 8.7.2.4, bS 4
template <class Words>
inline void FilterStrongLumaSide(Words active, Words strong, Words& p0, Words& p1, Words& p2, Words p3, Words q0,
                                 Words q1) {
    const Words two = Words::Set(2), four = Words::Set(4);
    const Words sum = p0 + q0 + p1; // of the three around p0
    const Words weak = (p1 + p1 + p0 + q1 + two).ShiftRight(2);
    const Words new0 = (sum + sum + p2 + q1 + four).ShiftRight(3);
    const Words new1 = (sum + p2 + two).ShiftRight(2);
    const Words new2 = (p3 + p3 + p2 + p2 + p2 + sum + four).ShiftRight(3);
    p0 = active.Choose(strong.Choose(new0, weak), p0);
    p1 = strong.Choose(new1, p1);
    p2 = strong.Choose(new2, p2);
}

template <bool IsLuma, class Words>
inline bool FilterStrong(EdgeSamples<Words>* s, i32 alpha, i32 beta) {
    const Words betaWords = Words::Set(static_cast<i16>(beta));
    const Words active = s->SmallSteps(Words::Set(static_cast<i16>(alpha)), betaWords);
    if (active.NoneSet())
        return false;
    if constexpr (IsLuma) {
        const Words small = (s->p0 - s->q0).Abs().Below(Words::Set(static_cast<i16>((alpha >> 2) + 2))) & active;
        const Words strongP = (s->p2 - s->p0).Abs().Below(betaWords) & small;
        const Words strongQ = (s->q2 - s->q0).Abs().Below(betaWords) & small;
        const Words p0 = s->p0, p1 = s->p1;
        FilterStrongLumaSide(active, strongP, s->p0, s->p1, s->p2, s->p3, s->q0, s->q1);
        FilterStrongLumaSide(active, strongQ, s->q0, s->q1, s->q2, s->q3, p0, p1);
    } else {
        const Words two = Words::Set(2);
        const Words newP = (s->p1 + s->p1 + s->p0 + s->q1 + two).ShiftRight(2);
        const Words newQ = (s->q1 + s->q1 + s->q0 + s->p1 + two).ShiftRight(2);
        s->p0 = active.Choose(newP, s->p0);
        s->q0 = active.Choose(newQ, s->q0);
    }
    return true;
}

// -- Horizontal edges: a row is a vector already.

template <class Words>
inline EdgeSamples<Words> LoadRows(const u8* q0, ptrdiff_t stride, i32 reach) {
    EdgeSamples<Words> s;
    s.p1 = Words::Widen(q0 - 2 * stride);
    s.p0 = Words::Widen(q0 - stride);
    s.q0 = Words::Widen(q0);
    s.q1 = Words::Widen(q0 + stride);
    if (reach > 2) {
        s.p2 = Words::Widen(q0 - 3 * stride);
        s.q2 = Words::Widen(q0 + 2 * stride);
    }
    if (reach > 3) {
        s.p3 = Words::Widen(q0 - 4 * stride);
        s.q3 = Words::Widen(q0 + 3 * stride);
    }
    return s;
}

template <u32 Length, class Words>
inline void StoreRow(u8* row, Words words) {
    StoreBytes<Length>(row, words.Narrow());
}

void LumaHorizontal(u8* q0, ptrdiff_t stride, const EdgeFilter& filter) {
    EdgeSamples<Words16> s = LoadRows<Words16>(q0, stride, 3);
    if (!FilterNormal<true>(&s, Words16::WidenSegments(filter), filter))
        return;
    StoreRow<16>(q0 - 2 * stride, s.p1);
    StoreRow<16>(q0 - stride, s.p0);
    StoreRow<16>(q0, s.q0);
    StoreRow<16>(q0 + stride, s.q1);
}

void LumaHorizontalStrong(u8* q0, ptrdiff_t stride, i32 alpha, i32 beta) {
    EdgeSamples<Words16> s = LoadRows<Words16>(q0, stride, 4);
    if (!FilterStrong<true>(&s, alpha, beta))
        return;
    StoreRow<16>(q0 - 3 * stride, s.p2);
    StoreRow<16>(q0 - 2 * stride, s.p1);
    StoreRow<16>(q0 - stride, s.p0);
    StoreRow<16>(q0, s.q0);
    StoreRow<16>(q0 + stride, s.q1);
    StoreRow<16>(q0 + 2 * stride, s.q2);
}

void ChromaHorizontal(u8* q0, ptrdiff_t stride, const EdgeFilter& filter) {
    EdgeSamples<Words8> s = LoadRows<Words8>(q0, stride, 2);
    if (!FilterNormal<false>(&s, Words8::WidenSegments(filter), filter))
        return;
    StoreRow<8>(q0 - stride, s.p0);
    StoreRow<8>(q0, s.q0);
}

void ChromaHorizontalStrong(u8* q0, ptrdiff_t stride, i32 alpha, i32 beta) {
    EdgeSamples<Words8> s = LoadRows<Words8>(q0, stride, 2);
    if (!FilterStrong<false>(&s, alpha, beta))
        return;
    StoreRow<8>(q0 - stride, s.p0);
    StoreRow<8>(q0, s.q0);
}

// -- Vertical edges: turned, filtered, turned back.

// 16 rows of 8 bytes, from p3, become 8 vectors of 16.
inline EdgeSamples<Words16> LoadColumns16(const u8* q0, ptrdiff_t stride) {
    const u8* const p3 = q0 - 4;
    __m128i a[8], b[8], c[8];
    for (u32 i = 0; i < 8; ++i)
        a[i] = _mm_unpacklo_epi8(LoadBytes8(p3 + static_cast<ptrdiff_t>(i) * stride),
                                 LoadBytes8(p3 + static_cast<ptrdiff_t>(i + 8) * stride));
    for (u32 i = 0; i < 4; ++i) {
        b[i] = _mm_unpacklo_epi8(a[i], a[i + 4]);     // columns 0 to 3 of rows i, i + 4, i + 8, i + 12
        b[i + 4] = _mm_unpackhi_epi8(a[i], a[i + 4]); // columns 4 to 7
    }
    for (u32 i = 0; i < 2; ++i) {
        c[i] = _mm_unpacklo_epi8(b[i], b[i + 2]);         // columns 0, 1 of the rows with the parity of i
        c[i + 2] = _mm_unpackhi_epi8(b[i], b[i + 2]);     // 2, 3
        c[i + 4] = _mm_unpacklo_epi8(b[i + 4], b[i + 6]); // 4, 5
        c[i + 6] = _mm_unpackhi_epi8(b[i + 4], b[i + 6]); // 6, 7
    }
    EdgeSamples<Words16> s;
    s.p3 = Words16::WidenBytes(_mm_unpacklo_epi8(c[0], c[1]));
    s.p2 = Words16::WidenBytes(_mm_unpackhi_epi8(c[0], c[1]));
    s.p1 = Words16::WidenBytes(_mm_unpacklo_epi8(c[2], c[3]));
    s.p0 = Words16::WidenBytes(_mm_unpackhi_epi8(c[2], c[3]));
    s.q0 = Words16::WidenBytes(_mm_unpacklo_epi8(c[4], c[5]));
    s.q1 = Words16::WidenBytes(_mm_unpackhi_epi8(c[4], c[5]));
    s.q2 = Words16::WidenBytes(_mm_unpacklo_epi8(c[6], c[7]));
    s.q3 = Words16::WidenBytes(_mm_unpackhi_epi8(c[6], c[7]));
    return s;
}

// Stores four rows of four bytes.
inline void StoreFourRows(u8* p, ptrdiff_t stride, __m128i rows) {
    StoreBytes4(p, rows);
    StoreBytes4(p + stride, _mm_srli_si128(rows, 4));
    StoreBytes4(p + 2 * stride, _mm_srli_si128(rows, 8));
    StoreBytes4(p + 3 * stride, _mm_srli_si128(rows, 12));
}

// Four columns of 16 bytes go back as 16 rows of four.
inline void StoreColumns4(u8* p, ptrdiff_t stride, __m128i c0, __m128i c1, __m128i c2, __m128i c3) {
    const __m128i ab = _mm_unpacklo_epi8(c0, c1), AB = _mm_unpackhi_epi8(c0, c1);
    const __m128i cd = _mm_unpacklo_epi8(c2, c3), CD = _mm_unpackhi_epi8(c2, c3);
    StoreFourRows(p, stride, _mm_unpacklo_epi16(ab, cd));
    StoreFourRows(p + 4 * stride, stride, _mm_unpackhi_epi16(ab, cd));
    StoreFourRows(p + 8 * stride, stride, _mm_unpacklo_epi16(AB, CD));
    StoreFourRows(p + 12 * stride, stride, _mm_unpackhi_epi16(AB, CD));
}

void LumaVertical(u8* q0, ptrdiff_t stride, const EdgeFilter& filter) {
    EdgeSamples<Words16> s = LoadColumns16(q0, stride);
    if (FilterNormal<true>(&s, Words16::WidenSegments(filter), filter))
        StoreColumns4(q0 - 2, stride, s.p1.Narrow(), s.p0.Narrow(), s.q0.Narrow(), s.q1.Narrow());
}

void LumaVerticalStrong(u8* q0, ptrdiff_t stride, i32 alpha, i32 beta) {
    EdgeSamples<Words16> s = LoadColumns16(q0, stride);
    if (!FilterStrong<true>(&s, alpha, beta))
        return;
    StoreColumns4(q0 - 4, stride, s.p3.Narrow(), s.p2.Narrow(), s.p1.Narrow(), s.p0.Narrow());
    StoreColumns4(q0, stride, s.q0.Narrow(), s.q1.Narrow(), s.q2.Narrow(), s.q3.Narrow());
}

// 8 rows of 4 bytes, from p1, become 4 vectors of 8.
inline EdgeSamples<Words8> LoadColumns8(const u8* q0, ptrdiff_t stride) {
    const u8* const p1 = q0 - 2;
    __m128i a[4];
    for (u32 i = 0; i < 4; ++i)
        a[i] = _mm_unpacklo_epi8(LoadBytes4(p1 + static_cast<ptrdiff_t>(i) * stride),
                                 LoadBytes4(p1 + static_cast<ptrdiff_t>(i + 4) * stride));
    const __m128i even = _mm_unpacklo_epi8(a[0], a[2]); // rows 0, 2, 4, 6 of each column
    const __m128i odd = _mm_unpacklo_epi8(a[1], a[3]);
    const __m128i p1p0 = _mm_unpacklo_epi8(even, odd), q0q1 = _mm_unpackhi_epi8(even, odd);
    EdgeSamples<Words8> s;
    s.p1 = Words8::WidenBytes(p1p0);
    s.p0 = Words8::WidenBytes(_mm_srli_si128(p1p0, 8));
    s.q0 = Words8::WidenBytes(q0q1);
    s.q1 = Words8::WidenBytes(_mm_srli_si128(q0q1, 8));
    return s;
}

// p0 and q0 go back as eight pairs.
inline void StorePairs8(u8* p0, ptrdiff_t stride, const EdgeSamples<Words8>& s) {
    __m128i pairs = _mm_unpacklo_epi8(s.p0.Narrow(), s.q0.Narrow());
    for (u32 i = 0; i < 8; ++i, p0 += stride) {
        StoreBytes<2>(p0, pairs);
        pairs = _mm_srli_si128(pairs, 2);
    }
}

void ChromaVertical(u8* q0, ptrdiff_t stride, const EdgeFilter& filter) {
    EdgeSamples<Words8> s = LoadColumns8(q0, stride);
    if (FilterNormal<false>(&s, Words8::WidenSegments(filter), filter))
        StorePairs8(q0 - 1, stride, s);
}

void ChromaVerticalStrong(u8* q0, ptrdiff_t stride, i32 alpha, i32 beta) {
    EdgeSamples<Words8> s = LoadColumns8(q0, stride);
    if (FilterStrong<false>(&s, alpha, beta))
        StorePairs8(q0 - 1, stride, s);
}

constexpr SampleRoutines Table = {
    RoutinesName,
    {LumaInter<0, 0>, LumaInter<1, 0>, LumaInter<2, 0>, LumaInter<3, 0>, //
     LumaInter<0, 1>, LumaInter<1, 1>, LumaInter<2, 1>, LumaInter<3, 1>, //
     LumaInter<0, 2>, LumaInter<1, 2>, LumaInter<2, 2>, LumaInter<3, 2>, //
     LumaInter<0, 3>, LumaInter<1, 3>, LumaInter<2, 3>, LumaInter<3, 3>},
    ChromaInter,
    AddResidual,
    AddDcResidual,
    LumaVertical,
    LumaHorizontal,
    ChromaVertical,
    ChromaHorizontal,
    LumaVerticalStrong,
    LumaHorizontalStrong,
    ChromaVerticalStrong,
    ChromaHorizontalStrong,
};
