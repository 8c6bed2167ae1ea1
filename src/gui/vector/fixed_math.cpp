#include "gui/vector/fixed_math.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace vec {

namespace {

constexpr int kRounds = 22;

// arctan(2^-i) in 16.16 degrees, i from 1 to 22.
constexpr Angle kArcTangents[kRounds] = {1740967, 919879, 466945, 234379, 117304, 58666, 29335, 14668,
                                         7334,    3667,   1833,   917,    458,    229,   115,   57,
                                         29,      14,     7,      4,      2,      1};

// What 22 turns lengthen a vector by, inverted: 0.858785, 0.32.
constexpr uint32_t kGain = 0xDBD95B16;

// The angles of the table add up to an error of some units; an axis must come out as an axis.
constexpr Angle kAngleStep = 16;

// Vectors are worked on with their longer coordinate between 2^28 and 2^29.
constexpr int kWorkBits = 28;

struct Vector {
    int64_t x = 0;
    int64_t y = 0;
};

// Shifts left, or right with rounding for a negative shift.
int64_t Shift(int64_t value, int shift) {
    if (shift >= 0)
        return value * (int64_t{1} << shift);
    const int64_t half = int64_t{1} << (-shift - 1);
    return value < 0 ? -((-value + half) >> -shift) : (value + half) >> -shift;
}

// Brings the vector to the working size; returns the shift that did it.
int Normalise(Vector& vector) {
    const uint64_t longer = static_cast<uint64_t>(std::max(std::abs(vector.x), std::abs(vector.y)));
    const int shift = kWorkBits + 1 - static_cast<int>(std::bit_width(longer));
    vector = {Shift(vector.x, shift), Shift(vector.y, shift)};
    return shift;
}

int64_t RemoveGain(int64_t value) {
    const int64_t half = int64_t{1} << 31;
    const int64_t product = std::abs(value) * int64_t{kGain};
    const int64_t scaled = (product + half) >> 32;
    return value < 0 ? -scaled : scaled;
}

// One round: turns by arctan(2^-i), clockwise or back.
Vector Turned(Vector vector, int i, bool clockwise) {
    const int64_t half = int64_t{1} << (i - 1);
    const int64_t dx = (vector.y + half) >> i;
    const int64_t dy = (vector.x + half) >> i;
    return clockwise ? Vector{vector.x - dx, vector.y + dy} : Vector{vector.x + dx, vector.y - dy};
}

// Turns by an angle of -45..45 degrees; the gain stays in.
Vector TurnBy(Vector vector, Angle angle) {
    for (int i = 1; i <= kRounds; ++i) {
        const bool clockwise = angle >= 0;
        vector = Turned(vector, i, clockwise);
        angle += clockwise ? -kArcTangents[i - 1] : kArcTangents[i - 1];
    }
    return vector;
}

// Quarter turns that bring the vector into the quarter around the positive x axis.
Angle TurnToAxis(Vector& vector) {
    const Vector v = vector;
    if (std::abs(v.y) <= std::abs(v.x)) {
        vector = v.x >= 0 ? v : Vector{-v.x, -v.y};
        return v.x >= 0 ? 0 : kAngle180;
    }
    vector = v.y > 0 ? Vector{v.y, -v.x} : Vector{-v.y, v.x};
    return v.y > 0 ? kAngle90 : -kAngle90;
}

// Turns the vector onto the x axis; returns the angle that it had. The gain stays in.
Angle TurnFlat(Vector& vector) {
    Angle angle = 0;
    for (int i = 1; i <= kRounds; ++i) {
        const bool clockwise = vector.y <= 0;
        vector = Turned(vector, i, clockwise);
        angle += clockwise ? -kArcTangents[i - 1] : kArcTangents[i - 1];
    }
    return angle;
}

Angle Rounded(Angle angle) {
    const Angle magnitude = (std::abs(angle) + kAngleStep / 2) / kAngleStep * kAngleStep;
    return angle < 0 ? -magnitude : magnitude;
}

// The result can be negated.
int32_t Cut(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, -INT32_MAX, INT32_MAX));
}

} // namespace

int32_t MulDiv(int32_t value, int32_t factor, int32_t divisor) {
    const int64_t product = int64_t{value} * factor;
    if (divisor == 0)
        return product < 0 ? -INT32_MAX : INT32_MAX;
    const int64_t half = std::abs(int64_t{divisor}) / 2;
    return Cut((product < 0 ? product - half : product + half) / divisor);
}

Angle Difference(Angle from, Angle to) {
    const int64_t whole = (int64_t{to} - from) % kAngle360;
    if (whole <= -kAngle180)
        return static_cast<Angle>(whole + kAngle360);
    return static_cast<Angle>(whole > kAngle180 ? whole - kAngle360 : whole);
}

FixedPoint FromPolar(int32_t length, Angle angle) {
    if (length == 0)
        return {};
    Vector vector{length, 0};
    const int shift = Normalise(vector);
    Angle rest = Difference(0, angle);
    for (; rest > kAngle90 / 2; rest -= kAngle90)
        vector = {-vector.y, vector.x};
    for (; rest < -kAngle90 / 2; rest += kAngle90)
        vector = {vector.y, -vector.x};
    // A right angle stays exactly one.
    if (rest != 0) {
        vector = TurnBy(vector, rest);
        vector = {RemoveGain(vector.x), RemoveGain(vector.y)};
    }
    return {Cut(Shift(vector.x, -shift)), Cut(Shift(vector.y, -shift))};
}

Angle AngleOf(FixedPoint point) {
    Vector vector{point.x, point.y};
    if (vector.x == 0 && vector.y == 0)
        return 0;
    Normalise(vector);
    const Angle quarter = TurnToAxis(vector);
    return Difference(0, quarter + Rounded(TurnFlat(vector)));
}

int32_t LengthOf(FixedPoint point) {
    Vector vector{point.x, point.y};
    if (vector.x == 0 || vector.y == 0)
        return Cut(std::abs(vector.x) + std::abs(vector.y));
    const int shift = Normalise(vector);
    TurnToAxis(vector);
    TurnFlat(vector);
    return Cut(Shift(RemoveGain(vector.x), -shift));
}

Fixed Cos(Angle angle) {
    return FromPolar(kFixedUnit, angle).x;
}
Fixed Sin(Angle angle) {
    return FromPolar(kFixedUnit, angle).y;
}

Fixed Tan(Angle angle) {
    // A longer vector gives the quotient more digits.
    const FixedPoint vector = FromPolar(1 << kWorkBits, angle);
    return MulDiv(vector.y, kFixedUnit, vector.x);
}

} // namespace vec
