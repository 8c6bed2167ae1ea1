// Colour arithmetic of the model; pixels belong to the drawing layer.
#pragma once

#include <cstdint>

// Hexcone conversion with percentages on both sides: hue in degrees, saturation and value in percent. Each of
// red, green and blue comes out as a whole percentage (0..100, truncated), packed as red * 65536 + green *
// 256 + blue. A hue outside 0..300 is treated as lying in the last sector.
uint32_t HsvToRgbPercent(double hue, double saturation, double value);
