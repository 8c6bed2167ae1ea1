// One pass of the inverse DCT after Arai, Agui and Nakajima (1988): 8 points with 5 multiplications, the rest
// of the scaling being left to the quantisation table. Lanes::Vector is float, or a vector of floats that
// does several passes at once; both compute in the same order and so give the same bits.
//
// In single precision: a table entry is at most 255 * 1.93 * 8,192 = 4,022,000 and so exact in the 24 bits of
// a float; legal coefficients keep the error of a sample far below 0.1.
//
// The includer defines WALLSLATE_LANES_TARGET, the function attribute that its vectors need, or nothing.
#pragma once

namespace jpeg {

// x[0..7]: in frequencies, out points.
template <class Lanes>
WALLSLATE_LANES_TARGET inline void InversePass(typename Lanes::Vector* x) {
    using V = typename Lanes::Vector;
    constexpr float kSqrt2 = 1.414213562F;    // 2 cos(pi/4)
    constexpr float k2CosPi8 = 1.847759065F;  // 2 cos(pi/8)
    constexpr float k2DiffPi8 = 1.082392200F; // 2 (cos(pi/8) - cos(3 pi/8))
    constexpr float k2SumPi8 = 2.613125930F;  // 2 (cos(pi/8) + cos(3 pi/8))

    const V sum04 = x[0] + x[4];
    const V diff04 = x[0] - x[4];
    const V sum26 = x[2] + x[6];
    const V rot26 = (x[2] - x[6]) * kSqrt2 - sum26;
    const V even0 = sum04 + sum26;
    const V even3 = sum04 - sum26;
    const V even1 = diff04 + rot26;
    const V even2 = diff04 - rot26;

    const V sum53 = x[5] + x[3];
    const V diff53 = x[5] - x[3];
    const V sum17 = x[1] + x[7];
    const V diff17 = x[1] - x[7];
    const V common = (diff53 + diff17) * k2CosPi8;
    const V odd7 = sum17 + sum53;
    const V odd6 = common - diff53 * k2SumPi8 - odd7;
    const V odd5 = (sum17 - sum53) * kSqrt2 - odd6;
    const V odd4 = common - diff17 * k2DiffPi8 - odd5;

    x[0] = even0 + odd7;
    x[7] = even0 - odd7;
    x[1] = even1 + odd6;
    x[6] = even1 - odd6;
    x[2] = even2 + odd5;
    x[5] = even2 - odd5;
    x[3] = even3 + odd4;
    x[4] = even3 - odd4;
}

// What one step of a coefficient is worth: the table's fraction bits, and the 1/8 of the two passes.
inline constexpr float kTableStep = 1.0F / (8 * 8192);

// Added before truncation: the level shift and the half that rounds.
inline constexpr float kLevelShift = 128.5F;

} // namespace jpeg
