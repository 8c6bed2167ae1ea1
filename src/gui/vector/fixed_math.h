// Trigonometry on fixed-point numbers by CORDIC (Volder 1959): a vector is turned by a falling series of
// angles whose tangents are powers of two, so that each step is a shift and an addition. Same results on
// every machine.
#pragma once

#include <cstdint>

#include "gui/vector/outline.h"

namespace vec {

using Angle = int32_t; // degrees, 16.16, clockwise on the screen
using Fixed = int32_t; // 16.16

inline constexpr Angle kAngle90 = 0x5A0000;
inline constexpr Angle kAngle180 = 0xB40000;
inline constexpr Angle kAngle360 = 0x1680000;
inline constexpr Fixed kFixedUnit = 0x10000; // 1.0

// value * factor / divisor, rounded to nearest; cut to +-INT32_MAX, also for a divisor of 0.
int32_t MulDiv(int32_t value, int32_t factor, int32_t divisor);

// Normalised to (-180, 180].
Angle Difference(Angle from, Angle to);

// The vector of this length and direction; exact within 1 unit.
FixedPoint FromPolar(int32_t length, Angle angle);

// 0 for the null vector.
Angle AngleOf(FixedPoint vector);
int32_t LengthOf(FixedPoint vector);

Fixed Cos(Angle angle);
Fixed Sin(Angle angle);
Fixed Tan(Angle angle);

} // namespace vec
