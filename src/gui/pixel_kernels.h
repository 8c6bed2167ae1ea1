// The loops of gui/pixel_ops.h, written once over a vector register type and compiled once for each
// instruction set.
//
// Included by pixel_ops.cpp (no vectors), pixel_ops_sse2.cpp and pixel_ops_avx2.cpp only. Everything stands
// in an anonymous namespace: each of these files is compiled for another processor, so that no function of
// one may stand in for its namesake of another.
//
// Arithmetic. A channel product s * a + d * (255 - a) is at most 255 * 255 = 65,025 and fits an unsigned
// 16-bit lane. x / 255 truncated equals (x * 0x8081) >> 23 for all x below 65,536, which is a high
// multiplication and a shift by 7; x / 100 truncated equals (x * 5243) >> 19 for all x up to 29,325 = 255 *
// 115. Both are tried for every x in tests/gui/pixel_ops_test.cpp.
#pragma once

#include "gui/pixel_ops.h"

#include <type_traits>

namespace {

using pixelops::BlendPixel;
using pixelops::kCoverageBoostPercent;
using pixelops::kInvisibleAlpha;
using pixelops::kSolidAlpha;
using pixelops::kSolidCoverage;

constexpr uint32_t kRgbMask = 0x00FFFFFFU;
constexpr uint32_t kAlphaMask = 0xFF000000U;

// --- One pixel: the ends of rows, and whole rows where there are no vectors ----

struct MonoInk {
    uint32_t color;
    uint32_t alpha; // 1..255; a colour with alpha 0 counts as one that gave no alpha

    explicit MonoInk(uint32_t c) : color(c), alpha(c >> 24 == 0 ? 255 : c >> 24) {}
};

inline uint32_t InkedCoverage(uint32_t coverage, const MonoInk& ink) {
    // Below 4 the boost changes nothing: 3 * 115 / 100 is 3.
    const uint32_t boosted = coverage * kCoverageBoostPercent / 100;
    const uint32_t limited = boosted > 255 ? 255 : boosted;
    return ink.alpha == 255 ? limited : (ink.alpha * limited + 127) / 255;
}

inline void MonoPixel(uint32_t& dst, uint8_t coverage, const MonoInk& ink) {
    const uint32_t c = InkedCoverage(coverage, ink);
    if (c >= kSolidCoverage)
        dst = ink.color;
    else if (c > kInvisibleAlpha)
        dst = BlendPixel(dst, ink.color, c);
}

inline void StorePixel(uint32_t& dst, uint32_t src) {
    const uint32_t a = src >> 24;
    if (a >= kSolidAlpha)
        dst = src;
    else if (a > kInvisibleAlpha)
        dst = BlendPixel(dst, src, a);
}

inline void GradientPixel(uint32_t& dst, uint32_t src) {
    const uint32_t a = src >> 24;
    dst = a == 255 ? src : BlendPixel(dst, src, a);
}

inline void TintPixel(uint32_t& dst, uint32_t src, uint32_t color, uint32_t a) {
    const uint32_t s = src >> 24;
    if (s > kInvisibleAlpha)
        dst = BlendPixel(dst, color, a * s / 255);
}

// --- Whole registers ----

// V is a vector type with the operations used below on V::kPixels pixels. "16" and "32" name the lane width.
template <class V>
struct Kernels {
    using Reg = typename V::Reg;

    // x / 255 in each 16-bit lane, truncated.
    static Reg DivideBy255(Reg x) { return V::Shr16(V::MulHigh16(x, V::Set16(0x8081)), 7); }

    static Reg KeepAlpha(Reg blended, Reg dst) {
        return V::Or(V::And(blended, V::Set32(kRgbMask)), V::And(dst, V::Set32(kAlphaMask)));
    }

    static Reg MixHalf(Reg s, Reg d, Reg a) {
        const Reg rest = V::Sub16(V::Set16(255), a);
        return DivideBy255(V::Add16(V::Mul16(s, a), V::Mul16(d, rest)));
    }

    // Blends s over d with the alpha that stands in each 32-bit lane of `a`, 0..255.
    static Reg Mix(Reg d, Reg s, Reg a) {
        const Reg zero = V::Zero();
        const Reg pairs = V::Or(a, V::Shl32(a, 16));
        const Reg low = MixHalf(V::UnpackLow8(s, zero), V::UnpackLow8(d, zero), V::UnpackLow32(pairs, pairs));
        const Reg high =
            MixHalf(V::UnpackHigh8(s, zero), V::UnpackHigh8(d, zero), V::UnpackHigh32(pairs, pairs));
        return KeepAlpha(V::Pack16(low, high), d);
    }

    // Stores s where a reaches `solid`, the blend where it is above kInvisibleAlpha, and leaves the rest
    // alone.
    static void StoreByAlpha(uint32_t* dst, Reg s, Reg a, uint32_t solid) {
        const Reg whole = V::Greater32(a, V::Set32(solid - 1));
        if (V::AllSet(whole)) {
            V::Store(dst, s);
            return;
        }
        const Reg visible = V::Greater32(a, V::Set32(kInvisibleAlpha));
        if (V::NoneSet(visible))
            return;
        const Reg d = V::Load(dst);
        V::Store(dst, V::Select(whole, s, Mix(d, s, V::And(visible, a)))); // Alpha 0 leaves d as it is.
    }

    // Stores across the border of a cache line cost twice: the first and the last register may overlap
    // others, those between are aligned.
    static void Fill(uint32_t* dst, size_t count, uint32_t color) {
        if (count < V::kPixels) {
            for (size_t i = 0; i < count; i++)
                dst[i] = color;
            return;
        }
        const Reg c = V::Set32(color);
        uint32_t* const end = dst + count;
        V::Store(dst, c);
        dst += V::kPixels - reinterpret_cast<uintptr_t>(dst) / sizeof(uint32_t) % V::kPixels;
        for (; dst + 4 * V::kPixels <= end; dst += 4 * V::kPixels) {
            V::Store(dst, c);
            V::Store(dst + V::kPixels, c);
            V::Store(dst + 2 * V::kPixels, c);
            V::Store(dst + 3 * V::kPixels, c);
        }
        for (; dst + V::kPixels <= end; dst += V::kPixels)
            V::Store(dst, c);
        V::Store(end - V::kPixels, c);
    }

    static void BlendColor(uint32_t* dst, size_t count, uint32_t color, uint32_t a) {
        const Reg zero = V::Zero();
        const Reg source = V::Mul16(V::UnpackLow8(V::Set32(color), zero), V::Set16(static_cast<uint16_t>(a)));
        const Reg rest = V::Set16(static_cast<uint16_t>(255 - a));
        size_t i = 0;
        for (; i + V::kPixels <= count; i += V::kPixels) {
            const Reg d = V::Load(dst + i);
            const Reg low = DivideBy255(V::Add16(source, V::Mul16(V::UnpackLow8(d, zero), rest)));
            const Reg high = DivideBy255(V::Add16(source, V::Mul16(V::UnpackHigh8(d, zero), rest)));
            V::Store(dst + i, KeepAlpha(V::Pack16(low, high), d));
        }
        for (; i < count; i++)
            dst[i] = BlendPixel(dst[i], color, a);
    }

    static void BlendColors(uint32_t* dst, const uint32_t* src, size_t count) {
        size_t i = 0;
        for (; i + V::kPixels <= count; i += V::kPixels) {
            const Reg s = V::Load(src + i);
            const Reg d = V::Load(dst + i);
            const Reg a = V::Shr32(s, 24);
            const Reg whole = V::Greater32(a, V::Set32(254));
            V::Store(dst + i, V::Select(whole, s, Mix(d, s, a)));
        }
        for (; i < count; i++)
            GradientPixel(dst[i], src[i]);
    }

    static void BlendRow(uint32_t* dst, const uint32_t* src, size_t count) {
        size_t i = 0;
        for (; i + V::kPixels <= count; i += V::kPixels) {
            const Reg s = V::Load(src + i);
            StoreByAlpha(dst + i, s, V::Shr32(s, 24), kSolidAlpha);
        }
        for (; i < count; i++)
            StorePixel(dst[i], src[i]);
    }

    static bool IsSolidRow(const uint32_t* src, size_t count) {
        const Reg limit = V::Set32(kSolidAlpha - 1);
        size_t i = 0;
        for (; i + V::kPixels <= count; i += V::kPixels) {
            if (!V::AllSet(V::Greater32(V::Shr32(V::Load(src + i), 24), limit)))
                return false;
        }
        for (; i < count; i++) {
            if (src[i] >> 24 < kSolidAlpha)
                return false;
        }
        return true;
    }

    // What a colour makes of coverage, for V::kPixels pixels at a time.
    struct InkReg {
        explicit InkReg(uint32_t color)
            : ink(color), source(V::Set32(color)), alpha(V::Set16(static_cast<uint16_t>(ink.alpha))) {}

        // Coverage in 32-bit lanes to the value that decides about the pixel. The upper halves of the lanes
        // end up as 127 / 255 = 0 where the alpha counts.
        Reg Apply(Reg coverage) const {
            const Reg product = V::Mul16(coverage, V::Set16(kCoverageBoostPercent));
            const Reg boosted = V::Min16(V::Shr16(V::MulHigh16(product, V::Set16(5243)), 3), V::Set16(255));
            if (ink.alpha == 255)
                return boosted;
            return DivideBy255(V::Add16(V::Mul16(boosted, alpha), V::Set16(127)));
        }

        MonoInk ink;
        Reg source;
        Reg alpha;
    };

    // Glyphs mix empty, full and half pixels without order: one branch for the empty ones, none for the
    // others.
    static void InkPixels(uint32_t* dst, typename V::Bytes coverage, const InkReg& ink) {
        if (V::AreZero(coverage))
            return;
        const Reg c = ink.Apply(V::Widen(coverage));
        const Reg d = V::Load(dst);
        const Reg whole = V::Greater32(c, V::Set32(kSolidCoverage - 1));
        const Reg visible = V::Greater32(c, V::Set32(kInvisibleAlpha));
        V::Store(dst, V::Select(whole, ink.source, Mix(d, ink.source, V::And(visible, c))));
    }

    static void InkNarrowRow(uint32_t* dst, const uint8_t* coverage, size_t width, const MonoInk& ink) {
        for (size_t i = 0; i < width; i++)
            MonoPixel(dst[i], coverage[i], ink);
    }

    // A rest that is narrower than a register is painted by the register that ends with the row; what it
    // covers twice is taken out of its coverage.
    static void InkWideRow(uint32_t* dst, const uint8_t* coverage, size_t width, const InkReg& ink) {
        size_t i = 0;
        for (; i + V::kPixels <= width; i += V::kPixels)
            InkPixels(dst + i, V::LoadBytes(coverage + i), ink);
        if (i < width) {
            const size_t last = width - V::kPixels;
            InkPixels(dst + last, V::WithoutFirst(V::LoadBytes(coverage + last), i - last), ink);
        }
    }

    static void BlendMono(const pixelops::CoverageBlock& block, uint32_t color) {
        if constexpr (!std::is_same_v<V, typename V::Narrower>) {
            if (block.width < V::kPixels) {
                Kernels<typename V::Narrower>::BlendMono(block, color);
                return;
            }
        }
        const InkReg ink(color);
        uint32_t* dst = block.dst;
        const uint8_t* coverage = block.coverage;
        for (size_t y = 0; y < block.height; y++, dst += block.dstStride, coverage += block.coverageStride) {
            if (block.width < V::kPixels)
                InkNarrowRow(dst, coverage, block.width, ink.ink);
            else
                InkWideRow(dst, coverage, block.width, ink);
        }
    }

    static void BlendTint(uint32_t* dst, const uint32_t* src, size_t count, uint32_t color, uint32_t a) {
        const Reg s = V::Set32(color);
        const Reg alpha = V::Set16(static_cast<uint16_t>(a));
        size_t i = 0;
        for (; i + V::kPixels <= count; i += V::kPixels) {
            const Reg coverage = V::Shr32(V::Load(src + i), 24);
            const Reg visible = V::Greater32(coverage, V::Set32(kInvisibleAlpha));
            if (V::NoneSet(visible))
                continue;
            const Reg opacity = DivideBy255(V::Mul16(coverage, alpha));
            V::Store(dst + i, Mix(V::Load(dst + i), s, V::And(visible, opacity)));
        }
        for (; i < count; i++)
            TintPixel(dst[i], src[i], color, a);
    }

    static constexpr pixelops::Loops Table(const char* name) {
        return {name, Fill, BlendColor, BlendColors, BlendRow, IsSolidRow, BlendMono, BlendTint};
    }
};

} // namespace
