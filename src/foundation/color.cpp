#include "foundation/color.h"

#include <cmath>

namespace {

constexpr double kSectorDegrees = 60;
constexpr double kFull = 100; // percent

uint32_t WholePercent(double channel) {
    if (!(channel > 0)) // not a number too
        return 0;
    return channel < kFull ? static_cast<uint32_t>(channel) : 100;
}

uint32_t Pack(double red, double green, double blue) {
    return WholePercent(red) << 16 | WholePercent(green) << 8 | WholePercent(blue);
}

} // namespace

uint32_t HsvToRgbPercent(double hue, double saturation, double value) {
    if (saturation == 0)
        return Pack(value, value, value);
    const double sector = std::floor(hue / kSectorDegrees);
    const double fraction = hue / kSectorDegrees - sector;
    // All in percent, so that whole percentages stay exact until the truncation.
    const double low = value * (kFull - saturation) / kFull;
    const double falling = value * (kFull - saturation * fraction) / kFull;
    const double rising = value * (kFull - saturation * (1 - fraction)) / kFull;
    if (sector == 0)
        return Pack(value, rising, low);
    if (sector == 1)
        return Pack(falling, value, low);
    if (sector == 2)
        return Pack(low, value, rising);
    if (sector == 3)
        return Pack(low, falling, value);
    if (sector == 4)
        return Pack(rising, low, value);
    return Pack(value, low, falling);
}
