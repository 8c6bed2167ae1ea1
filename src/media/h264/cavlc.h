// Transform coefficient levels coded by CAVLC (clause 9.2).
#pragma once

#include "media/h264/bits.h"
#include "media/h264/cavlc_tables.h"

namespace h264 {

// Where the levels of a block go: coefficient number k of the scan is written, times `scale`, to
// `coefficients[scan[k]]`.
struct ResidualTarget {
    i32* coefficients;
    const u8* scan;   // [coefficient number]
    const u16* scale; // [position]; null: unscaled
};

constexpr i32 ResidualError = -1;

// 9.2.1: the table that coeff_token is read by.
inline cavlc::CoeffTokenClass CoeffTokenClassOf(u32 nC) {
    if (nC < 2)
        return cavlc::Nc0To1;
    if (nC < 4)
        return cavlc::Nc2To3;
    return nC < 8 ? cavlc::Nc4To7 : cavlc::Nc8Up;
}

// residual_block_cavlc(), 7.3.5.3.2: reads the levels of one block of at most `maxNumCoeff` coefficients (4,
// 15 or 16). Returns TotalCoeff( coeff_token ) or ResidualError. Whether the data lasted is for the caller to
// ask.
i32 DecodeResidualBlock(BitReader& stream, cavlc::CoeffTokenClass tokenClass, u32 maxNumCoeff,
                        const ResidualTarget& target);

} // namespace h264
