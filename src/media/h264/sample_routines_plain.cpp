// The sample routines in plain integer code. Sections: luma interpolation, chroma interpolation, residual,
// deblocking.
#include "media/h264/sample_routines.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace h264 {

namespace {

constexpr ptrdiff_t BlockStride = 16; // of intermediate blocks

u8 Clip1(i32 value) {
    return static_cast<u8>(std::clamp(value, 0, 255));
}

u8 Average(u8 a, u8 b) {
    return static_cast<u8>((a + b + 1) >> 1);
}

// ---- 8.4.2.2.1 Luma sample interpolation ----

// The six taps 1, -5, 20, 20, -5, 1 around the half position behind `p`.
template <class Sample>
i32 SixTap(const Sample* p, ptrdiff_t step) {
    return p[-2 * step] - 5 * p[-step] + 20 * p[0] + 20 * p[step] - 5 * p[2 * step] + p[3 * step];
}

void CopyBlock(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 width, u32 height) {
    for (u32 y = 0; y < height; ++y, dst += dstStride, src += srcStride)
        std::memcpy(dst, src, width);
}

// Half samples between horizontal (step 1: b, s) or vertical (step = stride: h, m) neighbours.
void HalfSamples(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 width, u32 height,
                 ptrdiff_t step) {
    for (u32 y = 0; y < height; ++y, dst += dstStride, src += srcStride) {
        for (u32 x = 0; x < width; ++x)
            dst[x] = Clip1((SixTap(src + x, step) + 16) >> 5);
    }
}

// j: first across, unrounded, for all rows that the taps down reach, then down.
void CentreSamples(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 width, u32 height) {
    constexpr u32 RowsAbove = 2;
    constexpr u32 RowsBelow = 3;
    i32 across[(16 + RowsAbove + RowsBelow) * BlockStride];
    const u8* row = src - RowsAbove * srcStride;
    for (u32 y = 0; y < height + RowsAbove + RowsBelow; ++y, row += srcStride) {
        for (u32 x = 0; x < width; ++x)
            across[y * BlockStride + x] = SixTap(row + x, 1);
    }
    for (u32 y = 0; y < height; ++y, dst += dstStride) {
        const i32* line = across + (y + RowsAbove) * BlockStride;
        for (u32 x = 0; x < width; ++x)
            dst[x] = Clip1((SixTap(line + x, BlockStride) + 512) >> 10);
    }
}

void AverageBlock(u8* dst, ptrdiff_t dstStride, const u8* a, ptrdiff_t aStride, const u8* b,
                  ptrdiff_t bStride, u32 width, u32 height) {
    for (u32 y = 0; y < height; ++y, dst += dstStride, a += aStride, b += bStride) {
        for (u32 x = 0; x < width; ++x)
            dst[x] = Average(a[x], b[x]);
    }
}

// Figure 8-4: a quarter position lies between two of these. `Right` and `Below` are the neighbours one full
// sample on.
template <u32 xFrac, u32 yFrac>
void LumaInter(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 width, u32 height) {
    const u8* const right = src + 1;
    const u8* const below = src + srcStride;
    if constexpr (xFrac == 0 && yFrac == 0) {
        CopyBlock(dst, dstStride, src, srcStride, width, height);
    } else if constexpr (yFrac == 0) { // a, b, c
        HalfSamples(dst, dstStride, src, srcStride, width, height, 1);
        if constexpr (xFrac != 2)
            AverageBlock(dst, dstStride, dst, dstStride, xFrac == 3 ? right : src, srcStride, width, height);
    } else if constexpr (xFrac == 0) { // d, h, n
        HalfSamples(dst, dstStride, src, srcStride, width, height, srcStride);
        if constexpr (yFrac != 2)
            AverageBlock(dst, dstStride, dst, dstStride, yFrac == 3 ? below : src, srcStride, width, height);
    } else {
        u8 other[16 * BlockStride];
        if constexpr (xFrac == 2 || yFrac == 2)
            CentreSamples(dst, dstStride, src, srcStride, width, height); // f, i, j, k, q
        else
            HalfSamples(dst, dstStride, yFrac == 3 ? below : src, srcStride, width, height, 1); // e, g, p, r
        if constexpr (xFrac == 2 && yFrac == 2)
            return;
        if constexpr (xFrac == 2)
            HalfSamples(other, BlockStride, yFrac == 3 ? below : src, srcStride, width, height, 1);
        else
            HalfSamples(other, BlockStride, xFrac == 3 ? right : src, srcStride, width, height, srcStride);
        AverageBlock(dst, dstStride, dst, dstStride, other, BlockStride, width, height);
    }
}

// ---- 8.4.2.2.2 Chroma sample interpolation ----

void ChromaInter(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 width, u32 height,
                 u32 xFrac, u32 yFrac) {
    const u32 a = (8 - xFrac) * (8 - yFrac);
    const u32 b = xFrac * (8 - yFrac);
    const u32 c = (8 - xFrac) * yFrac;
    const u32 d = xFrac * yFrac;
    for (u32 y = 0; y < height; ++y, dst += dstStride, src += srcStride) {
        const u8* below = src + srcStride;
        for (u32 x = 0; x < width; ++x)
            dst[x] =
                static_cast<u8>((a * src[x] + b * src[x + 1] + c * below[x] + d * below[x + 1] + 32) >> 6);
    }
}

// ---- 8.5.12.2 Residual ----

bool InResidualRange(i32 value) {
    return value >= MinResidual && value <= MaxResidual;
}

// One dimension of the inverse transform, in place over four values `step` apart.
void Transform1d(i32* v, ptrdiff_t step) {
    const i32 e = v[0] + v[2 * step];
    const i32 f = v[0] - v[2 * step];
    const i32 g = (v[step] >> 1) - v[3 * step];
    const i32 h = v[step] + (v[3 * step] >> 1);
    v[0] = e + h;
    v[step] = f + g;
    v[2 * step] = f - g;
    v[3 * step] = e - h;
}

// Coefficients lie column by column: the row of the matrix runs over every fourth value.
bool AddResidual(u8* dst, ptrdiff_t stride, i32* coefficients) {
    for (u32 row = 0; row < 4; ++row)
        Transform1d(coefficients + row, 4);
    bool inRange = true;
    for (u32 x = 0; x < 4; ++x) {
        i32* column = coefficients + x * 4;
        Transform1d(column, 1);
        for (u32 y = 0; y < 4; ++y) {
            const i32 residual = (column[y] + 32) >> 6;
            inRange &= InResidualRange(residual);
            u8& sample = dst[static_cast<ptrdiff_t>(y) * stride + x];
            sample = Clip1(sample + residual);
        }
    }
    std::memset(coefficients, 0, 16 * sizeof *coefficients);
    return inRange;
}

bool AddDcResidual(u8* dst, ptrdiff_t stride, i32* coefficients) {
    const i32 residual = (coefficients[0] + 32) >> 6;
    coefficients[0] = 0;
    for (u32 y = 0; y < 4; ++y, dst += stride) {
        for (u32 x = 0; x < 4; ++x)
            dst[x] = Clip1(dst[x] + residual);
    }
    return InResidualRange(residual);
}

// ---- 8.7.2 Deblocking ----

// 8.7.2.2, filterSamplesFlag without the bS: is this step small enough to be an artefact? `s` is the step across the
// edge.
bool FilterSamples(const u8* q, ptrdiff_t s, i32 alpha, i32 beta) {
    return std::abs(q[-s] - q[0]) < alpha && std::abs(q[-2 * s] - q[-s]) < beta &&
           std::abs(q[s] - q[0]) < beta;
}

// 8.7.2.3, bS below 4
template <bool IsLuma>
void FilterNormal(u8* q, ptrdiff_t s, i32 beta, i32 tc0) {
    const i32 p0 = q[-s], p1 = q[-2 * s], q0 = q[0], q1 = q[s];
    i32 tc = tc0 + 1;
    if constexpr (IsLuma) {
        const i32 p2 = q[-3 * s], q2 = q[2 * s];
        const bool smoothP = std::abs(p2 - p0) < beta;
        const bool smoothQ = std::abs(q2 - q0) < beta;
        tc = tc0 + smoothP + smoothQ;
        const i32 middle = (p0 + q0 + 1) >> 1;
        if (smoothP)
            q[-2 * s] = static_cast<u8>(p1 + std::clamp((p2 + middle - 2 * p1) >> 1, -tc0, tc0));
        if (smoothQ)
            q[s] = static_cast<u8>(q1 + std::clamp((q2 + middle - 2 * q1) >> 1, -tc0, tc0));
    }
    const i32 delta = std::clamp(((q0 - p0) * 4 + (p1 - q1) + 4) >> 3, -tc, tc);
    q[-s] = Clip1(p0 + delta);
    q[0] = Clip1(q0 - delta);
}

// 8.7.2.4, bS 4, the side of `q[0]`; `s` points away from the edge.
template <bool IsLuma>
void FilterStrongSide(u8* q, ptrdiff_t s, i32 p1, i32 p0, bool smallStep, i32 beta) {
    const i32 q0 = q[0], q1 = q[s];
    if constexpr (IsLuma) {
        const i32 q2 = q[2 * s];
        if (smallStep && std::abs(q2 - q0) < beta) {
            const i32 q3 = q[3 * s];
            q[0] = static_cast<u8>((p1 + 2 * p0 + 2 * q0 + 2 * q1 + q2 + 4) >> 3);
            q[s] = static_cast<u8>((p0 + q0 + q1 + q2 + 2) >> 2);
            q[2 * s] = static_cast<u8>((2 * q3 + 3 * q2 + q1 + q0 + p0 + 4) >> 3);
            return;
        }
    }
    q[0] = static_cast<u8>((2 * q1 + q0 + p1 + 2) >> 2);
}

// `across` is the step across the edge, `along` the one to the edge's next sample.
template <bool IsLuma>
void NormalEdge(u8* q, ptrdiff_t across, ptrdiff_t along, const EdgeFilter& filter) {
    constexpr u32 SegmentLength = IsLuma ? 4 : 2;
    for (i8 tc0 : filter.tc0) {
        for (u32 i = 0; i < SegmentLength; ++i, q += along) {
            if (tc0 >= 0 && FilterSamples(q, across, filter.alpha, filter.beta))
                FilterNormal<IsLuma>(q, across, filter.beta, tc0);
        }
    }
}

template <bool IsLuma>
void StrongEdge(u8* q, ptrdiff_t across, ptrdiff_t along, i32 alpha, i32 beta) {
    constexpr u32 EdgeLength = IsLuma ? 16 : 8;
    for (u32 i = 0; i < EdgeLength; ++i, q += along) {
        if (!FilterSamples(q, across, alpha, beta))
            continue;
        const i32 p0 = q[-across], p1 = q[-2 * across], q0 = q[0], q1 = q[across];
        const bool smallStep = std::abs(p0 - q0) < (alpha >> 2) + 2;
        FilterStrongSide<IsLuma>(q, across, p1, p0, smallStep, beta);
        FilterStrongSide<IsLuma>(q - across, -across, q1, q0, smallStep, beta);
    }
}

template <bool IsLuma>
void VerticalEdge(u8* q0, ptrdiff_t stride, const EdgeFilter& filter) {
    NormalEdge<IsLuma>(q0, 1, stride, filter);
}
template <bool IsLuma>
void HorizontalEdge(u8* q0, ptrdiff_t stride, const EdgeFilter& filter) {
    NormalEdge<IsLuma>(q0, stride, 1, filter);
}
template <bool IsLuma>
void VerticalEdgeStrong(u8* q0, ptrdiff_t stride, i32 alpha, i32 beta) {
    StrongEdge<IsLuma>(q0, 1, stride, alpha, beta);
}
template <bool IsLuma>
void HorizontalEdgeStrong(u8* q0, ptrdiff_t stride, i32 alpha, i32 beta) {
    StrongEdge<IsLuma>(q0, stride, 1, alpha, beta);
}

constexpr SampleRoutines Plain = {
    "plain",
    {LumaInter<0, 0>, LumaInter<1, 0>, LumaInter<2, 0>, LumaInter<3, 0>, //
     LumaInter<0, 1>, LumaInter<1, 1>, LumaInter<2, 1>, LumaInter<3, 1>, //
     LumaInter<0, 2>, LumaInter<1, 2>, LumaInter<2, 2>, LumaInter<3, 2>, //
     LumaInter<0, 3>, LumaInter<1, 3>, LumaInter<2, 3>, LumaInter<3, 3>},
    ChromaInter,
    AddResidual,
    AddDcResidual,
    VerticalEdge<true>,
    HorizontalEdge<true>,
    VerticalEdge<false>,
    HorizontalEdge<false>,
    VerticalEdgeStrong<true>,
    HorizontalEdgeStrong<true>,
    VerticalEdgeStrong<false>,
    HorizontalEdgeStrong<false>,
};

} // namespace

const SampleRoutines& PlainRoutines() {
    return Plain;
}

} // namespace h264
