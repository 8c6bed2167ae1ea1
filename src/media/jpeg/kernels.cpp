// The plain routines, and the choice between them and the vector routines.
#include "media/jpeg/kernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

#define WALLSLATE_LANES_TARGET
#include "media/jpeg/inverse_pass.h"
#include "media/jpeg/kernels_avx2.h"

namespace jpeg {

namespace {

struct ScalarLanes {
    using Vector = float;
};

// Truncation stands for rounding, as the half was added; what truncation does to negative values is cut
// anyway.
uint8_t ToSample(float value) {
    return static_cast<uint8_t>(std::clamp(static_cast<int32_t>(value), 0, 255));
}

float Dequantised(const int16_t* coefficients, const uint32_t* table, uint32_t at) {
    return static_cast<float>(coefficients[at]) * (static_cast<float>(table[at]) * kTableStep);
}

// The coefficients of vertical frequency v to the points of a row. Most rows hold nothing but the first
// coefficient, which then is every point.
void InverseRow(const int16_t* coefficients, const uint32_t* table, uint32_t v, float* row) {
    row[0] = Dequantised(coefficients, table, v) + (v == 0 ? kLevelShift : 0.0F);
    int32_t others = 0;
    for (uint32_t u = 1; u < kBlockEdge; ++u)
        others |= coefficients[u * kBlockEdge + v];
    if (others == 0) {
        std::fill_n(row + 1, kBlockEdge - 1, row[0]);
        return;
    }
    for (uint32_t u = 1; u < kBlockEdge; ++u)
        row[u] = Dequantised(coefficients, table, u * kBlockEdge + v);
    InversePass<ScalarLanes>(row);
}

void InverseDctPlain(const int16_t* coefficients, const uint32_t* table, uint8_t* samples) {
    float work[kBlockSize]; // [row][column]
    float line[kBlockEdge];
    for (uint32_t v = 0; v < kBlockEdge; ++v)
        InverseRow(coefficients, table, v, work + v * kBlockEdge);
    for (uint32_t x = 0; x < kBlockEdge; ++x) {
        for (uint32_t v = 0; v < kBlockEdge; ++v)
            line[v] = work[v * kBlockEdge + x];
        InversePass<ScalarLanes>(line);
        for (uint32_t y = 0; y < kBlockEdge; ++y)
            samples[y * kBlockEdge + x] = ToSample(line[y]);
    }
}

// What a pair of chroma samples adds to the luma of its pixels.
struct ChromaShift {
    int32_t blue, green, red;
};

ChromaShift ShiftOf(uint8_t cb, uint8_t cr) {
    return {(cb - 128) * 1814 / 1024, -((352 * cb - 138624 + 731 * cr) / 1024), (cr - 128) * 1435 / 1024};
}

// Limits a channel to 0..255. The largest shift is that of blue, -226..224.
struct ChannelLimit {
    static constexpr int32_t kReach = 256;
    uint8_t limited[3 * kReach]; // [value + kReach]

    constexpr ChannelLimit() : limited{} {
        for (int32_t i = 0; i < 3 * kReach; ++i)
            limited[i] = static_cast<uint8_t>(std::clamp(i - kReach, 0, 255));
    }
    uint8_t operator()(int32_t value) const { return limited[value + kReach]; }
};

constexpr ChannelLimit kLimit;

inline void WritePixel(uint8_t* pixel, uint8_t y, const ChromaShift& shift) {
    pixel[0] = kLimit(y + shift.blue);
    pixel[1] = kLimit(y + shift.green);
    pixel[2] = kLimit(y + shift.red);
}

// Half a row of chroma or a whole one, for the 8 pixels of one luma block in each of down rows.
template <uint32_t across, uint32_t down>
void ConvertRows(const uint8_t* luma, const uint8_t* cb, const uint8_t* cr, uint8_t* target, size_t pitch) {
    for (uint32_t x = 0; x < kBlockEdge; x += across) {
        const ChromaShift shift = ShiftOf(cb[x / across], cr[x / across]);
        for (uint32_t j = 0; j < down; ++j)
            for (uint32_t i = 0; i < across; ++i)
                WritePixel(target + j * pitch + (x + i) * kBytesPerPixel, luma[j * kBlockEdge + x + i],
                           shift);
    }
}

template <uint32_t across, uint32_t down>
void ConvertShape(const uint8_t* blocks, uint8_t* target, size_t pitch) {
    const uint8_t* cb = blocks + across * down * kBlockSize;
    for (uint32_t y = 0; y < down * kBlockEdge; y += down, target += down * pitch) {
        const uint8_t* luma = blocks + (y / kBlockEdge * across * kBlockEdge + y % kBlockEdge) * kBlockEdge;
        for (uint32_t i = 0; i < across; ++i) {
            const uint8_t* chroma = cb + y / down * kBlockEdge + i * (kBlockEdge / across);
            ConvertRows<across, down>(luma + i * kBlockSize, chroma, chroma + kBlockSize,
                                      target + i * kBlockEdge * kBytesPerPixel, pitch);
        }
    }
}

void ConvertMcuPlain(const uint8_t* blocks, McuShape shape, uint8_t* target, size_t pitch) {
    if (shape.down == 2)
        ConvertShape<2, 2>(blocks, target, pitch);
    else if (shape.across == 2)
        ConvertShape<2, 1>(blocks, target, pitch);
    else
        ConvertShape<1, 1>(blocks, target, pitch);
}

} // namespace

const Kernels& PlainKernels() {
    static constexpr Kernels kernels{InverseDctPlain, ConvertMcuPlain};
    return kernels;
}

const Kernels* VectorKernels() {
#ifdef WALLSLATE_JPEG_AVX2
    static constexpr Kernels kernels{InverseDctAvx2, ConvertMcuAvx2};
    return __builtin_cpu_supports("avx2") ? &kernels : nullptr;
#else
    return nullptr;
#endif
}

const Kernels& BestKernels() {
    const Kernels* vector = VectorKernels();
    return vector ? *vector : PlainKernels();
}

void FlatBlock(int32_t dc, const uint32_t* table, uint8_t* samples) {
    const float value = static_cast<float>(dc) * (static_cast<float>(table[0]) * kTableStep) + kLevelShift;
    std::memset(samples, ToSample(value), kBlockSize);
}

// 1 for frequency 0, otherwise sqrt(2) cos(k pi / 16).
double TransformScale(uint32_t u, uint32_t v) {
    const auto factor = [](uint32_t k) {
        return k == 0 ? 1.0 : std::numbers::sqrt2 * std::cos(k * std::numbers::pi / 16);
    };
    return factor(u) * factor(v);
}

void ConvertPixel(uint8_t y, uint8_t cb, uint8_t cr, uint8_t* pixel) {
    WritePixel(pixel, y, ShiftOf(cb, cr));
}

} // namespace jpeg
