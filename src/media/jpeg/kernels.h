// The two inner loops of the decoder, inverse transform and colour conversion, each as a plain routine and,
// where the processor has AVX2, as a vector routine that gives the same bytes. Which pair runs is decided at
// run time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace jpeg {

inline constexpr uint32_t kBlockEdge = 8;
inline constexpr uint32_t kBlockSize = 64;    // samples or coefficients
inline constexpr uint32_t kBytesPerPixel = 3; // blue, green, red
inline constexpr uint32_t kQuantFractionBits = 13;

// Blocks of luma in an MCU; one block of Cb and one of Cr follow them.
struct McuShape {
    uint32_t across = 1; // 1..2
    uint32_t down = 1;   // 1..2, never 2 with across 1
    uint32_t LumaBlocks() const { return across * down; }
    uint32_t Blocks() const { return LumaBlocks() + 2; }
    uint32_t Width() const { return across * kBlockEdge; }
    uint32_t Height() const { return down * kBlockEdge; }
};

// One block back to samples. Coefficients and table lie column by column: entry u * 8 + v has the horizontal
// frequency u and the vertical frequency v. The table holds the quantisation step times the scale factors of
// the fast transform, 19.13. samples: 64 bytes row by row, rounded to nearest, with the level shift, limited
// to 0..255.
using InverseDctFn = void (*)(const int16_t* coefficients, const uint32_t* table, uint8_t* samples);

// One whole MCU from its sample blocks to pixels. pitch: bytes from one row of target to the next.
using ConvertMcuFn = void (*)(const uint8_t* blocks, McuShape shape, uint8_t* target, size_t pitch);

struct Kernels {
    InverseDctFn inverseDct = nullptr;
    ConvertMcuFn convertMcu = nullptr;
};

const Kernels& PlainKernels();

// Null on a processor without AVX2, or where no vector routines are built.
const Kernels* VectorKernels();

const Kernels& BestKernels();

// A block of which only the DC coefficient is not 0; equals what inverseDct gives.
void FlatBlock(int32_t dc, const uint32_t* table, uint8_t* samples);

// The scale factor of the fast transform at (u, v): what its butterflies leave to the table.
double TransformScale(uint32_t u, uint32_t v);

// One pixel by the integer formulas, blue, green, red.
void ConvertPixel(uint8_t y, uint8_t cb, uint8_t cr, uint8_t* pixel);

} // namespace jpeg
