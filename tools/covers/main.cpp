// covers 0..9|builtin: writes one cover as PPM to standard output.
//
// Every pixel is the mean of a grid of samples, with a little grain as of printed card, which also keeps the
// gradients from banding.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "designs.h"

namespace {

using covers::Color;

constexpr int kEdge = 600;     // pixels
constexpr int kSamples = 5;    // in each direction
constexpr double kGrain = 1.6; // of 255

uint32_t Hash(uint32_t x) {
    x ^= x >> 16;
    x *= 0x7feb352du;
    x ^= x >> 15;
    x *= 0x846ca68bu;
    return x ^ x >> 16;
}

// -1..1, most often near 0.
double Grain(int x, int y) {
    const uint32_t bits = Hash(static_cast<uint32_t>(y * kEdge + x) + 1);
    return ((bits & 0xFFFF) + (bits >> 16)) / 65535.0 - 1.0;
}

Color Sample(int number, double x, double y) {
    const covers::Point p{x / kEdge, y / kEdge};
    return number < 0 ? covers::PaintBuiltin(p) : covers::PaintCover(number, p);
}

Color Pixel(int number, int x, int y) {
    Color sum;
    for (int j = 0; j < kSamples; ++j)
        for (int i = 0; i < kSamples; ++i) {
            const Color one = Sample(number, x + (i + 0.5) / kSamples, y + (j + 0.5) / kSamples);
            sum = {sum.r + one.r, sum.g + one.g, sum.b + one.b};
        }
    constexpr double kCount = kSamples * kSamples;
    return {sum.r / kCount, sum.g / kCount, sum.b / kCount};
}

uint8_t ToByte(double channel, double grain) {
    return static_cast<uint8_t>(std::lround(std::clamp(channel * 255 + grain * kGrain, 0.0, 255.0)));
}

} // namespace

int main(int argc, char** argv) {
    const char* which = argc == 2 ? argv[1] : "";
    const bool isNumber = std::strlen(which) == 1 && which[0] >= '0' && which[0] <= '9';
    if (!isNumber && std::strcmp(which, "builtin") != 0) {
        std::fprintf(stderr, "usage: covers 0..9|builtin\n");
        return 1;
    }
    std::vector<uint8_t> pixels;
    for (int y = 0; y < kEdge; ++y)
        for (int x = 0; x < kEdge; ++x) {
            const Color color = Pixel(isNumber ? which[0] - '0' : -1, x, y);
            const double grain = Grain(x, y);
            pixels.insert(pixels.end(),
                          {ToByte(color.r, grain), ToByte(color.g, grain), ToByte(color.b, grain)});
        }
    std::printf("P6\n%d %d\n255\n", kEdge, kEdge);
    return std::fwrite(pixels.data(), 1, pixels.size(), stdout) == pixels.size() ? 0 : 1;
}
