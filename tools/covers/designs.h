// The pictures themselves: each is a function from a point to its colour.
#pragma once

#include "geometry.h"

namespace covers {

inline constexpr int kCovers = 10;

// Cover 0 to 9 of the series.
Color PaintCover(int number, Point p);

// The cover that is built into the program, for want of any other: the record alone.
Color PaintBuiltin(Point p);

} // namespace covers
