// The inner loops over samples, as a table of functions: interpolation, residual, deblocking. The plain table
// is the meaning; the others compute the same with vectors and are chosen at run time by what the processor
// can do.
#pragma once

#include "media/h264/types.h"

namespace h264 {

// Deblocking of one edge with bS below 4 (8.7.2.3). An edge is 16 luma or 8 chroma samples long and has four
// segments of equal length.
struct EdgeFilter {
    i32 alpha = 0;
    i32 beta = 0;
    i8 tc0[4] = {}; // t'C0 of each segment, -1: bS is 0 there
};

struct SampleRoutines {
    const char* name;

    // 8.4.2.2.1 Luma sample interpolation. [yFrac * 4 + xFrac]. `src` is the full sample at the block's
    // corner; up to 2 rows and columns before and 3 behind the block are read. Width 4, 8 or 16, height 4, 8
    // or 16.
    using LumaInter = void (*)(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 width,
                               u32 height);
    LumaInter lumaInter[16];

    // 8.4.2.2.2 Chroma sample interpolation, fractions in eighths. One row below and one column right of the
    // block are read. Width and height 2, 4 or 8.
    void (*chromaInter)(u8* dst, ptrdiff_t dstStride, const u8* src, ptrdiff_t srcStride, u32 width,
                        u32 height, u32 xFrac, u32 yFrac);

    // 8.5.12.2 and 8.5.14: transforms 16 scaled coefficients (column by column), adds the residual to the 4x4
    // samples, and leaves the coefficients zero. False if a residual value is outside of -512..511.
    bool (*addResidual)(u8* dst, ptrdiff_t stride, i32* coefficients);
    // The same when only the DC coefficient is set.
    bool (*addDcResidual)(u8* dst, ptrdiff_t stride, i32* coefficients);

    // 8.7.2: filtering across one edge. `q0` is the first sample behind the edge. Vertical edges run down,
    // with the samples p3..q3 in a row; horizontal edges run to the right.
    using NormalFilter = void (*)(u8* q0, ptrdiff_t stride, const EdgeFilter& filter);
    using StrongFilter = void (*)(u8* q0, ptrdiff_t stride, i32 alpha, i32 beta); // bS 4
    NormalFilter lumaVertical, lumaHorizontal, chromaVertical, chromaHorizontal;
    StrongFilter lumaVerticalStrong, lumaHorizontalStrong, chromaVerticalStrong, chromaHorizontalStrong;
};

constexpr i32 MinResidual = -512;
constexpr i32 MaxResidual = 511;

// Portable code, no assumption about the processor.
const SampleRoutines& PlainRoutines();
// Vector code; null where the processor or the compiler cannot do it.
const SampleRoutines* Sse2Routines();
const SampleRoutines* Avx2Routines();

// The best of them for this processor.
const SampleRoutines& BestRoutines();

} // namespace h264
