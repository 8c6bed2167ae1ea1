// The vector form of the colour conversion, written once over a register type and compiled once for each
// instruction set, by colour_convert_sse2.cpp and colour_convert_avx2.cpp only.
//
// Everything stands in an anonymous namespace: each of these files is compiled for another processor, so that no
// function of one may stand in for its namesake of another.
//
// A register holds the samples of one row as signed words. Truncating towards zero is rounding down and one more
// where the value is negative; no product but that of 0 is whole.
#pragma once

#include "media/colour_convert.h"

namespace {

// A factor as its nearest whole number and 65,536ths of the rest, for which a multiplication that keeps the high word
// rounds down as the exact product does, on all the values that can occur.
struct Factor {
    int16_t whole; // 0, 1 or 2
    int16_t rest;

    // The product as the registers compute it.
    constexpr int Times(int value) const {
        return whole * value + ((value * rest) >> 16) + (value < 0 ? 1 : 0);
    }
    constexpr bool IsExact(int thousandths, int from, int to) const {
        for (int value = from; value <= to; value++) {
            if (Times(value) != thousandths * value / 1000)
                return false;
        }
        return true;
    }
};

constexpr Factor kLight = {1, 10748};
constexpr Factor kRedOfCr = {2, -26476};
constexpr Factor kGreenOfCb = {0, 25625};  // taken off
constexpr Factor kGreenOfCr = {1, -12256}; // taken off
constexpr Factor kBlueOfCb = {2, 1180};
static_assert(kLight.IsExact(1164, -16, 239) && kRedOfCr.IsExact(1596, -128, 127) &&
              kGreenOfCb.IsExact(391, -128, 127) && kGreenOfCr.IsExact(813, -128, 127) &&
              kBlueOfCb.IsExact(2018, -128, 127));

template <class V>
class Kernels {
public:
    static constexpr colour::Routines Table(const char* name) {
        return {name, Convert<colour::Scale::Same>, Convert<colour::Scale::Doubled>};
    }

private:
    using Reg = typename V::Reg;

    struct Tint {
        Reg red, green, blue;
    };

    template <Factor factor>
    static Reg Product(Reg value) {
        const Reg down = V::Add16(Whole<factor.whole>(value), V::MulHigh16(value, V::Set16(factor.rest)));
        return V::Sub16(down, V::Sign16(value)); // -1 where the value is negative
    }
    template <int factor>
    static Reg Whole(Reg value) {
        static_assert(factor >= 0 && factor <= 2);
        if constexpr (factor == 0)
            return V::Zero();
        else
            return factor == 1 ? value : V::Add16(value, value);
    }

    static Tint LoadTint(const uint8_t* cbSamples, const uint8_t* crSamples) {
        const Reg noColour = V::Set16(128);
        const Reg cb = V::Sub16(V::WidenTwice(cbSamples), noColour);
        const Reg cr = V::Sub16(V::WidenTwice(crSamples), noColour);
        const Reg notGreen = V::Add16(Product<kGreenOfCb>(cb), Product<kGreenOfCr>(cr));
        return {Product<kRedOfCr>(cr), V::Sub16(V::Zero(), notGreen), Product<kBlueOfCb>(cb)};
    }

    // In each lane of the registers: blue and red, green and alpha as bytes, then the bytes of whole pixels.
    template <colour::Scale scale>
    static void ConvertLuma(uint32_t* out, size_t stride, const uint8_t* luma, const Tint& tint) {
        const Reg light = Product<kLight>(V::Sub16(V::Widen(luma), V::Set16(16)));
        const Reg blueRed = V::Narrow(V::Add16(light, tint.blue), V::Add16(light, tint.red));
        const Reg greenAlpha = V::Narrow(V::Add16(light, tint.green), V::Set16(255));
        const Reg blueGreen = V::UnpackLow8(blueRed, greenAlpha);
        const Reg redAlpha = V::UnpackHigh8(blueRed, greenAlpha);
        const Reg first = V::UnpackLow16(blueGreen, redAlpha);
        const Reg second = V::UnpackHigh16(blueGreen, redAlpha);
        if constexpr (scale == colour::Scale::Same) {
            V::StoreLanes(out, kLane, first, second);
        } else {
            StoreDoubled(out, first, second);
            StoreDoubled(out + stride, first, second);
        }
    }
    static void StoreDoubled(uint32_t* out, Reg first, Reg second) {
        V::StoreLanes(out, 2 * kLane, V::UnpackLow32(first, first), V::UnpackHigh32(first, first));
        V::StoreLanes(out + kLane, 2 * kLane, V::UnpackLow32(second, second),
                      V::UnpackHigh32(second, second));
    }

    template <colour::Scale scale>
    static void Convert(const colour::RowPair& rows) {
        constexpr size_t times = static_cast<size_t>(scale);
        uint32_t x = 0;
        for (; x + V::kWords <= rows.width; x += V::kWords) {
            const Tint tint = LoadTint(rows.cb + x / 2, rows.cr + x / 2);
            uint32_t* const out = rows.out + x * times;
            ConvertLuma<scale>(out, rows.outStride, rows.luma[0] + x, tint);
            ConvertLuma<scale>(out + times * rows.outStride, rows.outStride, rows.luma[1] + x, tint);
        }
        if (x < rows.width)
            ConvertRest<scale>(rows, x);
    }
    // What is too narrow for a register.
    template <colour::Scale scale>
    static void ConvertRest(const colour::RowPair& rows, uint32_t x) {
        const colour::Routines& plain = colour::PlainRoutines();
        (scale == colour::Scale::Same ? plain.same
                                      : plain.doubled)({{rows.luma[0] + x, rows.luma[1] + x},
                                                        rows.cb + x / 2,
                                                        rows.cr + x / 2,
                                                        rows.width - x,
                                                        rows.out + x * static_cast<size_t>(scale),
                                                        rows.outStride});
    }

    static constexpr size_t kLane = 8; // pixels that come out of one lane of a register
};

} // namespace
